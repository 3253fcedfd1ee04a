// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

inline constexpr failure_of<> event_is_closed{"event is closed", "The event is closed."};
inline constexpr failure_of<> event_changed_meanwhile{
    "event changed meanwhile", "The event was changed while movies were written for this. Do it once more."};
inline constexpr failure_of<> vistel_left_meanwhile{"vistel left meanwhile",
                                                    "Its vistel was taken out of the collection meanwhile."};
// What the user knows already; it is not shown.
inline constexpr failure_of<> failure_was_told{"failure was told", "it was told"};

}  // namespace vistels
