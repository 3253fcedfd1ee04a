// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "logger/markup_Button_Item.h"
#include "timeline/edits/sxy_Adjust_Clip_Overlaps.h"
#include "timeline/edits/timeline_edit.h"
#include "timeline/records/sxy_DATA_root.h"

namespace vistels {

// What a press makes of a timeline, as pure functions: the rules that press_engine states. All times are
// seconds on the collection's clock.

// The time held down, widened by "secs in" and "secs out". The start is not before `earliest`, nor after the
// end; an earliest time later than the press itself does not count.
clip_span widened_span(const markup_Button_Item& button, clip_span held, double earliest);

// The free piece of `wanted` on the row for a clip made by holding a button over `held`; `wanted` itself when
// nothing overlaps it, or when no piece is left that is long enough to be seen.
clip_span free_span(const sxy_ROW& row, clip_span wanted, clip_span held);

// The row that the button's clips go to; null when it is still to be made.
row_pointer row_of_button(const sxy_DATA_root& timeline, const markup_Button_Item& button);
sxy_ROW new_row_of_button(const markup_Button_Item& button);
// The clip that a press begins on the row, with the button's colour as its own, else that of the row.
sxy_CLIP new_clip_of_button(const markup_Button_Item& button, const std::string& uuid, const sxy_ROW& row,
                            double at);

// The operations that put the growing clip `growing` into its row (whether the timeline still has it or it
// got lost), and which clip holds it then: itself, or the one that it was merged into.
struct planned_finish {
    std::vector<operation::any> operations;
    std::string clip;
};
planned_finish plan_finish(const sxy_DATA_root& timeline, const clip_place& growing,
                           const markup_Button_Item& button, clip_span held, double earliest);

// The clips on which a qualifier pressed at `at` is stamped. `made` are the clips made by buttons, the last
// at the end; `is_blocked` tells which clips take no qualifiers.
std::vector<std::string> stamped_clips(const sxy_DATA_root& timeline, double at,
                                       const std::vector<std::string>& made,
                                       const std::function<bool(const clip_place&)>& is_blocked);

// Shorter free pieces are no place for a clip.
inline constexpr double shortest_piece_seconds = 0.01;

}  // namespace vistels
