// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/clip_edits.h"

#include <algorithm>

#include "timeline/edits/edit_names.h"

namespace vistels {

namespace {

constexpr int clip_colour_decimals = 4;

// The values under `key` (none: taken away) of those clips that have another one now.
template <class Differs>
timeline_edit plan_value(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                         const char* name, const char* key, const std::optional<property_value>& value,
                         Differs differs) {
    timeline_edit edit{name, clips.size() == 1 ? clips.front() : std::string(), {}};
    for (const auto& uuid : clips) {
        const auto place = timeline.find_clip(uuid);
        if (!place || !differs(*place->clip)) continue;
        operation::change_clip change{uuid, {}, {}};
        if (value) {
            change.set.set(key, *value);
        } else {
            change.unset.emplace_back(key);
        }
        edit.operations.emplace_back(std::move(change));
    }
    return edit;
}

}  // namespace

timeline_edit plan_clip_times(const sxy_DATA_root& timeline, const std::string& clip, double start,
                              double end) {
    timeline_edit edit{edit_name::clip_times, clip, {}};
    const auto place = timeline.find_clip(clip);
    if (start > end) std::swap(start, end);
    if (!place || (place->clip->secs_start() == start && place->clip->secs_end() == end)) return edit;
    operation::change_clip change{clip, {}, {}};
    change.set.set("time_start", start);
    change.set.set("time_end", end);
    edit.operations.emplace_back(std::move(change));
    return edit;
}

timeline_edit plan_clip_stars(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                              int stars) {
    return plan_value(timeline, clips, edit_name::stars, "stars", property_value(stars),
                      [stars](const sxy_CLIP& clip) { return clip.stars() != stars; });
}

timeline_edit plan_clip_colour(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                               const std::optional<colour>& chosen) {
    std::optional<property_value> value;
    if (chosen) value = property_value(colour_text(*chosen, clip_colour_decimals));
    return plan_value(timeline, clips, edit_name::clip_colour, "color", value,
                      [&chosen](const sxy_CLIP& clip) { return clip.col() != chosen; });
}

timeline_edit plan_remove_qualifier(const sxy_DATA_root& timeline, const std::string& clip,
                                    const std::string& qualifier) {
    timeline_edit edit{edit_name::remove_qualifier, clip, {}};
    const auto place = timeline.find_clip(clip);
    if (!place) return edit;
    const auto all = place->clip->qualifiers();
    const bool there =
        std::any_of(all->begin(), all->end(), [&](const qual_ITEM& one) { return one.uuid() == qualifier; });
    if (there) edit.operations.emplace_back(operation::remove_qualifier{clip, qualifier});
    return edit;
}

std::string clip_title(const sxy_DATA_root& timeline, const clip_place& place) {
    const auto row = timeline.row(place.row);
    if (!row) return {};
    if (place.is_live) return row->name();
    return row->name() + " " + std::to_string(row->clips().position(*place.clip) + 1);
}

}  // namespace vistels
