// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string_view>

#include "timeline/records/sxy_ROW.h"

namespace vistels {

// How a clip lies against a reference clip; tested in this order.
enum class clip_overlap {
    overlaps_all,    // it begins before and ends after the reference clip
    covered_by_all,  // it lies within the reference clip
    overlaps_start,  // the start of the reference clip lies within it
    overlaps_end,    // the end of the reference clip lies within it
    same,            // both times are equal
};

// "CLIP_OVERLAPS_ALL_OF_REFERENCE_CLIP" and so on.
std::string_view clip_overlap_text(clip_overlap test);

// A start and an end in seconds.
struct clip_span {
    double start = 0;
    double end = 0;
    bool operator==(const clip_span&) const = default;
};

// Nothing when they do not overlap; clips that only touch do not. A span whose end is before its start is
// taken the other way round.
std::optional<clip_overlap> overlap_with(clip_span reference, clip_span other);

struct overlapping_clip {
    clip_overlap test;
    clip_pointer clip;
};

// The first other clip of the row, in the row's order, that overlaps the reference clip.
std::optional<overlapping_clip> first_overlap(const sxy_ROW& row, const sxy_CLIP& reference);

// Two overlapping clips shrunk by one factor and laid end to end over their union, 0.1 seconds apart, the one
// with the earlier midpoint first. `changed` is false, with the spans as they were, when they do not overlap.
struct split_clips {
    bool changed = false;
    clip_span a;
    clip_span b;
};
split_clips split_overlapping(clip_span a, clip_span b);

}  // namespace vistels
