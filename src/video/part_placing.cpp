// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/part_placing.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace vistels {

namespace {

// The nudge buttons repeat some 20 times a second.
constexpr int slow_repeats = 20;
constexpr int faster_repeats = 60;
constexpr double faster_frames = 5;
constexpr double fastest_seconds = 1;

}  // namespace

gap_range allowed_gap(const movie_Part_DRONE_Offsets_Root& parts, std::size_t part) {
    if (part >= parts.parts.size()) return {};
    if (part + 1 == parts.parts.size()) return {0, std::numeric_limits<double>::infinity()};
    return {0, parts.parts[part].gap_before + parts.parts[part + 1].gap_before};
}

movie_Part_DRONE_Offsets_Root with_part_placed(movie_Part_DRONE_Offsets_Root parts, std::size_t part,
                                               double gap) {
    if (part >= parts.parts.size() || !std::isfinite(gap)) return parts;
    const auto range = allowed_gap(parts, part);
    const double placed = std::clamp(gap, range.least, range.most);
    if (part + 1 < parts.parts.size()) parts.parts[part + 1].gap_before = range.most - placed;
    parts.parts[part].gap_before = placed;
    return parts;
}

movie_Part_DRONE_Offsets_Root with_gap(movie_Part_DRONE_Offsets_Root parts, std::size_t part, double gap) {
    if (part < parts.parts.size() && std::isfinite(gap)) parts.parts[part].gap_before = std::max(gap, 0.0);
    return parts;
}

part_drag::part_drag(movie_Part_DRONE_Offsets_Root parts, std::size_t part)
    : at_mouse_down_(parts), parts_(std::move(parts)), part_(part) {}

void part_drag::move_to(double seconds) {
    if (part_ >= at_mouse_down_.parts.size()) return;
    const double gap = at_mouse_down_.parts[part_].gap_before + seconds;
    is_valid_ = allowed_gap(at_mouse_down_, part_).holds(gap);
    parts_ = with_part_placed(at_mouse_down_, part_, gap);
}

double nudge_seconds(int repeat, double frame_seconds) {
    if (repeat < slow_repeats) return frame_seconds;
    return repeat < faster_repeats ? faster_frames * frame_seconds
                                   : std::max(fastest_seconds, faster_frames * frame_seconds);
}

double part_movement(const movie_Part_DRONE_Offsets_Root& before, const movie_Part_DRONE_Offsets_Root& after,
                     std::size_t index) {
    if (index >= before.parts.size() || index >= after.parts.size()) return 0;
    return after.starts()[index] - before.starts()[index];
}

std::optional<std::size_t> part_at(const movie_Part_DRONE_Offsets_Root& parts, double seconds) {
    const auto starts = parts.starts();
    for (std::size_t index = 0; index < starts.size(); ++index) {
        if (seconds >= starts[index] && seconds < starts[index] + parts.parts[index].part_duration)
            return index;
    }
    return std::nullopt;
}

}  // namespace vistels
