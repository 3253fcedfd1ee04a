// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "demo/simulation.h"
#include "timeline/records/sxy_DATA_root.h"

namespace vistels::demo {

// The timeline of a game as an analyst codes it: a row for each kind of play, a clip for each play from 0 to
// `until` (seconds) with a lead-in and lead-out, players, zone and outcome as qualifiers, stars, a few notes.
// Clips of a row do not overlap. `collection_number` is the "coll_id" of the clips. The UUIDs are new.
timeline_snapshot code_game(const game_record& game, double until, std::int64_t collection_number);

}  // namespace vistels::demo
