// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QTimer>
#include <QWidget>

namespace vistels {

class icon_button;

// Minus and plus. A held button repeats: the first step comes at once, the next ones after a moment and then
// quickly, and after many repeats they become larger. Main thread.
class buttons_Adjust_Offsets : public QWidget {
    Q_OBJECT
  public:
    // The tips are the buttons' accessible names; `name` is the object name, the buttons are name.less and
    // name.more.
    buttons_Adjust_Offsets(const QString& name, const QString& less_tip, const QString& more_tip,
                           QWidget* parent = nullptr);

    // The steps that repeat number `count` (0: the press itself) is worth.
    static int steps_of_repeat(int count);

  Q_SIGNALS:
    // By so many steps, below 0 for less.
    void nudged(int steps);
    // The button came up.
    void ended();

  private:
    icon_button* add(const QString& icon, const QString& name, const QString& tip, int direction);
    void press(int direction);
    void step();

    QTimer timer_;
    int direction_ = 0;
    int repeats_ = 0;
};

}  // namespace vistels
