// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

inline constexpr failure_of<a_cause> defaults_are_used{"defaults are used",
                                                       "%1 The defaults are used instead."};
inline constexpr failure_of<a_cause, a_text> settings_were_kept{
    "settings were kept", "%1 It was kept as \"%2\"; the defaults are used instead."};
inline constexpr failure_of<a_cause, a_cause> settings_could_not_be_kept{"settings could not be kept",
                                                                         "%1 %2"};

inline constexpr failure_of<a_text> operator_is_unknown{"operator is unknown",
                                                        "\"%1\" is no operator of formulas."};
inline constexpr failure_of<a_text> pattern_cannot_be_stored{
    "pattern cannot be stored", "\"%1\" cannot be remembered: it holds characters that no file can keep."};
inline constexpr failure_of<a_text> free_space_is_no_percentage{
    "free space is no percentage", "The minimum free space of a vault is a percentage from 1 to 99, not %1."};

}  // namespace vistels
