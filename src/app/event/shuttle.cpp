// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/shuttle.h"

#include <algorithm>
#include <iterator>

namespace vistels {

namespace {

constexpr double fast_rates[] = {1, 2, 4, 8, 16, 32, 64};
constexpr double slow_rates[] = {0.5, 0.25, 0.1};

}  // namespace

double next_shuttle_rate(double rate, bool playing, int direction, double fastest) {
    const double speed = playing ? rate * direction : 0;
    const auto* const next = std::upper_bound(std::begin(fast_rates), std::end(fast_rates), speed);
    return direction * std::min(next == std::end(fast_rates) ? speed : *next, fastest);
}

double next_slow_rate(double rate, bool playing, int direction, double fastest) {
    const double speed = playing && rate * direction > 0 ? rate * direction : 1;
    const auto* const next =
        std::find_if(std::begin(slow_rates), std::end(slow_rates), [&](double slow) { return slow < speed; });
    return direction * std::min(next == std::end(slow_rates) ? *std::prev(next) : *next, fastest);
}

double looped(double seconds, double rate, double start, double end) {
    if (!(end > start)) return seconds;
    if (rate > 0 && seconds >= end) return start;
    if (rate < 0 && seconds <= start) return end;
    return seconds;
}

}  // namespace vistels
