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
// A press on the ruler or the flag moves the playhead. A click on a clip selects it and goes to its start;
// with Ctrl it adds or takes away, with Shift it extends. A drag moves the selected clips, along and to other
// rows, with Alt copies of them; an edge trims those selected, with Alt the joint with the clip that touches
// is rolled. A drag beside clips selects what it goes round; on a row without clips, or with the pen, it
// draws a clip. Until the hand lets go nothing is changed, and Escape ends it. With Ctrl held nothing snaps.
// Ctrl and wheel zooms to the pointer, the wheel scrolls rows, with Shift (or sideways)
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

    // The pen: a drag beside clips draws one, on any row.
    void set_draws(bool draws);

  Q_SIGNALS:
    // A menu is wanted at that place of the screen, for the selected clips or for what is beside them.
    void menu_asked(QPoint at, bool for_clips);
    void play_asked();

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
    void contextMenuEvent(QContextMenuEvent* event) override;
    void leaveEvent(QEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

  private:
    enum class drag_kind { playhead, start_edge, end_edge, joint, move, copy, draw, band };
    struct drag {
        drag_kind kind = drag_kind::playhead;
        hit on;
        shared_text row;  // that was hit; empty: none
        QPointF from;
        QPointF to;
        double grip_seconds = 0;  // from what is dragged to the pointer
        double from_seconds = 0;  // where it began, on the clock ...
        int from_y = 0;           // ... and in pixels from the first row
        bool snaps = true;
        bool has_moved = false;
        std::vector<std::string> clips;  // that move, are trimmed or copied
        std::string neighbour;           // of a joint: the other clip
        double seconds = 0;              // by which they do
        int rows = 0;
        double drawn_to = 0;
        std::optional<double> snapped_to = std::nullopt;
        std::optional<double> scrubbed_to = std::nullopt;      // the playhead
        std::optional<double> playhead_before = std::nullopt;  // where it was, while a moment is shown
        bool adds = false;                                     // a band, to what is selected
        std::vector<std::string> selected_before;              // of a band, or of drawing
    };
    // A clip as it would be.
    struct landing {
        std::size_t row = 0;
        double start = 0;
        double end = 0;
        QColor colour;
    };

    QRect row_place(std::size_t row) const;
    timeline_painter& painter_in_use();
    void paint_rows(QPainter& painter, const QRect& dirty);
    void paint_empty(QPainter& painter) const;
    void paint_drag(QPainter& painter);
    double pulse_now() const;
    drag drag_from(drag_kind kind, const hit& found, const QPointF& point) const;
    void press_clip(const hit& found, const QMouseEvent& event);
    void press_ground(const hit& found, const QMouseEvent& event);
    std::string neighbour_at(const hit& found) const;
    double dragged_seconds() const;
    void move_drag(const QPointF& point, bool snaps);
    void move_edge(double wanted);
    void move_clips(double wanted);
    double hold(double wanted);
    void select_in_band();
    QRectF band_place() const;
    void show_moment(double seconds);
    void scroll_with_drag();
    void end_drag();
    void click_of(const drag& done);
    void give_up_drag();
    void follow_rows();
    std::vector<landing> landings() const;
    void paint_landing(QPainter& painter, const landing& one);
    void paint_overlaps(QPainter& painter, const landing& one);
    void paint_drag_label(QPainter& painter, const landing& first);
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
    QTimer scrolls_;  // while a drag is held at the edge
    double wheel_rest_ = 0;
    bool draws_ = false;
    bool shows_focus_ = false;  // the focus came by a key
    std::vector<connection> connections_;
};

}  // namespace vistels
