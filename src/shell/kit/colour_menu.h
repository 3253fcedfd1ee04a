// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>

#include "util/colour_text.h"

class QMenu;
class QString;

namespace vistels {

// A menu below `title` of the colours that are given out to rows and buttons, each with its name. Main
// thread.
QMenu* add_colour_menu(QMenu& menu, const QString& title, const std::function<void(const colour&)>& choose);

}  // namespace vistels
