// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "timeline/edits/timeline_edit.h"
#include "util/colour_text.h"
#include "util/result.h"

namespace vistels {

// What a person does to rows, planned as edits and not yet applied. Refused when a row is gone; an edit that
// would change nothing has no operations. Any thread that owns the timeline.

// An empty row below that one (an empty UUID: below all), called "Row", "Row 2", ... as is free.
timeline_edit plan_new_row(const sxy_DATA_root& timeline, const shared_text& below, const colour& shade);
// Refused without a name. Blanks around it are left out.
result<timeline_edit> plan_rename_row(const sxy_DATA_root& timeline, const shared_text& row,
                                      const std::string& name);
// Clips that have the old colour of their row get the new one.
result<timeline_edit> plan_row_colour(const sxy_DATA_root& timeline, const std::vector<shared_text>& rows,
                                      const colour& shade);
result<timeline_edit> plan_row_category(const sxy_DATA_root& timeline, const std::vector<shared_text>& rows,
                                        const std::string& category);
// In points.
result<timeline_edit> plan_row_height(const sxy_DATA_root& timeline, const std::vector<shared_text>& rows,
                                      double height);
// The rows, as they follow each other, stand before the one that is at `index` now; at the end: behind all.
result<timeline_edit> plan_move_rows(const sxy_DATA_root& timeline, const std::vector<shared_text>& rows,
                                     std::size_t index);

bool is_hidden(const sxy_ROW& row);
// They keep their heights.
result<timeline_edit> plan_hide_rows(const sxy_DATA_root& timeline, const std::vector<shared_text>& rows);
timeline_edit plan_show_hidden_rows(const sxy_DATA_root& timeline);

enum class row_order {
    by_name,      // as a person reads it: "Row 9" before "Row 10"
    by_category,  // then by name; rows without one last
    by_count,     // of clips, most first
    by_time,      // of the first clip; rows without any last
};
// Rows that are equal in it stay as they follow each other.
timeline_edit plan_sort_rows(const sxy_DATA_root& timeline, row_order order);

}  // namespace vistels
