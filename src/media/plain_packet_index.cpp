// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <cmath>

#include "media/frame_reader.h"
#include "media/packet_index.h"

namespace vistels {

std::size_t packet_index::frame_at(double seconds) const {
    const double reached = std::floor((seconds + frame_tolerance_seconds) / seconds_per_tick);
    const auto after =
        std::upper_bound(stamps.begin(), stamps.end(), reached,
                         [](double at, std::int64_t stamp) { return at < static_cast<double>(stamp); });
    return after == stamps.begin() ? 0 : static_cast<std::size_t>(after - stamps.begin()) - 1;
}

}  // namespace vistels
