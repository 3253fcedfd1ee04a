// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// Prints to standard error how long after the program's beginning something happened, when the variable
// VISTELS_TRACE_START is set; nothing otherwise. The first call counts as the beginning.
void trace_start(const char* what);

}  // namespace vistels
