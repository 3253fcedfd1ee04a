// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class QKeyEvent;

namespace vistels {

// What the key of an event types without Shift and the like ("1" where it types "!"), as far as the window
// system tells: an X server does, by its layout in use. Elsewhere what was seen of the key in this run; empty
// when it is not known. Main thread.
QString plain_character(const QKeyEvent& event);

}  // namespace vistels
