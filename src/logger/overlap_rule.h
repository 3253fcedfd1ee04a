// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "timeline/edits/sxy_Adjust_Clip_Overlaps.h"
#include "timeline/records/sxy_ROW.h"

namespace vistels {

// How clips that presses make share the time of a row, as pure functions. All times are seconds on the
// collection's clock.

// A clip with the time for which its button was held; nothing when that is not known: the clip is then not
// moved.
struct coded_span {
    clip_span span;
    std::optional<clip_span> held;
};

// Shares the time between two clips of which `earlier` begins and ends before `later`: they are split as
// split_overlapping does, the joint moved as far as needed so that neither loses time for which it was held,
// nor becomes shorter than shortest_clip_seconds. A clip that is not moved keeps all; the other gives way to
// it. What cannot be shared stays overlapped.
void share_time(coded_span& earlier, coded_span& later);
inline constexpr double shortest_clip_seconds = 0.1;

// The clips of the row that overlap or touch the span, in row order.
std::vector<clip_pointer> clips_meeting(const sxy_ROW& row, clip_span span);

struct moved_clip {
    clip_pointer clip;  // as it was
    clip_span span;
};
struct placed_clip {
    clip_span span;
    std::vector<moved_clip> moved;  // neighbours, each once
};
using held_time_of = std::function<std::optional<clip_span>(const sxy_CLIP&)>;

// Where on the row a new clip goes that wants `wanted`, its button having been held over `held`. It shares
// the time with the clips that it overlaps, one after another from the earliest; where one of the two lies
// within the other both stay.
placed_clip place_on_row(const sxy_ROW& row, clip_span wanted, clip_span held, const held_time_of& held_time);

}  // namespace vistels
