// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/keys/event_stamp.h"

#include <algorithm>
#include <cmath>

namespace vistels {

namespace {

constexpr double round_seconds = 4294967.296;  // after which stamps begin anew: 2^32 ms
constexpr double rounding = 0.001;             // stamps are whole milliseconds, rounded down
// Nothing is handled later than this. Another clock is this near to the monotonic one, and taken for it, once
// in seventy thousand times.
constexpr double longest_delay = 60;
constexpr double drift = 20e-6;  // of two clocks, seconds a second

// From -half a round to half a round.
double nearest(double seconds) {
    return std::remainder(seconds, round_seconds);
}

}  // namespace

double input_clock::seconds_of(std::uint64_t stamp_milliseconds, double now_seconds) {
    if (stamp_milliseconds == 0) return now_seconds;
    const double stamp = static_cast<double>(static_cast<std::uint32_t>(stamp_milliseconds)) / 1000;
    const double apart = nearest(now_seconds - stamp);
    const auto is_delay = [](double seconds) { return seconds >= -rounding && seconds <= longest_delay; };
    if (state_ != state::another && is_delay(apart)) {
        state_ = state::monotonic;
        return now_seconds - std::max(apart, 0.0);
    }
    const double age = nearest(apart - difference_);
    const double may_have_grown = (now_seconds - learned_at_) * drift;
    if (state_ == state::another && age > may_have_grown && age <= longest_delay) return now_seconds - age;
    state_ = state::another;
    difference_ = apart;
    learned_at_ = now_seconds;
    return now_seconds;
}

double event_seconds(std::uint64_t stamp_milliseconds, double now_seconds) {
    static input_clock clock;
    return clock.seconds_of(stamp_milliseconds, now_seconds);
}

}  // namespace vistels
