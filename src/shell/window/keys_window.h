// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

namespace vistels {

class open_event;
class window_actions;

// What every key does: those of the menus, and the buttons of the code window in use, which win where both
// want a key; what a key does besides is a warning on its line. Main thread.
class keys_window : public QDialog {
    Q_OBJECT
  public:
    // `event` may be null.
    keys_window(const window_actions& actions, open_event* event, QWidget* parent);
};

}  // namespace vistels
