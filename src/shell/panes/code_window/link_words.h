// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <string>
#include <vector>

#include "logger/markup_Button_Item.h"

namespace vistels {

// What the links of a code window do, in plain words: for each button, in canvas order, what its going down
// or up sets off ("When this goes down, “Press” goes up.") and what other buttons do to it ("Goes up when
// “Attack” goes down.").
std::vector<QStringList> link_words(const std::vector<button_record>& buttons);

// What is wrong with the links: those that lead to no button, and buttons that set each other off in a
// circle, which ends when it comes back to one that has changed.
QStringList link_problems(const std::vector<button_record>& buttons);

// A sign for what a link does, that needs no colour.
QString link_sign(const link_kind& kind);

}  // namespace vistels
