// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

// A cause of file_cannot_be_read.
inline constexpr failure_of<> file_holds_no_code_window{"file holds no code window",
                                                        "it does not hold a code window"};

}  // namespace vistels
