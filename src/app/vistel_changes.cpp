// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vistel_changes.h"

#include <algorithm>
#include <cmath>

namespace vistels {

namespace {

failure no_vistel(const std::string& name) {
    return {"The collection has no vistel \"" + name + "\"."};
}

// A change of one vistel that is there.
collection_change vistel_change_of(std::string name, const std::string& vistel,
                                   std::function<void(single_Vistel_CTR&)> change) {
    return {std::move(name), vistel, [vistel, change](video_collection_ROOT& copy) -> result<void> {
                const auto found = copy.find_vistel(vistel);
                if (!found) return no_vistel(vistel);
                change(*found);
                return {};
            }};
}

bool is_frame(const rectangle& frame) {
    return std::isfinite(frame.x) && std::isfinite(frame.y) && std::isfinite(frame.width) &&
           std::isfinite(frame.height) && frame.width > 0 && frame.height > 0;
}

result<void> set_frames(video_collection_ROOT& copy,
                        const std::vector<std::pair<std::string, rectangle>>& frames) {
    for (const auto& [vistel, frame] : frames) {
        const auto found = copy.find_vistel(vistel);
        if (!found) return no_vistel(vistel);
        if (!is_frame(frame)) return failure{"The frame of \"" + found->name() + "\" has no area."};
        found->set_proportion_rect(frame);
    }
    return {};
}

}  // namespace

collection_change plan_frame(const std::string& vistel, const rectangle& frame) {
    return {"Move Vistel", vistel, [vistel, frame](video_collection_ROOT& copy) {
                return set_frames(copy, {{vistel, frame}});
            }};
}

collection_change plan_frames(std::vector<std::pair<std::string, rectangle>> frames) {
    return {"Vistel Layout", "",
            [frames = std::move(frames)](video_collection_ROOT& copy) { return set_frames(copy, frames); }};
}

collection_change plan_to_front(const std::string& vistel) {
    return {"Vistel To Front", vistel, [vistel](video_collection_ROOT& copy) -> result<void> {
                const auto found = copy.find_vistel(vistel);
                if (!found) return no_vistel(vistel);
                auto all = copy.vistels();
                // Counted anew, so that the numbers do not grow for ever.
                std::stable_sort(all.begin(), all.end(), [&](const auto& a, const auto& b) {
                    if ((a == found) != (b == found)) return b == found;
                    return a->saved_view_order() < b->saved_view_order();
                });
                if (found->saved_view_order() > 0 && all.back() == found &&
                    (all.size() < 2 || all[all.size() - 2]->saved_view_order() < found->saved_view_order()))
                    return {};
                int order = 0;
                for (const auto& one : all) one->set_saved_view_order(++order);
                return {};
            }};
}

collection_change plan_enlarged(const std::string& vistel) {
    return {"Enlarge Vistel", "", [vistel](video_collection_ROOT& copy) -> result<void> {
                const auto found = copy.find_vistel(vistel);
                if (!found && !vistel.empty()) return no_vistel(vistel);
                for (const auto& one : copy.vistels()) one->set_flicked_in(one == found);
                return {};
            }};
}

collection_change plan_removal(const std::string& vistel) {
    return {"Remove Vistel", "", [vistel](video_collection_ROOT& copy) -> result<void> {
                const auto found = copy.find_vistel(vistel);
                if (!found) return no_vistel(vistel);
                copy.remove_vistel(*found);
                if (copy.vistel_for_sound() == found->uuid()) copy.set_vistel_for_sound("");
                return {};
            }};
}

collection_change plan_place(const std::string& vistel, std::size_t index) {
    return {"Move Collection Vistel", "", [vistel, index](video_collection_ROOT& copy) -> result<void> {
                const auto found = copy.find_vistel(vistel);
                if (!found) return no_vistel(vistel);
                copy.move_vistel(*found, index);
                return {};
            }};
}

collection_change plan_name(const std::string& vistel, const std::string& name) {
    return vistel_change_of("Vistel Name", vistel, [name](single_Vistel_CTR& one) { one.set_name(name); });
}

collection_change plan_sound_vistel(const std::string& vistel) {
    return {"Vistel For Sound", "", [vistel](video_collection_ROOT& copy) -> result<void> {
                if (!vistel.empty() && !copy.find_vistel(vistel)) return no_vistel(vistel);
                copy.set_vistel_for_sound(vistel);
                return {};
            }};
}

collection_change plan_numbers_shown(bool shown) {
    return {"Vistel Numbers", "", [shown](video_collection_ROOT& copy) -> result<void> {
                copy.set_displays_vistel_number(shown);
                return {};
            }};
}

}  // namespace vistels
