// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPixmap>
#include <QTimer>
#include <QWidget>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "shell/panes/timeline/timeline_scale.h"
#include "shell/panes/timeline/timeline_tracks.h"
#include "util/signal.h"

namespace vistels {

class timeline_state;
struct timeline_row;

// The whole event small, with what is shown framed: a scroll bar. Its frame is dragged; a press beside it
// brings that place to the middle.
class timeline_whole_event final : public QWidget {
    Q_OBJECT
  public:
    timeline_whole_event(timeline_state& state, QWidget* parent);

    // The frame round what is shown.
    QRectF frame() const;

  protected:
    void paintEvent(QPaintEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    void mousePressEvent(QMouseEvent* event) override;
    void mouseMoveEvent(QMouseEvent* event) override;
    void mouseReleaseEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void wheelEvent(QWheelEvent* event) override;

  private:
    QRect strip() const;
    double x_of(double seconds) const;
    double seconds_at(double x) const;
    // The bars of a row as they were drawn last.
    struct row_bars {
        std::uint64_t shown = 0;  // versions of the row's clips
        std::uint64_t dimmed = 0;
        std::vector<timeline_bar> bars;
    };

    void paint_clips();
    const std::vector<timeline_bar>& bars_of(const timeline_row& row, std::size_t index,
                                             const timeline_scale& scale);

    timeline_state& state_;
    QPixmap clips_;               // null: to be painted
    std::vector<row_bars> bars_;  // by row, at that scale
    timeline_scale bars_scale_;
    QTimer makes_anew_;                   // while what is shown is a little behind
    int painted_x_ = -1;                  // of the playhead
    std::optional<double> grip_seconds_;  // from the first second shown to the pointer
    std::vector<connection> connections_;
};

}  // namespace vistels
