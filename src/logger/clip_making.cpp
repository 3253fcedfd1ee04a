// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/clip_making.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "timeline/edits/clip_operations.h"
#include "util/clock.h"
#include "util/uuid.h"

namespace vistels {

namespace {

clip_span span_of(const sxy_CLIP& clip) {
    return {clip.secs_start(), clip.secs_end()};
}

double shared_length(clip_span a, clip_span b) {
    return std::max(0.0, std::min(a.end, b.end) - std::max(a.start, b.start));
}

// The clips of the row that `span` overlaps or touches, and those that the union with them does, in row
// order.
std::vector<clip_pointer> clips_met(const sxy_ROW& row, clip_span& span) {
    std::vector<clip_pointer> met;
    std::size_t before = 0;
    do {
        before = met.size();
        met.clear();
        for (const auto& clip : row.clips()) {
            const auto other = span_of(*clip);
            if (other.start > span.end) break;
            if (other.end < span.start) continue;
            met.push_back(clip);
            span = {std::min(span.start, other.start), std::max(span.end, other.end)};
        }
    } while (met.size() != before);
    return met;
}

std::vector<std::string> ids_of(const std::vector<clip_pointer>& clips) {
    std::vector<std::string> ids;
    for (const auto& clip : clips) ids.push_back(clip->id());
    return ids;
}

// The clip that started last among those of the row that hold the time; null for none.
clip_pointer last_started_at(const sxy_ROW& row, double at) {
    const auto& clips = row.clips();
    for (std::size_t index = clips.first_starting_at(at); index < clips.size(); ++index) {
        if (clips[index]->secs_start() > at) break;
        if (clips[index]->secs_end() > at) return clips[index];
    }
    for (std::size_t index = clips.first_starting_at(at); index > 0; --index) {
        if (clips[index - 1]->secs_end() > at) return clips[index - 1];
    }
    return nullptr;
}

// The clip that ended last before the time, of all rows.
std::optional<std::string> last_ended_before(const sxy_DATA_root& timeline, double at,
                                             const std::function<bool(const clip_place&)>& is_blocked) {
    clip_pointer last;
    for (const auto& row : timeline.rows()) {
        for (const auto& clip : row->clips()) {
            if (clip->secs_start() > at) break;
            const double end = clip->secs_end();
            if (end > at || (last && end <= last->secs_end())) continue;
            if (!is_blocked({clip, row->uuid()})) last = clip;
        }
    }
    return last ? std::optional(last->id()) : std::nullopt;
}

}  // namespace

clip_span widened_span(const markup_Button_Item& button, clip_span held, double earliest) {
    if (held.end < held.start) std::swap(held.start, held.end);
    clip_span span{held.start - button.secs_in(), held.end + button.secs_out()};
    span.start = std::max(span.start, std::min(earliest, held.start));
    span.end = std::max(span.start, span.end);
    return span;
}

clip_span free_span(const sxy_ROW& row, clip_span wanted, clip_span held) {
    if (held.end < held.start) std::swap(held.start, held.end);
    clip_span best = wanted;
    double best_share = -1;
    const auto offer = [&](clip_span piece) {
        const double length = piece.end - piece.start;
        if (length < shortest_piece_seconds) return;
        const double share = shared_length(piece, held);
        const bool longer = share == best_share && length > best.end - best.start;
        if (share <= best_share && !longer) return;
        best = piece;
        best_share = share;
    };
    double free_from = wanted.start;
    for (const auto& clip : row.clips()) {
        const auto other = span_of(*clip);
        if (other.start >= wanted.end) break;
        if (other.end <= free_from) continue;
        offer({free_from, other.start});
        free_from = other.end;
    }
    offer({free_from, wanted.end});
    return best;
}

row_pointer row_of_button(const sxy_DATA_root& timeline, const markup_Button_Item& button) {
    row_pointer first;
    const std::string name = button.name();
    const std::string category = button.category();
    for (const auto& row : timeline.rows()) {
        if (row->name() != name) continue;
        if (row->category() == category) return row;
        if (!first) first = row;
    }
    return first;
}

sxy_ROW new_row_of_button(const markup_Button_Item& button) {
    sxy_ROW row;
    row.set_uuid(shared_text(new_uuid()));
    row.set_name(button.name());
    row.set_category(button.category());
    row.set_col(button.made_colour());
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
    return clip;
}

planned_finish plan_finish(const sxy_DATA_root& timeline, const clip_place& growing,
                           const markup_Button_Item& button, clip_span held, double earliest) {
    clip_span span = widened_span(button, held, earliest);
    const auto row = timeline.row(growing.row);
    if (row && button.merge_clips()) {
        clip_span joined = span;
        const auto met = clips_met(*row, joined);
        auto merged =
            plan_clips_Merge(timeline, ids_of(met), {{}, seconds_since_1970()}, ended_clip{growing, span});
        if (merged) return {std::move(merged.value().operations), std::move(merged.value().scope)};
    } else if (row && !button.allow_overlapping_clips()) {
        span = free_span(*row, span, held);
    }
    return {{plan_end(timeline, {growing, span})}, growing.clip->id()};
}

std::vector<std::string> stamped_clips(const sxy_DATA_root& timeline, double at,
                                       const std::vector<std::string>& made,
                                       const std::function<bool(const clip_place&)>& is_blocked) {
    std::vector<std::string> clips;
    for (const auto& growing : timeline.live_clips()) {
        if (!is_blocked(growing)) clips.push_back(growing.clip->id());
    }
    if (!clips.empty()) return clips;
    for (const auto& row : timeline.rows()) {
        const auto clip = last_started_at(*row, at);
        if (clip && !is_blocked({clip, row->uuid()})) clips.push_back(clip->id());
    }
    if (!clips.empty()) return clips;
    for (auto last = made.rbegin(); last != made.rend(); ++last) {
        const auto place = timeline.find_clip(*last);
        if (place && !place->is_live && !is_blocked(*place)) return {*last};
    }
    if (const auto ended = last_ended_before(timeline, at, is_blocked)) clips.push_back(*ended);
    return clips;
}

}  // namespace vistels
