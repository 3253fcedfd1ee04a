// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <memory>
#include <string>
#include <vector>

#include "shell/kit/pane.h"
#include "shell/panes/code_window/code_window_button.h"
#include "util/signal.h"

class QScrollArea;

namespace vistels {

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
    // At a moment of the monotonic clock.
    virtual void press(const std::string& button, double clock_seconds) = 0;
    virtual void release(const std::string& button, double clock_seconds) = 0;
    virtual double collection_time() const = 0;

    signal<> buttons_changed;
    signal<> states_changed;
};

// The buttons of a press engine; `timeline` gives the counts, `playing` the times. All must outlive the
// source.
std::unique_ptr<code_window_source> source_of(press_engine& engine, timeline_document& timeline,
                                              transport& playing);

// The code window pane in run mode: it draws the buttons, presses them by mouse and shows what is down, from
// whatever cause. The canvas is scaled down to the pane's width as far as buttons stay large enough to be
// hit, and scrolled beyond that. Main thread.
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
    // Releases what the mouse holds down.
    void release_mouse();

    // The size at which nothing is scaled or scrolled.
    QSize sizeHint() const override;
    code_window_canvas& canvas() { return *canvas_; }

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

  private:
    void show_buttons();
    void show_states();
    void fit();

    std::unique_ptr<code_window_source> source_;
    pane_header* header_;
    QScrollArea* area_;
    code_window_canvas* canvas_;
    std::vector<connection> connections_;
    std::vector<connection> theme_changed_;
};

}  // namespace vistels
