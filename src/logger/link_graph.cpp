// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/link_graph.h"

#include <algorithm>
#include <map>
#include <string>
#include <unordered_map>
#include <utility>

namespace vistels {

link_graph::link_graph(const std::vector<button_record>& buttons)
    : links_(buttons.size()), conditions_of_(buttons.size()), down_(buttons.size()) {
    std::unordered_map<std::string, std::size_t> places;
    for (std::size_t place = 0; place < buttons.size(); ++place)
        places.emplace(buttons[place]->uuid(), place);
    std::map<std::pair<const link_kind*, std::size_t>, std::size_t> known;  // conditions
    for (std::size_t place = 0; place < buttons.size(); ++place) {
        for (const auto& stored : buttons[place]->action_links()) {
            const auto* kind = link_kind_of(stored.action_TYPE);
            const auto target = places.find(stored.linked_button_UUID);
            if (!kind || target == places.end()) continue;
            link one{kind, target->second, stored.action_Colour_to_set, 0};
            has_links_ = true;
            if (kind->has_condition()) {
                one.condition = known.try_emplace({kind, one.target}, conditions_.size()).first->second;
                if (one.condition == conditions_.size()) conditions_.emplace_back();
                auto& of_button = conditions_of_[place];
                if (std::find(of_button.begin(), of_button.end(), one.condition) == of_button.end()) {
                    of_button.push_back(one.condition);
                    ++conditions_[one.condition].sources;
                }
            }
            links_[place].push_back(std::move(one));
        }
    }
}

void link_graph::note_state(std::size_t button, bool is_down) {
    if (down_[button] == is_down) return;
    down_[button] = is_down;
    for (const std::size_t one : conditions_of_[button])
        conditions_[one].down += is_down ? 1 : std::size_t(-1);
}

bool link_graph::holds(const link& one) const {
    if (!one.kind->has_condition()) return true;
    const condition& all = conditions_[one.condition];
    switch (one.kind->moment) {
        case link_moment::all_down:
            return all.down == all.sources;
        case link_moment::all_up:
            return all.down == 0;
        default:
            return all.down < all.sources;
    }
}

}  // namespace vistels
