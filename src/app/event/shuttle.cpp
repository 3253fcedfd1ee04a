// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/shuttle.h"

#include <algorithm>
#include <cmath>

namespace vistels {

double next_shuttle_rate(double rate, bool playing, int direction, double fastest) {
    const bool goes_on = playing && rate * direction >= 1;
    const double speed = goes_on ? std::min(std::abs(rate) * 2, std::max(1.0, fastest)) : 1.0;
    return speed * direction;
}

double looped(double seconds, double rate, double start, double end) {
    if (!(end > start)) return seconds;
    if (rate > 0 && seconds >= end) return start;
    if (rate < 0 && seconds <= start) return end;
    return seconds;
}

}  // namespace vistels
