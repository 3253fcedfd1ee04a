// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "timeline/edits/timeline_edit.h"
#include "util/result.h"

namespace vistels {

// What a hand does to clips on a timeline: moving, trimming, parting and drawing them. Planned as edits and
// not yet applied; refused with a reason when a clip is gone or still grows. An edit that would change
// nothing has no operations. Times in seconds on the collection's clock. Any thread that owns the timeline.

// A trim leaves so much of a clip.
inline constexpr double least_seconds_left = 0.04;

// Moves clips along the clock, with the times of all that is on them, and by so many of the rows in `order`;
// a clip on another row, and one that would leave them, stays on its row.
result<timeline_edit> plan_move_clips(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                                      double seconds, const std::vector<shared_text>& order = {},
                                      int rows = 0);

// Puts the clips on that row, their times as they are.
result<timeline_edit> plan_to_row(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                                  const shared_text& row);

// Moves the starts and the ends of the clips by so much each; least_seconds_left is left of each, or what
// it had where that is less.
result<timeline_edit> plan_trim_edges(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                                      double starts_by, double ends_by);

// `before` ends and `after` starts at `seconds`, as near to it as leaves something of both.
result<timeline_edit> plan_roll_joint(const sxy_DATA_root& timeline, const std::string& before,
                                      const std::string& after, double seconds);

// Parts those of the clips that lie around `seconds`. The first half keeps the clip's UUID. What has a time
// (qualifiers, pause points, triggers, inserted objects) goes to the half that holds it; all else is on both.
// Refused when none of them lies there.
result<timeline_edit> plan_split_at(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                                    double seconds, const edit_stamp& stamp);

// A new clip without qualifiers, in its row's colour. Its UUID is that of the one insert_clip.
result<timeline_edit> plan_draw_clip(const sxy_DATA_root& timeline, const shared_text& row, double start,
                                     double end);

// The clips as they can be put into any timeline, also of another program run: their rows by name and all
// that is on them.
result<property_dictionary> copied_clips(const sxy_DATA_root& timeline,
                                         const std::vector<std::string>& clips);
// Puts copies of them in so that the earliest starts at `seconds`: on the row of the same UUID, else of the
// same name and category, else on one that is made for it. All get UUIDs of their own.
result<timeline_edit> plan_paste(const sxy_DATA_root& timeline, const property_dictionary& copied,
                                 double seconds, const edit_stamp& stamp);

}  // namespace vistels
