// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/sxy_Adjust_Clip_Overlaps.h"

#include <algorithm>
#include <utility>

namespace vistels {

namespace {

constexpr double split_gap_seconds = 0.1;
constexpr double split_shortening_seconds = 0.05;

clip_span span_of(const sxy_CLIP& clip) {
    return {clip.secs_start(), clip.secs_end()};
}

}  // namespace

std::string_view clip_overlap_text(clip_overlap test) {
    switch (test) {
        case clip_overlap::overlaps_all:
            return "CLIP_OVERLAPS_ALL_OF_REFERENCE_CLIP";
        case clip_overlap::covered_by_all:
            return "CLIP_COVERED_BY_ALL_OF_REFERENCE_CLIP";
        case clip_overlap::overlaps_start:
            return "CLIP_OVERLAPS_START_OF_REFERENCE_CLIP";
        case clip_overlap::overlaps_end:
            return "CLIP_OVERLAPS_END_OF_REFERENCE_CLIP";
        case clip_overlap::same:
            return "CLIP_SAME_AS_REFERENCE_CLIP";
    }
    return "";
}

std::optional<clip_overlap> overlap_with(clip_span reference, clip_span other) {
    if (other.end < other.start) std::swap(other.start, other.end);
    const auto [start, end] = reference;
    if (other.start < start && end < other.end) return clip_overlap::overlaps_all;
    if (start < other.start && other.end < end) return clip_overlap::covered_by_all;
    if (other.start < start && start < other.end) return clip_overlap::overlaps_start;
    if (other.start < end && end < other.end) return clip_overlap::overlaps_end;
    if (other == reference) return clip_overlap::same;
    return std::nullopt;
}

std::optional<overlapping_clip> first_overlap(const sxy_ROW& row, const sxy_CLIP& reference) {
    for (const auto& clip : row.clips()) {
        if (clip->short_id() == reference.short_id()) continue;
        if (const auto test = overlap_with(span_of(reference), span_of(*clip))) return {{*test, clip}};
    }
    return std::nullopt;
}

split_clips split_overlapping(clip_span a, clip_span b) {
    const double begin = std::min(a.start, b.start);
    const double span = std::max(a.end, b.end) - begin;
    const double length_a = a.end - a.start;
    const double length_b = b.end - b.start;
    const double total = length_a + length_b;
    if (total < span || total <= 0) return {false, a, b};
    const double factor = span / total;
    split_clips split{true, a, b};
    const bool a_is_first = (a.start + a.end) / 2 < (b.start + b.end) / 2;
    auto& first = a_is_first ? split.a : split.b;
    auto& second = a_is_first ? split.b : split.a;
    const double first_length = factor * (a_is_first ? length_a : length_b);
    const double second_length = factor * (a_is_first ? length_b : length_a);
    first.start = begin;
    first.end = first.start + first_length - split_shortening_seconds;
    second.start = first.end + split_gap_seconds;
    second.end = second.start + second_length - split_shortening_seconds;
    return split;
}

}  // namespace vistels
