// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <string>
#include <vector>

#include "logger/button_key_binding.h"
#include "logger/markup_Button_Item.h"

class QAction;

namespace vistels {

// A button that a key presses.
struct bound_button {
    std::string uuid;
    QString name;
    QString key;  // as it is shown: "Shift G"
    button_key_binding binding;
};
// In canvas order.
std::vector<bound_button> bound_buttons(const std::vector<button_record>& buttons);

// What a button's key does, or would do, besides pressing it.
struct key_clash {
    QStringList buttons;   // the names of others that it presses, too
    QStringList commands;  // of the window, which it does not reach any more
    explicit operator bool() const { return !buttons.isEmpty() || !commands.isEmpty(); }
};
// One for each of the buttons. `commands` are the window's actions.
std::vector<key_clash> find_key_clashes(const std::vector<bound_button>& buttons,
                                        const QList<QAction*>& commands);
// "also presses “Goal”; instead of Mute"; empty without a clash.
QString key_clash_words(const key_clash& clash);

}  // namespace vistels
