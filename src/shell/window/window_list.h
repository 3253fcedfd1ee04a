// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <functional>
#include <vector>

class QMenu;

namespace vistels {

// One window in the "Window" menu.
struct window_line {
    QString name;          // of its event; empty: it shows none
    QString vault;         // where the event lies
    bool is_here = false;  // the menu is this window's
    std::function<void()> show;
};

// Events of one name get their vaults' names added: "Final (Cup)".
void tell_apart(std::vector<window_line>& windows);

// Lists the windows at the end of the menu, in the place of those listed before; the menu's own window has
// the mark. Main thread.
void list_windows(QMenu& menu, const std::vector<window_line>& windows);

}  // namespace vistels
