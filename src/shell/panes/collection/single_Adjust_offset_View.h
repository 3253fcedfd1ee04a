// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>
#include <optional>
#include <vector>

#include "shell/kit/drag_watch.h"

namespace vistels {

// A movie part as the strip shows it; seconds.
struct shown_part {
    double gap_before = 0;
    double duration = 0;
    bool is_padding = false;  // a blank movie that stands for an offset or a gap
    bool is_missing = false;  // its movie is not there
    bool operator==(const shown_part&) const = default;
};

// Where each part starts when the gap before `part` is `gap`; the parts behind it move along.
std::vector<double> part_starts(const std::vector<shown_part>& parts, int part = -1, double gap = 0);

// A vistel's own time line: its movie parts and the gaps between them. A part is dragged to change the gap
// before it; Escape, or letting go where the part cannot be (over the one before it, or away from the strip),
// gives the drag up. Main thread.
class single_Adjust_offset_View : public QWidget {
    Q_OBJECT
  public:
    explicit single_Adjust_offset_View(QWidget* parent = nullptr);

    void set_parts(std::vector<shown_part> parts);
    const std::vector<shown_part>& parts() const { return parts_; }
    // The playhead on the vistel's own time line.
    void set_seconds(double seconds);
    void set_changeable(bool changeable);
    // -1: none.
    int chosen() const { return chosen_; }
    void choose(int part);
    QRect place_of(int part) const;
    double seconds_per_pixel() const;
    // The gap before the dragged part as it would be, even where it cannot be; nothing while none is dragged.
    std::optional<double> dragged_gap() const;
    bool is_dragging() const { return drag_.has_value(); }

    QSize sizeHint() const override;

  Q_SIGNALS:
    void chosen_changed();
    // While a part is dragged.
    void gap_dragged(int part, double seconds);
    // The drag ended at a valid place.
    void gap_asked(int part, double seconds);
    // The drag was given up: the gap is what it was when the mouse went down.
    void drag_cancelled(int part);

  protected:
    void paintEvent(QPaintEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    bool event(QEvent* event) override;

  private:
    struct dragging {
        int part = 0;
        QPoint from;
        bool moves = false;
        bool is_valid = true;
        double gap_at_mouse_down = 0;  // seconds
        double gap = 0;
        double seconds_per_pixel = 1;  // stays while dragging
    };

    void end_drag(bool keeps);
    void paint_part(QPainter& painter, int part, const QRect& place) const;
    void paint_gap(QPainter& painter, const QRect& place, double seconds) const;
    QRect line() const;

    std::vector<shown_part> parts_;
    double seconds_ = 0;
    int chosen_ = -1;
    bool changeable_ = true;
    std::optional<dragging> drag_;
    drag_watch watch_{*this, [this] { end_drag(false); }};
};

}  // namespace vistels
