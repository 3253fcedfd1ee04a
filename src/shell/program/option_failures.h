// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

inline constexpr failure_of<a_text> option_needs_a_value{"option needs a value", "%1 needs a value."};
inline constexpr failure_of<a_text, a_text> option_has_another_value{"option has another value",
                                                                     "“%1” is no value for %2."};
inline constexpr failure_of<a_text> option_is_unknown{"option is unknown", "There is no option “%1”."};

}  // namespace vistels
