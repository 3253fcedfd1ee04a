// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "timeline/edits/timeline_edit.h"
#include "util/result.h"

namespace vistels {

// Row compaction: several rows are shown as one master row, until they are expanded again.
//
// The master row keeps for each merged row, in five arrays of equal length, its category, colour, permanent
// UUID, sort number and compactor's sort number, which is the row's place in the timeline, from 1; its own
// compactor's sort number is the place where it stands. Beside the arrays, under "uncompacted_rows", it keeps
// all their stored values with the clips that do not say themselves that they belong to them. There and back
// leaves the timeline equal. Where another program has written the master row anew, without
// "uncompacted_rows", the names of the rows (they get the master's), their heights, timer marks, tombstones
// and places cannot be kept, nor the row of a clip that was made on another: the rows come where the master
// stood, in the order of their compactor's sort numbers, those without one last.

// Merges the rows (two or more) into a new row in the place of the topmost; it is named `name`, or as that
// row when that is empty. Refused while a clip of one of them still grows.
result<timeline_edit> plan_compact_rows(const sxy_DATA_root& timeline, const std::vector<shared_text>& rows,
                                        const std::string& name);

// Brings the rows of a master row back. Each clip goes to the row that it came from, one that came to the
// master since to the row it says it was made on or that alone has its category, else to the first: no clip
// is lost. Arrays of unequal length count as far as all of them reach.
result<timeline_edit> plan_expand_row(const sxy_DATA_root& timeline, const shared_text& master);

// Whether plan_expand_row would bring rows back.
bool is_compacted(const sxy_ROW& row);

}  // namespace vistels
