// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/vistel_changes.h"

#include "app/event/change_names.h"
#include "app/event/event_failures.h"
#include "video/video_coll_Offsets.h"

namespace vistels {

namespace {

// A change of one vistel that is there.
collection_change vistel_change_of(std::string name, const std::string& vistel,
                                   std::function<void(single_Vistel_CTR&)> change) {
    return {std::move(name), vistel, [vistel, change](video_collection_ROOT& copy) -> result<void> {
                const auto found = copy.find_vistel(vistel);
                if (!found) return vistel_is_gone(vistel);
                change(*found);
                return {};
            }};
}

}  // namespace

collection_change plan_new_vistels(const vistel_list& brought, timeline_document* timeline) {
    std::set<double> in_use;
    if (timeline) in_use = vistel_numbers_in(timeline->snapshot());
    return {brought.size() == 1 ? change_name::add_vistel : change_name::add_vistels, "",
            [brought, in_use](video_collection_ROOT& copy) -> result<void> {
                vistel_list copies;
                for (const auto& one : brought) copies.push_back(std::make_shared<single_Vistel_CTR>(*one));
                copy.set_vistel_numbers_in_use(in_use);
                add_new_vistels(copy, copies);
                copy.set_vistel_numbers_in_use({});
                return {};
            }};
}

collection_change plan_overlay(const std::string& vistel, std::optional<vistel_overlay> overlay) {
    return vistel_change_of(overlay ? change_name::add_overlay : change_name::remove_overlay, vistel,
                            [overlay](single_Vistel_CTR& one) { one.set_overlay(overlay); });
}

collection_change plan_removal(const std::string& vistel) {
    return {change_name::remove_vistel, "", [vistel](video_collection_ROOT& copy) -> result<void> {
                const auto found = copy.find_vistel(vistel);
                if (!found) return vistel_is_gone(vistel);
                copy.remove_vistel(*found);
                if (copy.vistel_for_sound() == found->uuid()) copy.set_vistel_for_sound("");
                return {};
            }};
}

collection_change plan_place(const std::string& vistel, std::size_t index) {
    return {change_name::move_in_order, "", [vistel, index](video_collection_ROOT& copy) -> result<void> {
                const auto found = copy.find_vistel(vistel);
                if (!found) return vistel_is_gone(vistel);
                copy.move_vistel(*found, index);
                return {};
            }};
}

collection_change plan_name(const std::string& vistel, const std::string& name) {
    return vistel_change_of(change_name::vistel_name, vistel,
                            [name](single_Vistel_CTR& one) { one.set_name(name); });
}

collection_change plan_sound_vistel(const std::string& vistel) {
    return {change_name::vistel_for_sound, "", [vistel](video_collection_ROOT& copy) -> result<void> {
                if (!vistel.empty() && !copy.find_vistel(vistel)) return vistel_is_gone(vistel);
                copy.set_vistel_for_sound(vistel);
                return {};
            }};
}

}  // namespace vistels
