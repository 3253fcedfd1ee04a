// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/part_placing.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vistels {

movie_Part_DRONE_Offsets_Root with_gap(movie_Part_DRONE_Offsets_Root parts, std::size_t part, double gap) {
    if (part < parts.parts.size() && std::isfinite(gap)) parts.parts[part].gap_before = std::max(gap, 0.0);
    return parts;
}

double part_movement(const movie_Part_DRONE_Offsets_Root& before, const movie_Part_DRONE_Offsets_Root& after,
                     std::size_t index) {
    if (index >= before.parts.size() || index >= after.parts.size()) return 0;
    return after.starts()[index] - before.starts()[index];
}

std::optional<std::size_t> part_at(const movie_Part_DRONE_Offsets_Root& parts, double seconds) {
    const auto starts = parts.starts();
    for (std::size_t index = 0; index < starts.size(); ++index) {
        if (seconds >= starts[index] && seconds < starts[index] + parts.parts[index].part_duration)
            return index;
    }
    return std::nullopt;
}

}  // namespace vistels
