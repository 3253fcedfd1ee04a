// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimer>
#include <QWidget>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "shell/panes/timeline/timeline_painting.h"
#include "util/signal.h"

namespace vistels {

class timeline_state;

// The ruler and the clips of a timeline with its playhead.
//
// A press on the ruler or the flag moves the playhead. A press on a clip selects it and goes to its start;
// with Ctrl it adds or takes away, with Shift it extends. A clip's edge is dragged to trim it, with Alt a
// copy is dragged. Ctrl and wheel zooms to the pointer, the wheel scrolls rows, with Shift (or sideways)
// time. Main thread.
class timeline_canvas final : public QWidget {
    Q_OBJECT
  public:
    timeline_canvas(timeline_state& state, QWidget* parent);
    ~timeline_canvas() override;

    // What is under a point.
    struct hit {
        enum class part { nothing, ruler, row, clip, start_edge, end_edge };
        part what = part::nothing;
        std::size_t row = 0;
        std::uint32_t index = 0;  // of the clip in its row
        clip_pointer clip;
    };
    hit hit_at(const QPointF& point) const;
    QRect clip_place(const hit& found) const;
    QRect flag_place() const;

  protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void mouseDoubleClickEvent(QMouseEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    enum class drag_kind { playhead, start_edge, end_edge, copy };
    struct drag {
        drag_kind kind = drag_kind::playhead;
        hit on;
        double grip_seconds = 0;  // from the dragged edge (the start when copying) to the pointer
        double start = 0;         // of the clip as it would be
        double end = 0;
        QPointF from;
        bool has_moved = false;
        std::optional<double> scrubbed_to = std::nullopt;  // the playhead
    };

    QRect row_place(std::size_t row) const;
    timeline_painter& painter_in_use();
    void paint_rows(QPainter& painter, const QRect& dirty);
    void paint_empty(QPainter& painter) const;
    void paint_drag(QPainter& painter);
    double pulse_now() const;
    void press_clip(const hit& found, const QMouseEvent& event);
    void move_drag(const QPointF& point);
    void end_drag();
    void show_cursor(const QPointF& point);
    void move_to_neighbour(int rows, int clips);
    void follow_playhead();
    void update_clocks(std::size_t index, double playhead_x);
    void describe_selection();
    QString description(const hit& found) const;
    QString triggers_at(const QPoint& point) const;

    timeline_state& state_;
    std::unique_ptr<timeline_painter> painter_;
    std::optional<drag> drag_;
    double painted_playhead_x_ = 0;
    double wheel_rest_ = 0;
    bool shows_focus_ = false;  // the focus came by a key
    std::vector<connection> connections_;
};

}  // namespace vistels
