// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/clip_operations.h"

#include <algorithm>
#include <cmath>
#include <set>

#include "timeline/sxy_Adjust_Clip_Overlaps.h"
#include "timeline/tombstones.h"
#include "util/uuid.h"

namespace vistels {

namespace {

// The clips in a row's order, each once. A clip that is not there, or still grows, is a failure.
result<std::vector<clip_place>> find_clips(const sxy_DATA_root& timeline,
                                           const std::vector<std::string>& clips) {
    std::vector<clip_place> places;
    std::set<std::string> seen;
    for (const auto& uuid : clips) {
        if (!seen.insert(uuid).second) continue;
        auto place = timeline.find_clip(uuid);
        if (!place) return failure{"A clip that was to be changed is no longer there."};
        if (place->is_live) return failure{"A clip that is still being marked cannot be changed yet."};
        places.push_back(std::move(*place));
    }
    std::sort(places.begin(), places.end(),
              [](const auto& a, const auto& b) { return clip_before(*a.clip, *b.clip); });
    return places;
}

// Times that the drawings over a clip know of.
void set_times(operation::change_clip& change, const sxy_CLIP& clip, double start, double end) {
    change.set.set("time_start", start);
    change.set.set("time_end", end);
    const auto stored = write_clip_values(clip);
    const auto* drawings = stored.dictionary("telestration");
    if (!drawings) return;
    property_dictionary trimmed = *drawings;
    trimmed.set("telestration_secs_start_trimmed", start);
    trimmed.set("telestration_secs_end_trimmed", end);
    change.set.set("telestration", std::move(trimmed));
}

std::shared_ptr<const clip_note> joined_note(const std::vector<clip_place>& places) {
    std::shared_ptr<const clip_note> joined;
    for (const auto& place : places) {
        const auto note = place.clip->note();
        if (!note) continue;
        if (!joined || joined->text().empty()) {
            joined = note;
        } else if (!note->text().empty()) {
            joined =
                std::make_shared<const clip_note>(joined->with_text(joined->text() + "\n" + note->text()));
        }
    }
    return joined;
}

struct merged_qualifier {
    qual_ITEM item;
    bool is_own;  // of the clip that stays
};

bool stamped_before(const merged_qualifier& a, const merged_qualifier& b) {
    return a.item.time() < b.item.time();
}

// The qualifiers of all, clip by clip. The copies of a clip made elsewhere may have the same ones: none comes
// twice with one UUID.
std::vector<merged_qualifier> all_qualifiers(const std::vector<clip_place>& places) {
    std::set<std::string> uuids;
    std::vector<merged_qualifier> all;
    for (const auto& place : places) {
        const bool is_own = &place == &places.front();
        for (const auto& one : *place.clip->qualifiers()) {
            const bool is_new = uuids.insert(one.uuid()).second && !one.uuid().empty();
            all.push_back({one, is_own});
            if (!is_new && !is_own) all.back().item.set_uuid(new_uuid());
        }
    }
    return all;
}

// What makes the qualifiers of the first clip those of all, in stamping order.
void merge_qualifiers(const std::vector<clip_place>& places, std::vector<operation::any>& operations) {
    const std::string clip = places.front().clip->id();
    auto all = all_qualifiers(places);
    const auto foreign = std::find_if(all.begin(), all.end(), [](const auto& one) { return !one.is_own; });
    if (foreign == all.end()) return;
    const bool own_stay = std::is_sorted(all.begin(), foreign, stamped_before);
    for (auto one = all.begin(); one != foreign && !own_stay; ++one) {
        operations.emplace_back(operation::remove_qualifier{clip, one->item.uuid()});
        if (one->item.uuid().empty()) one->item.set_uuid(new_uuid());
    }
    std::stable_sort(all.begin(), all.end(), stamped_before);
    for (std::size_t index = 0; index < all.size(); ++index) {
        if (own_stay && all[index].is_own) continue;
        operations.emplace_back(operation::insert_qualifier{clip, index, all[index].item});
    }
}

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

result<timeline_edit> plan_clips_Merge(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                                       const edit_stamp& stamp) {
    auto found = find_clips(timeline, clips);
    if (!found) return found.error();
    const auto& places = found.value();
    if (places.size() < 2) return failure{"Select two clips or more to merge them."};
    const sxy_CLIP& kept = *places.front().clip;
    double end = kept.secs_end();
    std::vector<std::string> merged;
    for (std::size_t at = 1; at < places.size(); ++at) {
        end = std::max(end, places[at].clip->secs_end());
        merged.push_back(places[at].clip->id());
    }
    timeline_edit edit{"Merge Clips", kept.id(), {}};
    operation::change_clip change{kept.id(), {}, {}};
    set_times(change, kept, kept.secs_start(), end);
    if (const auto note = joined_note(places)) change.set.set("notes_dict", write_clip_note(*note));
    edit.operations.emplace_back(std::move(change));
    merge_qualifiers(places, edit.operations);
    auto deletion = plan_delete_clips(timeline, merged, stamp.author, stamp.edit_seconds);
    std::move(deletion.operations.begin(), deletion.operations.end(), std::back_inserter(edit.operations));
    return edit;
}

result<timeline_edit> plan_clips_Trim_Mark_in_Mark_Out(const sxy_DATA_root& timeline,
                                                       const std::vector<std::string>& clips,
                                                       std::optional<double> mark_in,
                                                       std::optional<double> mark_out) {
    auto found = find_clips(timeline, clips);
    if (!found) return found.error();
    if ((mark_in && !std::isfinite(*mark_in)) || (mark_out && !std::isfinite(*mark_out))) {
        return failure{"A clip cannot be trimmed to a time that is none."};
    }
    timeline_edit edit{"Trim Clip", clips.size() == 1 ? clips.front() : std::string(), {}};
    if (clips.size() > 1) edit.name = "Trim Clips";
    for (const auto& place : found.value()) {
        const double start = mark_in.value_or(place.clip->secs_start());
        const double end = mark_out.value_or(place.clip->secs_end());
        if (start == place.clip->secs_start() && end == place.clip->secs_end()) continue;
        if (start >= end) {
            const bool moves_start = mark_in.has_value();
            return failure{moves_start ? "A clip cannot start where it has ended already."
                                       : "A clip cannot end before it has started."};
        }
        operation::change_clip change{place.clip->id(), {}, {}};
        set_times(change, *place.clip, start, end);
        edit.operations.emplace_back(std::move(change));
    }
    return edit;
}

result<timeline_edit> plan_split_overlap(const sxy_DATA_root& timeline,
                                         const std::vector<std::string>& clips) {
    auto found = find_clips(timeline, clips);
    if (!found) return found.error();
    const auto& places = found.value();
    if (places.empty() || places.size() > 2) return failure{"Select one clip, or two, to split an overlap."};
    const clip_pointer a = places.front().clip;
    const clip_pointer b =
        places.size() == 2 ? places.back().clip : split_partner(*timeline.row(places.front().row), *a);
    if (!b) return failure{"No other clip of the row overlaps this one."};
    const auto split = split_overlapping(span_of(*a), span_of(*b));
    if (!split.changed) return failure{"These clips do not overlap."};
    if (split.a.end <= split.a.start || split.b.end <= split.b.start) {
        return failure{"These clips cannot be split: one of them is too short."};
    }
    timeline_edit edit{"Split Overlap", a->id(), {}};
    for (const auto& [clip, span] : {std::pair(a, split.a), std::pair(b, split.b)}) {
        operation::change_clip change{clip->id(), {}, {}};
        set_times(change, *clip, span.start, span.end);
        edit.operations.emplace_back(std::move(change));
    }
    return edit;
}

result<timeline_edit> plan_note(const sxy_DATA_root& timeline, const std::string& clip,
                                const std::string& text) {
    const auto place = timeline.find_clip(clip);
    if (!place) return failure{"The clip that the note belongs to is no longer there."};
    timeline_edit edit{"Note", clip, {}};
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
    if (!index) return failure{"The row is no longer there."};
    for (const auto& live : timeline.live_clips()) {
        if (live.row == row) return failure{"A clip of the row is still being marked."};
    }
    const auto& rows = timeline.rows();
    auto tombstones = rows[*index]->deleted_clips();
    timeline_edit edit{"Delete Row", row.str(), {}};
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
