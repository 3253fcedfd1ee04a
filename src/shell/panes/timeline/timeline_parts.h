// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPixmap>
#include <QTimer>
#include <QWidget>
#include <optional>
#include <vector>

#include "util/signal.h"

namespace vistels {

class timeline_state;

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
    void paint_clips();

    timeline_state& state_;
    QPixmap clips_;                       // null: to be painted
    QTimer makes_anew_;                   // while what is shown is a little behind
    int painted_x_ = -1;                  // of the playhead
    std::optional<double> grip_seconds_;  // from the first second shown to the pointer
    std::vector<connection> connections_;
};

}  // namespace vistels
