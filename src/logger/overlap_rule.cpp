// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/overlap_rule.h"

#include <algorithm>

namespace vistels {

namespace {

constexpr double gap_seconds = 0.1;

clip_span span_of(const sxy_CLIP& clip) {
    return {clip.secs_start(), clip.secs_end()};
}

bool lies_within(clip_span inner, clip_span outer) {
    return outer.start <= inner.start && inner.end <= outer.end;
}

double least_left(clip_span span) {
    return std::min(span.end - span.start, shortest_clip_seconds);
}

// How far the end may come forward, and the start be put off.
double earliest_end(const coded_span& clip) {
    return std::max(std::min(clip.span.end, clip.held->end), clip.span.start + least_left(clip.span));
}
double latest_start(const coded_span& clip) {
    return std::min(std::max(clip.span.start, clip.held->start), clip.span.end - least_left(clip.span));
}

}  // namespace

void share_time(coded_span& earlier, coded_span& later) {
    if (!earlier.held && !later.held) return;
    if (!earlier.held) {
        later.span.start = std::min(earlier.span.end, latest_start(later));
        return;
    }
    if (!later.held) {
        earlier.span.end = std::max(later.span.start, earliest_end(earlier));
        return;
    }
    const double least_end = earliest_end(earlier);
    const double most_start = latest_start(later);
    if (least_end >= most_start) {
        earlier.span.end = least_end;
        later.span.start = most_start;
        return;
    }
    const auto split = split_overlapping(earlier.span, later.span);
    const double half_gap = std::min(gap_seconds, most_start - least_end) / 2;
    const double joint =
        std::clamp((split.a.end + split.b.start) / 2, least_end + half_gap, most_start - half_gap);
    earlier.span.end = joint - half_gap;
    later.span.start = joint + half_gap;
}

std::vector<clip_pointer> clips_meeting(const sxy_ROW& row, clip_span span) {
    std::vector<clip_pointer> met;
    const auto& clips = row.clips();
    for (std::size_t index = clips.first_ending_at(span.start); index < clips.size();
         index = clips.first_ending_at(span.start, index + 1)) {
        const auto& clip = clips[index];
        if (clip->secs_start() > span.end) break;
        met.push_back(clip);
    }
    return met;
}

placed_clip place_on_row(const sxy_ROW& row, clip_span wanted, clip_span held,
                         const held_time_of& held_time) {
    placed_clip placed{wanted, {}};
    coded_span own{wanted, held};
    for (const auto& clip : clips_meeting(row, wanted)) {
        const auto span = span_of(*clip);
        if (span.end <= own.span.start || own.span.end <= span.start) continue;
        if (lies_within(span, own.span) || lies_within(own.span, span)) continue;
        coded_span other{span, held_time(*clip)};
        if (span.start < own.span.start) {
            share_time(other, own);
        } else {
            share_time(own, other);
        }
        if (other.span != span) placed.moved.push_back({clip, other.span});
    }
    placed.span = own.span;
    return placed;
}

}  // namespace vistels
