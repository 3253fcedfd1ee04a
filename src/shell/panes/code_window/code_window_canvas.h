// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QImage>
#include <QPointer>
#include <QWidget>
#include <map>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "shell/panes/code_window/code_window_button.h"

class QEventPoint;
class QTouchEvent;

namespace vistels {

// The scale at which a code window as wide as `content` is shown on `available` pixels: never enlarged, and
// no smaller than leaves each button large enough to be hit.
double code_window_scale(const std::vector<code_button>& buttons, double content, double available);

// The buttons of a code window on their canvas. Each finger holds the button that it came down on until it is
// lifted, wherever it is by then. Main thread.
class code_window_canvas final : public QWidget {
    Q_OBJECT
  public:
    explicit code_window_canvas(QWidget* parent);
    ~code_window_canvas() override;

    void set_buttons(std::vector<code_button> buttons);
    void set_ground(std::optional<QColor> ground);
    void set_pictures(std::map<std::string, QImage> pictures);
    // Null when there is none of that UUID.
    code_window_button* button(const std::string& uuid) const;
    const std::vector<code_window_button*>& buttons() const { return widgets_; }
    void set_state(const std::string& uuid, const code_button_state& state);
    void set_now(double collection_seconds);
    void let_go();
    std::size_t down_count() const;
    // The button under the pointer, else the one with the focus; null: neither is there.
    code_window_button* current() const { return current_; }

    // Lays out for a pane of that size; the canvas takes the size that it needs, at least the pane's.
    void fit_to(const QSize& pane);
    double scale() const { return scale_; }

  Q_SIGNALS:
    // `place` in proportions of the button, from its upper left corner.
    void went_down(const std::string& uuid, double clock_seconds, const QPointF& place, bool latches);
    void went_up(const std::string& uuid, double clock_seconds);
    void current_changed();

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

  private:
    bool set_looks(const std::vector<code_button>& buttons);
    void add(const code_button& button);
    void raise_by_depth();
    QSizeF content() const;
    void find_current();
    bool touch(QTouchEvent& event);
    bool put_finger(const QEventPoint& finger, double clock_seconds);
    void lift_finger(int id, double clock_seconds);
    void lift_all(double clock_seconds);

    std::vector<code_button> all_;
    std::vector<code_window_button*> widgets_;  // in the order of the code window
    std::unordered_map<std::string, code_window_button*> by_uuid_;
    QPointer<code_window_button> current_;
    std::map<int, std::string> fingers_;  // by their numbers, the button that each holds
    std::map<std::string, QImage> pictures_;
    std::optional<QColor> ground_;
    QSize pane_;
    double scale_ = 1;
};

}  // namespace vistels
