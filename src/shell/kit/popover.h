// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

namespace vistels {

// What comes up over the window and, as long as it is a popup of the window system's, goes with the next
// press elsewhere; drawn from the theme. Main thread.
class popover : public QWidget {
    Q_OBJECT
  public:
    explicit popover(QWidget* parent, Qt::WindowFlags flags = Qt::Popup | Qt::FramelessWindowHint);

  protected:
    void resizeEvent(QResizeEvent* event) override;
    void paintEvent(QPaintEvent* event) override;
};

}  // namespace vistels
