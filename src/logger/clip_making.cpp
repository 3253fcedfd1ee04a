// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/clip_making.h"

#include <algorithm>
#include <utility>

#include "timeline/edits/clip_operations.h"
#include "util/clock.h"
#include "util/uuid.h"

namespace vistels {

namespace {

constexpr double seconds_in_a_minute = 60;
// Longer ones are not meant: no clip may become endless.
constexpr double most_seconds_widened = 1e6;

double widening(double seconds) {
    return std::clamp(seconds, -most_seconds_widened, most_seconds_widened);
}

// All clips that overlap or touch the span, and those that the union with them does, in row order; `span`
// becomes the union.
std::vector<clip_pointer> clips_joined(const sxy_ROW& row, clip_span& span) {
    const auto& clips = row.clips();
    // Of those that reach up to the span the first in the row starts earliest; when there is none that starts
    // before it, all others that are met start within it or where it grows to.
    std::size_t first = clips.first_ending_at(span.start);
    while (first < clips.size() && clips[first]->secs_start() < span.start) {
        span.start = clips[first]->secs_start();
        first = clips.first_ending_at(span.start);
    }
    std::vector<clip_pointer> met;
    for (auto clip = clips.begin() + static_cast<std::ptrdiff_t>(first);
         clip != clips.end() && (*clip)->secs_start() <= span.end; ++clip) {
        span.end = std::max(span.end, (*clip)->secs_end());
        met.push_back(*clip);
    }
    return met;
}

// The hull of all; nothing when one is not known.
std::optional<clip_span> joined_held_time(const std::vector<clip_pointer>& clips, clip_span held,
                                          const held_time_of& held_time) {
    for (const auto& clip : clips) {
        const auto other = held_time(*clip);
        if (!other) return std::nullopt;
        held = {std::min(held.start, other->start), std::max(held.end, other->end)};
    }
    return held;
}

}  // namespace

pressed_span span_of_press(const markup_Button_Item& button, held_press press, double earliest) {
    const bool is_timer = button.is(button_type::timer_clip);
    const double in = is_timer ? 0 : widening(button.secs_in());
    const double out = is_timer ? 0 : widening(button.secs_out());
    clip_span held{press.pressed, press.released};
    double start = held.start - in;
    if (held.end < held.start) {
        if (press.jumped_back && held.end > start) {
            held.start = held.end;
        } else {
            std::swap(held.start, held.end);
            start = held.start - in;
        }
    }
    pressed_span made{{start, held.end + out}, held};
    // With 0 in the place of negative ones it is no shorter than what was held.
    if (made.span.end - made.span.start < std::min(held.end - held.start, shortest_clip_seconds)) {
        made.span = {start + std::min(in, 0.0), held.end + std::max(out, 0.0)};
    }
    made.span.start = std::max(made.span.start, std::min(earliest, held.start));
    made.span.end = std::max(made.span.start, made.span.end);
    return made;
}

sxy_ROW new_row_of_button(const markup_Button_Item& owner) {
    sxy_ROW row;
    row.set_uuid(shared_text(new_uuid()));
    row.set_name(owner.name());
    row.set_category(owner.category());
    row.set_col(owner.made_colour());
    row.set_is_timer_row(owner.is(button_type::timer_clip));
    return row;
}

sxy_CLIP new_clip_of_button(const markup_Button_Item& button, const std::string& uuid, const sxy_ROW& row,
                            double at) {
    sxy_CLIP clip;
    clip.set_id(uuid);
    clip.set_secs_start(at);
    clip.set_secs_end(at);
    clip.set_row_uuid_in_clip(row.uuid());
    clip.set_row_category_in_clip(shared_text(row.category()));
    const auto colour = button.made_colour();
    clip.set_col(colour ? colour : row.col());
    if (!button.is(button_type::timer_clip)) return clip;
    if (const double offset = button.timer_offset(); offset != 0) clip.set_mins(offset / seconds_in_a_minute);
    if (button.timer_is_cumulative()) clip.set_timer_is_cumulative(true);
    if (button.timer_counts_down()) clip.set_timer_counts_down(true);
    return clip;
}

planned_finish plan_finish(const sxy_DATA_root& timeline, const clip_place& growing,
                           const markup_Button_Item& button, const pressed_span& pressed,
                           const held_time_of& held_time) {
    const auto row = timeline.row(growing.row);
    planned_finish plan{{}, growing.clip->id(), pressed.span, pressed.held, {}};
    if (row && button.merge_clips()) {
        clip_span joined = pressed.span;
        const auto met = clips_joined(*row, joined);
        std::vector<std::string> ids;
        for (const auto& clip : met) ids.push_back(clip->id());
        auto merged =
            plan_clips_Merge(timeline, ids, {{}, seconds_since_1970()}, ended_clip{growing, pressed.span});
        if (merged) {
            return {std::move(merged.value().operations),
                    std::move(merged.value().scope),
                    joined,
                    joined_held_time(met, pressed.held, held_time),
                    {}};
        }
    } else if (row && !button.allow_overlapping_clips()) {
        auto placed = place_on_row(*row, pressed.span, pressed.held, held_time);
        plan.span = placed.span;
        plan.moved = std::move(placed.moved);
    }
    plan.operations.push_back(plan_end(timeline, {growing, plan.span}));
    for (const auto& neighbour : plan.moved) {
        plan.operations.emplace_back(plan_new_times(*neighbour.clip, neighbour.span));
    }
    return plan;
}

}  // namespace vistels
