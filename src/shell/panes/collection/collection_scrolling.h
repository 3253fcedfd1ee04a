// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>
#include <QWidget>
#include <functional>

class QPoint;
class QScrollBar;
class QWheelEvent;

namespace vistels {

class collection_geometry;

// What scrolls the collection's view: the bar at its right, the wheel, and something held near its upper or
// lower edge. Main thread.
class collection_scrolling : public QObject {
    Q_OBJECT
  public:
    // Both must outlive it. The bar is a child of the view.
    collection_scrolling(QWidget& view, const collection_geometry& geometry);

    int bar_width() const;
    // The geometry was laid out anew, or a vistel is enlarged or no longer so.
    void show_layout();
    void show_bar();
    void scroll_to(int offset);
    // Whether the wheel did anything.
    bool turn(const QWheelEvent& event);
    // Something that was taken up at the height `from` is held at `point`: near an edge it goes on by itself,
    // faster farther out, as long as holds() is true.
    void hold_at(const QPoint& point, int from);
    void stop() { edge_time_.stop(); }

    std::function<bool()> holds;

  Q_SIGNALS:
    void scrolled_by_user(int offset);

  private:
    void scroll_on();

    QWidget& view_;
    const collection_geometry& geometry_;
    QScrollBar* bar_;
    double wheel_rest_ = 0;  // pixels
    QTimer edge_time_{&view_};
    int edge_step_ = 0;  // pixels each time
};

}  // namespace vistels
