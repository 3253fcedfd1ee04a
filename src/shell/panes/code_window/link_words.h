// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>
#include <cstddef>
#include <vector>

#include "logger/link_graph.h"
#include "logger/markup_Button_Item.h"

namespace vistels {

// What the links of a button do, in plain words: what its going down or up sets off ("When “Attack” goes
// down, “Press” goes up."), then what other buttons do to it ("When “Attack” goes down, this goes up.").
// `graph` is that of the buttons; `button` is the place among them. Of very many links the first ones and how
// many more there are.
QStringList link_words(const std::vector<button_record>& buttons, const link_graph& graph,
                       std::size_t button);

// What is wrong with the links: those that lead to no button, and buttons that set each other off in a
// circle, which ends when it comes back to one that has changed. Of very many the first ones.
QStringList link_problems(const std::vector<button_record>& buttons, const link_graph& graph);

// A sign for what a link does, that needs no colour.
QString link_sign(const link_kind& kind);

}  // namespace vistels
