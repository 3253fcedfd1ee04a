// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointF>
#include <QPointer>
#include <QWidget>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "shell/keys/key_clashes.h"
#include "shell/kit/pane.h"
#include "shell/panes/code_window/code_window_face.h"
#include "shell/panes/code_window/link_arrows.h"
#include "timeline/records/clip_list.h"
#include "util/signal.h"

class QActionGroup;
class QScrollArea;
class QToolButton;

namespace vistels {

class button_outputs;
class clip_list_popover;
class code_window_button;
class icon_button;
class code_window_canvas;
class pane_header;
class press_engine;
class timeline_document;
class transport;

// What a code window pane shows and presses. Main thread.
class code_window_source {
  public:
    virtual ~code_window_source() = default;

    virtual std::vector<code_button> buttons() const = 0;
    virtual code_button_state state(const std::string& button) const = 0;
    // At a moment of the monotonic clock; `place` on the button in proportions, from its upper left corner.
    // `latches`: it stays down until its next press.
    virtual void press(const std::string& button, double clock_seconds, const QPointF& place,
                       bool latches) = 0;
    virtual void release(const std::string& button, double clock_seconds) = 0;
    virtual double collection_time() const = 0;
    // Of the row that the button's clips go to.
    virtual clip_list clips_of(const std::string& button) const = 0;
    virtual std::vector<bound_button> bound_buttons() const = 0;
    virtual bool has_links() const = 0;
    virtual std::vector<code_link> links() const = 0;
    // What those of the button do, in plain words; what is wrong with any.
    virtual QStringList link_words(const std::string& button) const = 0;
    virtual QStringList link_problems() const = 0;

    signal<> buttons_changed;
    signal<> states_changed;
    // Of that button alone, beside what was told already.
    signal<const std::string&> state_changed;
    signal<> links_changed;
    // The button is to be in the middle of what is seen.
    signal<const std::string&> center_wanted;
    // A link was followed: from one button to another.
    signal<const std::string&, const std::string&, const link_kind&> link_fired;
};

// The buttons of a press engine; `timeline` gives the counts, `playing` the times, `outputs` (null: none)
// what their formulas say. All must outlive the source.
std::unique_ptr<code_window_source> source_of(press_engine& engine, timeline_document& timeline,
                                              transport& playing, button_outputs* outputs = nullptr);

// The code window pane in run mode: it draws the buttons, presses them by mouse and fingers and shows what is
// down, from whatever cause. A button that lists the clips of its row does so beside itself when it is
// pressed. The canvas is scaled down to the pane's width as far as buttons stay large enough to be hit, and
// scrolled beyond that. Main thread.
class code_window_view final : public QWidget, public pane {
    Q_OBJECT
  public:
    explicit code_window_view(QWidget* parent = nullptr);
    ~code_window_view() override;

    pane_kind kind() const override { return pane_kind::code_window; }
    QWidget& widget() override { return *this; }

    // Null for none.
    void set_source(std::unique_ptr<code_window_source> source);
    // The name in the header.
    void set_name(const QString& name);
    // Brings running times up to date; called at every display tick.
    void tick();
    // Releases what the mouse and fingers hold down.
    void release_mouse();
    // Of the canvas; none: that of panes.
    void set_ground(std::optional<QColor> ground);
    // By button.
    void set_pictures(std::map<std::string, QImage> pictures);
    // Until the user scrolls, that place of the canvas is in the upper left corner, as far as there is
    // anything to scroll.
    void scroll_to(const QPointF& place);
    // The window's actions are others; what a button's key takes from them is told in the header.
    void show_key_clashes();
    // Which of the buttons' links are drawn over them. The user chooses by the header's button, too.
    void set_links_shown(links_shown shown);
    links_shown shown_links() const { return links_shown_; }

    // The user chose a time in a button's list.
    signal<double> seek_asked;
    // The user scrolled: that place of the canvas is in the upper left corner.
    signal<const QPointF&> scrolled;

    // The size at which nothing is scaled or scrolled.
    QSize sizeHint() const override;
    code_window_canvas& canvas() { return *canvas_; }
    link_arrows& arrows() { return *arrows_; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void connect_canvas();
    void show_buttons();
    void show_states();
    void show_state(code_window_button& button);
    void show_down_count();
    void show_list(const code_window_button& button);
    void fit();
    void scroll();
    void note_scroll();
    void build_links();
    void show_links();
    void show_current();
    void follow_link(const std::string& from, const std::string& to, const link_kind& kind);
    void center_on(const std::string& button);

    std::unique_ptr<code_window_source> source_;
    pane_header* header_;
    QToolButton* clashes_;
    icon_button* links_;
    QActionGroup* which_links_;
    links_shown links_shown_ = links_shown::none;
    link_arrows* arrows_;
    QScrollArea* area_;
    code_window_canvas* canvas_;
    QPointer<clip_list_popover> list_;  // it belongs to the window while it is shown
    std::string pressing_;              // the button whose press by hand is being told
    std::optional<QPointF> scroll_;     // to be kept, of the canvas in its logical pixels
    bool is_fitting_ = false;
    std::vector<connection> connections_;
    std::vector<connection> theme_changed_;
};

}  // namespace vistels
