// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <unordered_map>
#include <vector>

#include "timeline/edits/timeline_edit.h"
#include "timeline/records/sxy_DATA_root.h"

namespace vistels {

// The clips that were deleted from a timeline lately: the latest tombstone of each by the clip's UUID.
using tombstones_by_clip = std::unordered_map<std::string, sxy_Deleted_Clip_Item_k11>;

// The tombstones in the rows that have not expired at `now` (seconds since 1970).
tombstones_by_clip tombstones_of(const std::vector<row_pointer>& rows, double now);

// Leaves out of `incoming` the clips that were deleted; returns how many. For whatever brings clips from
// outside, so that a deleted clip does not come back with them.
std::size_t leave_out_deleted_clips(timeline_snapshot& incoming, const tombstones_by_clip& deleted);

// The operation that makes `all` the tombstones of the row.
operation::change_row plan_tombstones(const sxy_ROW& row, std::vector<sxy_Deleted_Clip_Item_k11> all);

}  // namespace vistels
