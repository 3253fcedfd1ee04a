// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

inline constexpr failure_of<a_text> demo_has_too_many_cameras{"demo has too many cameras",
                                                              "The demo event can have 1 to %1 cameras."};
inline constexpr failure_of<a_text, a_text> demo_has_another_length{
    "demo has another length", "The demo event can last %1 to %2 seconds."};
inline constexpr failure_of<> demo_was_cancelled{"demo was cancelled", "The demo event was cancelled."};
inline constexpr failure_of<a_text> demo_vault_has_no_name{"demo vault has no name",
                                                           "\"%1\" is no name for a vault."};

}  // namespace vistels
