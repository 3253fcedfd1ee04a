// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace vistels {

// The moment of an input event on the monotonic clock (see clock::seconds), from the milliseconds that the
// window system stamped it with and the moment `now_seconds` at which it is handled. Window systems stamp
// with the low 32 bits of that same clock; a stamp that is not of the last second belongs to some other
// clock, and the event counts as happening now.
double event_seconds(std::uint64_t stamp_milliseconds, double now_seconds);

}  // namespace vistels
