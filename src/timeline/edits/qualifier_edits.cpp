// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/qualifier_edits.h"

#include <algorithm>
#include <map>
#include <set>

#include "timeline/edits/clip_operations.h"
#include "timeline/edits/edit_failures.h"
#include "timeline/edits/edit_names.h"
#include "util/uuid.h"

namespace vistels {

qualifier_words words_in(const qual_ITEM& qualifier) {
    return {qualifier.name().str(),      qualifier.category().str(), qualifier.actor().str(),
            qualifier.recepient().str(), qualifier.alias().str(),    qualifier.value()};
}

result<timeline_edit> plan_change_qualifier(const sxy_DATA_root& timeline, const std::string& clip,
                                            const std::string& qualifier, const qualifier_words& words) {
    if (words.name.empty()) return qualifier_needs_a_name();
    const auto place = timeline.find_clip(clip);
    if (!place) return clip_to_change_is_gone();
    const auto all = place->clip->qualifiers();
    const auto found =
        std::find_if(all->begin(), all->end(), [&](const qual_ITEM& one) { return one.uuid() == qualifier; });
    if (found == all->end() || qualifier.empty()) return qualifier_is_gone();
    timeline_edit edit{edit_name::change_qualifier, qualifier, {}};
    if (words_in(*found) == words) return edit;
    qual_ITEM changed = *found;
    changed.set_name(shared_text(words.name));
    changed.set_category(shared_text(words.category));
    changed.set_actor(shared_text(words.actor));
    changed.set_recepient(shared_text(words.recepient));
    changed.set_alias(shared_text(words.alias));
    changed.set_value(words.value);
    edit.operations.emplace_back(operation::remove_qualifier{clip, qualifier});
    edit.operations.emplace_back(operation::insert_qualifier{
        clip, static_cast<std::size_t>(found - all->begin()), std::move(changed)});
    return edit;
}

result<timeline_edit> plan_add_qualifier(const sxy_DATA_root& timeline, const std::vector<std::string>& clips,
                                         const std::string& name, const std::string& category,
                                         double seconds) {
    if (name.empty()) return qualifier_needs_a_name();
    auto found = find_whole_clips(timeline, clips);
    if (!found) return found.error();
    timeline_edit edit{edit_name::add_qualifier, clips.size() == 1 ? clips.front() : std::string(), {}};
    for (const auto& place : found.value()) {
        const auto all = place.clip->qualifiers();
        const bool has_it = std::any_of(all->begin(), all->end(), [&](const qual_ITEM& one) {
            return one.name().str() == name && one.category().str() == category;
        });
        if (has_it) continue;
        qual_ITEM made;
        made.set_uuid(new_uuid());
        made.set_name(shared_text(name));
        made.set_category(shared_text(category));
        made.set_time(std::clamp(seconds, place.clip->secs_start(), place.clip->secs_end()));
        edit.operations.emplace_back(
            operation::insert_qualifier{place.clip->id(), all->size(), std::move(made)});
    }
    return edit;
}

std::vector<std::pair<std::string, std::string>> known_qualifiers(const sxy_DATA_root& timeline) {
    // Equal texts are mostly one shared text: most are known by their addresses.
    std::set<std::pair<const void*, const void*>> seen;
    std::set<std::pair<std::string, std::string>> all;
    for (const auto& row : timeline.rows()) {
        for (const auto& clip : row->clips()) {
            const auto qualifiers = clip->qualifiers();
            for (const auto& one : *qualifiers) {
                const shared_text name = one.name();
                const shared_text category = one.category();
                if (!seen.emplace(name.identity(), category.identity()).second || name.empty()) continue;
                all.emplace(name.str(), category.str());
            }
        }
    }
    return {all.begin(), all.end()};
}

}  // namespace vistels
