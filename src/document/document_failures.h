// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

inline constexpr failure_of<> held_back{"held back",
                                        "It was not saved: what belongs to it could not be saved."};
inline constexpr failure_of<> other_not_open{"other not open", "What else it changes is not open."};

}  // namespace vistels
