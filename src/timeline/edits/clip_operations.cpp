// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/clip_operations.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "timeline/edits/edit_failures.h"
#include "timeline/edits/edit_names.h"
#include "timeline/edits/tombstones.h"
#include "util/uuid.h"

namespace vistels {

namespace {

clip_span span_of(const sxy_CLIP& clip) {
    return {clip.secs_start(), clip.secs_end()};
}

// The other clip of its row that it is split from, or null.
clip_pointer split_partner(const sxy_ROW& row, const sxy_CLIP& clip) {
    for (const auto& other : row.clips()) {
        if (other->id() == clip.id()) continue;
        if (split_overlapping(span_of(clip), span_of(*other)).changed) return other;
    }
    return nullptr;
}

}  // namespace

result<std::vector<clip_place>> find_whole_clips(const sxy_DATA_root& timeline,
                                                 const std::vector<std::string>& clips) {
    std::vector<clip_place> places;
    std::set<std::string> seen;
    for (const auto& uuid : clips) {
        if (!seen.insert(uuid).second) continue;
        auto place = timeline.find_clip(uuid);
        if (!place) return clip_to_change_is_gone();
        if (place->is_live) return growing_clip_cannot_change();
        places.push_back(std::move(*place));
    }
    std::sort(places.begin(), places.end(),
              [](const auto& a, const auto& b) { return clip_before(*a.clip, *b.clip); });
    return places;
}

operation::change_clip plan_new_times(const sxy_CLIP& clip, clip_span span) {
    operation::change_clip change{clip.id(), {}, {}};
    change.set.set("time_start", span.start);
    change.set.set("time_end", span.end);
    const auto stored = write_clip_values(clip);
    if (const auto* drawings = stored.dictionary("telestration"))
        change.set.set("telestration", drawings_trimmed(*drawings, span));
    return change;
}

property_dictionary drawings_trimmed(property_dictionary drawings, clip_span span) {
    drawings.set("telestration_secs_start_trimmed", span.start);
    drawings.set("telestration_secs_end_trimmed", span.end);
    return drawings;
}

result<timeline_edit> plan_clips_Trim_Mark_in_Mark_Out(const sxy_DATA_root& timeline,
                                                       const std::vector<std::string>& clips,
                                                       std::optional<double> mark_in,
                                                       std::optional<double> mark_out) {
    auto found = find_whole_clips(timeline, clips);
    if (!found) return found.error();
    if ((mark_in && !std::isfinite(*mark_in)) || (mark_out && !std::isfinite(*mark_out))) {
        return clip_trimmed_to_no_time();
    }
    timeline_edit edit{edit_name::trim_clip, clips.size() == 1 ? clips.front() : std::string(), {}};
    if (clips.size() > 1) edit.name = edit_name::trim_clips;
    for (const auto& place : found.value()) {
        const double start = mark_in.value_or(place.clip->secs_start());
        const double end = mark_out.value_or(place.clip->secs_end());
        if (start == place.clip->secs_start() && end == place.clip->secs_end()) continue;
        if (start >= end) {
            const bool moves_start = mark_in.has_value();
            return moves_start ? clip_starts_behind_its_end() : clip_ends_before_its_start();
        }
        edit.operations.emplace_back(plan_new_times(*place.clip, {start, end}));
    }
    return edit;
}

result<timeline_edit> plan_split_overlap(const sxy_DATA_root& timeline,
                                         const std::vector<std::string>& clips) {
    auto found = find_whole_clips(timeline, clips);
    if (!found) return found.error();
    const auto& places = found.value();
    if (places.empty() || places.size() > 2) return neither_one_clip_nor_two();
    const clip_pointer a = places.front().clip;
    const clip_pointer b =
        places.size() == 2 ? places.back().clip : split_partner(*timeline.row(places.front().row), *a);
    if (!b) return no_clip_overlaps();
    const auto split = split_overlapping(span_of(*a), span_of(*b));
    if (!split.changed) return clips_do_not_overlap();
    if (split.a.end <= split.a.start || split.b.end <= split.b.start) {
        return clip_too_short_to_split();
    }
    timeline_edit edit{edit_name::split_overlap, a->id(), {}};
    for (const auto& [clip, span] : {std::pair(a, split.a), std::pair(b, split.b)}) {
        edit.operations.emplace_back(plan_new_times(*clip, span));
    }
    return edit;
}

result<timeline_edit> plan_note(const sxy_DATA_root& timeline, const std::string& clip,
                                const std::string& text) {
    const auto place = timeline.find_clip(clip);
    if (!place) return clip_of_note_is_gone();
    timeline_edit edit{edit_name::note, clip, {}};
    const auto note = place->clip->note();
    if ((note ? note->text() : std::string()) == text) return edit;
    operation::change_clip change{clip, {}, {}};
    if (text.empty()) {
        change.unset.emplace_back("notes_dict");
    } else {
        clip_note changed = note ? note->with_text(text) : clip_note().with_text(text);
        if (changed.clip_notes_uuid.empty() && !changed.kept.contains("clip_notes_uuid")) {
            changed.clip_notes_uuid = new_uuid();
        }
        change.set.set("notes_dict", write_clip_note(changed));
    }
    edit.operations.emplace_back(std::move(change));
    return edit;
}

result<timeline_edit> plan_delete_row(const sxy_DATA_root& timeline, const shared_text& row,
                                      const edit_stamp& stamp) {
    const auto index = timeline.row_index(row);
    if (!index) return row_is_gone();
    for (const auto& live : timeline.live_clips()) {
        if (live.row == row) return row_has_a_growing_clip();
    }
    const auto& rows = timeline.rows();
    auto tombstones = rows[*index]->deleted_clips();
    timeline_edit edit{edit_name::delete_row, row.str(), {}};
    for (const auto& clip : rows[*index]->clips()) {
        edit.operations.emplace_back(operation::remove_clip{clip->id()});
        tombstones.push_back({clip->id(), stamp.author, stamp.edit_seconds});
    }
    if (rows.size() > 1 && !tombstones.empty()) {
        sxy_ROW heir = *rows[*index > 0 ? *index - 1 : 1];
        auto all = heir.deleted_clips();
        all.insert(all.end(), tombstones.begin(), tombstones.end());
        edit.operations.emplace_back(plan_tombstones(heir, std::move(all)));
    }
    edit.operations.emplace_back(operation::remove_row{row});
    return edit;
}

}  // namespace vistels
