// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "timeline/edits/timeline_edit.h"
#include "timeline/records/sxy_DATA_root.h"
#include "util/colour_text.h"

namespace vistels {

// The edits that the inspector makes of the selected clips, planned and not yet applied. Clips that are no
// longer there are passed over; an edit that would change nothing has no operations. Any thread.

// Ends in seconds on the collection's clock; given the wrong way round they are put in order.
timeline_edit plan_clip_times(const sxy_DATA_root& timeline, const std::string& clip, double start,
                              double end);
timeline_edit plan_clip_stars(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                              int stars);
// Without a colour the clips show the colour of their row.
timeline_edit plan_clip_colour(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                               const std::optional<colour>& chosen);
timeline_edit plan_remove_qualifier(const sxy_DATA_root& timeline, const std::string& clip,
                                    const std::string& qualifier);

// How a clip is called: its row's name and its number in the row, from 1; "Shot 17".
std::string clip_title(const sxy_DATA_root& timeline, const clip_place& place);

}  // namespace vistels
