// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>

#include "video/movie_Part_DRONE_Offset_Item.h"

namespace vistels {

// The parts with that gap, from 0, before the part; it and all behind it move along.
movie_Part_DRONE_Offsets_Root with_gap(movie_Part_DRONE_Offsets_Root parts, std::size_t part, double gap);

// By how much part `index` starts later in `after` than in `before`; 0 for a part that is not in both.
double part_movement(const movie_Part_DRONE_Offsets_Root& before, const movie_Part_DRONE_Offsets_Root& after,
                     std::size_t index);

// The part that stands at a time of the vistel's time line; nothing in a gap.
std::optional<std::size_t> part_at(const movie_Part_DRONE_Offsets_Root& parts, double seconds);

}  // namespace vistels
