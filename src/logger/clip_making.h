// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "logger/markup_Button_Item.h"
#include "logger/overlap_rule.h"
#include "timeline/edits/timeline_edit.h"
#include "timeline/records/sxy_DATA_root.h"

namespace vistels {

// What a press of a clip button makes of a timeline, as pure functions: the rules that press_engine states.
// All times are seconds on the collection's clock.

// For how long a button was held down, by the moments of press and release.
struct held_press {
    double pressed = 0;
    double released = 0;
    // The playhead jumped back meanwhile, so that a release before the press is the end. Without it playback
    // ran backwards, and the two are put in order.
    bool jumped_back = false;
};
// The time held and the clip that it makes, widened by "secs in" and "secs out" (not that of a timer clip,
// whose clock runs from press to release). Negative ones make it shorter, but where together they would leave
// less of it than shortest_clip_seconds, or than was held, they count as 0: nothing that was pressed is cut
// away. The start is not before `earliest`, nor after the end; an earliest time later than the press itself
// does not count.
struct pressed_span {
    clip_span span;
    clip_span held;
};
pressed_span span_of_press(const markup_Button_Item& button, held_press press, double earliest);

// The row that `owner` makes for its clips.
sxy_ROW new_row_of_button(const markup_Button_Item& owner);
// The clip that a press begins on the row, with the button's colour as its own, else that of the row, and of
// a timer clip with its clock.
sxy_CLIP new_clip_of_button(const markup_Button_Item& button, const std::string& uuid, const sxy_ROW& row,
                            double at);

// What puts the growing clip `growing` into its row (whether the timeline still has it or not).
struct planned_finish {
    std::vector<operation::any> operations;
    std::string clip;  // which holds it then: itself, or the one that it was merged into
    clip_span span;
    std::optional<clip_span> held;  // nothing: a clip was merged of which it is not known
    std::vector<moved_clip> moved;  // neighbours
};
planned_finish plan_finish(const sxy_DATA_root& timeline, const clip_place& growing,
                           const markup_Button_Item& button, const pressed_span& pressed,
                           const held_time_of& held_time);

}  // namespace vistels
