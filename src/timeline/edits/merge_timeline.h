// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "timeline/edits/clip_operations.h"
#include "timeline/edits/timeline_edit.h"
#include "timeline/records/sxy_DATA_root.h"
#include "util/result.h"

namespace vistels {

// The edit that merges another copy of the same timeline, coded on another machine, into `mine`. Refused when
// it is another timeline, or while a clip that it would change is still growing. Of `other` nothing is
// changed.
//
// - Rows are the same by UUID, or else by name and category. What is new in `other` comes, below the row that
//   it stands below there; a row all of whose clips were deleted here does not. The values of a row that both
//   have stay as they are here.
// - Clips are the same by UUID: the one edited later wins ("edit_seconds"), and mine when neither is later.
// - A clip deleted here within the week before `now` (seconds since 1970) does not come back. A clip deleted
//   there goes here too, unless it was edited here after that; its tombstone comes along.
result<timeline_edit> plan_merge_timeline(const sxy_DATA_root& mine, const timeline_snapshot& other,
                                          double now);

}  // namespace vistels
