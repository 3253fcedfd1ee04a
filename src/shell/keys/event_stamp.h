// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace vistels {

// Tells when input events happened, on the monotonic clock (see clock::seconds), from the milliseconds that
// the window system stamps them with, of which only the low 32 bits count. How late an event is handled does
// not matter, nor how long there was none.
//
// Most window systems stamp with that same clock. How far another clock is ahead or behind is learned: no
// event is handled before it happens, so the least difference seen is the best. It may grow by 20 millionths
// of the time since, as far as the clocks of two machines drift apart. One thread.
class input_clock {
  public:
    // `stamp_milliseconds` 0: none, the event counts as happening now. Never after `now_seconds`.
    double seconds_of(std::uint64_t stamp_milliseconds, double now_seconds);

  private:
    enum class state { not_known, monotonic, another };
    state state_ = state::not_known;
    double difference_ = 0;  // seconds from another clock to the monotonic one, modulo 2^32 ms
    double learned_at_ = 0;
};

// By the input clock of this program. Main thread.
double event_seconds(std::uint64_t stamp_milliseconds, double now_seconds);

}  // namespace vistels
