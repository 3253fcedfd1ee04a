// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <functional>

class QWidget;

namespace vistels {

// What ends a drag in a view other than letting go: Escape, wherever the focus is, and the window or the view
// going away. Main thread.
class drag_watch : public QObject {
    Q_OBJECT
  public:
    // Calls `give_up` when the drag is to be given up. The view must outlive this.
    drag_watch(QWidget& view, std::function<void()> give_up);

    // From begin() to end() a drag goes on.
    void begin();
    void end();

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    QWidget& view_;
    const std::function<void()> give_up_;
};

}  // namespace vistels
