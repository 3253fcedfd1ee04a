// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "app/event/collection_changes.h"
#include "timeline/records/sxy_DATA_root.h"
#include "video/movie_Part_DRONE_Offset_Item.h"

namespace vistels {

// The changes of where the movie parts of a vistel lie on its time line; seconds. Where the vistel locks its
// clips ("drone_lock_clips"), the clips of the timeline that lie on a part which moves (by their middle) move
// with it, in the same step.

// A gap gets another length; the parts behind it move along.
collection_change plan_gap(const video_collection_ROOT& collection, const sxy_DATA_root& timeline,
                           const std::string& vistel, std::size_t part, double seconds);
// The first part whose movie is missing gets that of `brought`, which lies in the vistel's folder, and its
// duration. The parts behind it stay where they are, as far as the gap after it allows.
collection_change plan_found_movie(const std::string& vistel, const movie_Part_DRONE_Offset_Item& brought);
// Further parts behind those it has.
using part_list = std::vector<movie_Part_DRONE_Offset_Item>;
collection_change plan_more_parts(const std::string& vistel, const part_list& brought);
// Its parts get other movies: `made_of` is what each of `brought` was made of. Their movies so far are kept
// as unused ones. It is refused when the vistel has other movies by then; where its parts lie is left as it
// is.
collection_change plan_other_movies(const std::string& vistel, const part_list& made_of,
                                    const part_list& brought);
collection_change plan_clip_lock(const std::string& vistel, bool locks);

}  // namespace vistels
