// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <array>
#include <iterator>
#include <memory>
#include <set>
#include <string_view>

#include "timeline/edits/clip_operations.h"
#include "timeline/edits/edit_failures.h"
#include "timeline/edits/edit_names.h"
#include "util/uuid.h"

namespace vistels {

namespace {

// A clip that is to be merged, with its stored values.
struct merged_clip {
    clip_pointer clip;
    bool ends_now = false;  // the growing one
    property_dictionary values;
};

// In order: the first is the one that stays. Of clips that start together one that is there stays before one
// that only ends now.
bool comes_before(const merged_clip& a, const merged_clip& b) {
    if (a.clip->secs_start() != b.clip->secs_start()) return a.clip->secs_start() < b.clip->secs_start();
    if (a.ends_now != b.ends_now) return b.ends_now;
    return clip_before(*a.clip, *b.clip);
}

// Values that say something only together come from one clip: the first that has any of them.
constexpr std::array<std::array<std::string_view, 3>, 9> value_groups{{
    {"row_category", "row_uuid_in_clip", ""},
    {"clip_style", "", ""},
    {"color", "", ""},
    {"timer_clip_alt_offset_minutes", "timer_clip_cumulative", "timer_clip_count_down"},
    {"alt_count_down", "alt_seconds", "alt_color"},
    {"type", "type_id", ""},
    {"clip_group", "", ""},
    {"coll_id", "", ""},
    {"vistels_data", "", ""},
}};

template <class Group>
bool has_any(const property_dictionary& values, const Group& group) {
    return std::any_of(group.begin(), group.end(),
                       [&](std::string_view key) { return values.contains(key); });
}

void take_missing_values(const std::vector<merged_clip>& all, property_dictionary& set) {
    for (const auto& group : value_groups) {
        const auto from =
            std::find_if(all.begin(), all.end(), [&](const auto& one) { return has_any(one.values, group); });
        if (from == all.begin() || from == all.end()) continue;
        for (const auto key : group) {
            if (const auto* value = from->values.find(key)) set.set(std::string(key), *value);
        }
    }
}

void take_most_stars(const std::vector<merged_clip>& all, property_dictionary& set) {
    int stars = 0;
    for (const auto& one : all) stars = std::max(stars, one.clip->stars());
    if (stars != all.front().clip->stars()) set.set("stars", stars);
}

// The items of all, of equal times in the clips' order.
property_array joined_items(const std::vector<const property_array*>& lists, const char* time_key) {
    property_array joined;
    for (const auto* list : lists) joined.insert(joined.end(), list->begin(), list->end());
    const auto time_of = [time_key](const property_value& item) {
        const auto* values = item.dictionary();
        return values ? values->number(time_key).value_or(0) : 0;
    };
    std::stable_sort(joined.begin(), joined.end(),
                     [&](const auto& a, const auto& b) { return time_of(a) < time_of(b); });
    return joined;
}

void join_lists(const std::vector<merged_clip>& all, property_dictionary& set) {
    std::vector<const property_array*> triggers, pauses, inserted;
    for (const auto& one : all) {
        if (const auto* list = one.values.array("triggers")) triggers.push_back(list);
        if (const auto* list = one.values.array("pause_items")) pauses.push_back(list);
        const auto* objects = one.values.dictionary("inserted_Objects");
        if (const auto* list = objects ? objects->array("items") : nullptr) inserted.push_back(list);
    }
    if (!triggers.empty()) set.set("triggers", joined_items(triggers, "trigger_time"));
    if (!pauses.empty()) set.set("pause_items", joined_items(pauses, "seconds"));
    if (inserted.empty()) return;
    property_dictionary objects;
    objects.add("items", joined_items(inserted, "start_secs"));
    set.set("inserted_Objects", std::move(objects));
}

void join_notes(const std::vector<merged_clip>& all, property_dictionary& set) {
    std::shared_ptr<const clip_note> joined;
    for (const auto& one : all) {
        const auto note = one.clip->note();
        if (!note) continue;
        if (!joined || joined->text().empty()) {
            joined = note;
        } else if (!note->text().empty()) {
            joined =
                std::make_shared<const clip_note>(joined->with_text(joined->text() + "\n" + note->text()));
        }
    }
    if (joined) set.set("notes_dict", write_clip_note(*joined));
}

// The first drawings, over the whole of the merged clip.
void take_drawings(const std::vector<merged_clip>& all, clip_span span, property_dictionary& set) {
    for (const auto& one : all) {
        const auto* drawings = one.values.dictionary("telestration");
        if (!drawings) continue;
        set.set("telestration", drawings_trimmed(*drawings, span));
        return;
    }
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
std::vector<merged_qualifier> all_qualifiers(const std::vector<merged_clip>& clips) {
    std::set<std::string> uuids;
    std::vector<merged_qualifier> all;
    for (const auto& clip : clips) {
        const bool is_own = &clip == &clips.front();
        for (const auto& one : *clip.clip->qualifiers()) {
            const bool is_new = uuids.insert(one.uuid()).second && !one.uuid().empty();
            all.push_back({one, is_own});
            if (!is_new && !is_own) all.back().item.set_uuid(new_uuid());
        }
    }
    return all;
}

// What makes the qualifiers of the first clip those of all, in stamping order.
void join_qualifiers(const std::vector<merged_clip>& clips, std::vector<operation::any>& operations) {
    const std::string clip = clips.front().clip->id();
    auto all = all_qualifiers(clips);
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

merged_clip with_values(clip_pointer clip, bool ends_now) {
    auto values = write_clip_values(*clip);
    return {std::move(clip), ends_now, std::move(values)};
}

// The clip with the times that it gets.
sxy_CLIP ended(const ended_clip& ending) {
    sxy_CLIP clip = *ending.place.clip;
    clip.set_secs_start(ending.span.start);
    clip.set_secs_end(ending.span.end);
    return clip;
}

}  // namespace

operation::any plan_end(const sxy_DATA_root& timeline, const ended_clip& ending) {
    const auto there = timeline.find_clip(ending.place.clip->id());
    if (there && there->is_live)
        return operation::finish_clip{ending.place.clip->id(), ending.span.start, ending.span.end};
    return operation::insert_clip{ending.place.row, ended(ending)};
}

result<timeline_edit> plan_clips_Merge(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                                       const edit_stamp& stamp, const std::optional<ended_clip>& ending) {
    const auto found = find_whole_clips(timeline, clips);
    if (!found) return found.error();
    std::vector<merged_clip> all;
    for (const auto& place : found.value()) all.push_back(with_values(place.clip, false));
    if (ending) all.push_back(with_values(std::make_shared<const sxy_CLIP>(ended(*ending)), true));
    if (all.size() < 2) return too_few_clips_to_merge();
    std::sort(all.begin(), all.end(), comes_before);
    const sxy_CLIP& kept = *all.front().clip;
    clip_span span{kept.secs_start(), kept.secs_end()};
    std::vector<std::string> merged;
    for (const auto& one : all) {
        span.end = std::max(span.end, one.clip->secs_end());
        if (&one != &all.front() && !one.ends_now) merged.push_back(one.clip->id());
    }
    timeline_edit edit{edit_name::merge_clips, kept.id(), {}};
    if (ending) edit.operations.emplace_back(plan_end(timeline, *ending));
    operation::change_clip change{kept.id(), {}, {}};
    change.set.set("time_end", span.end);
    take_missing_values(all, change.set);
    take_most_stars(all, change.set);
    join_lists(all, change.set);
    join_notes(all, change.set);
    take_drawings(all, span, change.set);
    edit.operations.emplace_back(std::move(change));
    join_qualifiers(all, edit.operations);
    // It ended first, so that taking the merge back does not leave it growing.
    if (ending && !all.front().ends_now)
        edit.operations.emplace_back(operation::remove_clip{ending->place.clip->id()});
    auto deletion = plan_delete_clips(timeline, merged, stamp.author, stamp.edit_seconds);
    std::move(deletion.operations.begin(), deletion.operations.end(), std::back_inserter(edit.operations));
    return edit;
}

}  // namespace vistels
