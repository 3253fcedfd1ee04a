// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/code_plan.h"

#include <string>
#include <vector>

namespace vistels::demo {

const std::array<coded_kind, play_kind_count>& coded_kinds() {
    static constexpr std::array<coded_kind, play_kind_count> kinds{{
        {play_kind::attack, "Phase", 0, "a", 0.4, 0.6},
        {play_kind::press, "Phase", 6, "s", 0.5, 0.5},
        {play_kind::counter, "Phase", 7, "d", 0.4, 0.6},
        {play_kind::pass_chain, "Phase", 8, "p", 0.3, 0.3},
        {play_kind::cross, "Finish", 11, "x", 0.8, 1},
        {play_kind::shot, "Finish", 1, "h", 2, 1.5},
        {play_kind::goal, "Finish", 5, "g", 3, 3},
        {play_kind::save, "Finish", 9, "v", 1.5, 1},
        {play_kind::corner, "Restart", 2, "z", 1, 1.5},
        {play_kind::foul, "Restart", 3, "f", 1.5, 1.5},
        {play_kind::throw_in, "Restart", 10, "t", 0.5, 1},
    }};
    return kinds;
}

button_dict demo_code_window() {
    using enum button_type;
    struct named_key {
        const char* name;
        const char* key;
    };
    constexpr std::array<named_key, 4> outcomes{
        {{"On target", "1"}, {"Off target", "2"}, {"Blocked", "3"}, {"Won", "4"}}};
    constexpr std::array<named_key, 4> zones{{{"Left", "q"}, {"Centre", "w"}, {"Right", "e"}, {"Box", "r"}}};
    constexpr std::array<const char*, players_a_side> player_keys{"5", "b", "n", "m", "y", "c", "u", "6"};
    constexpr std::size_t mint = 4;
    constexpr std::size_t slate = 10;

    std::vector<std::string> names;  // outlive the list that points to them
    for (const coded_kind& kind : coded_kinds()) names.emplace_back(play_name(kind.kind));
    for (const squad_player& player : squads[0].players) names.emplace_back(player.name);
    std::vector<new_button> all;
    auto name = names.begin();
    for (const coded_kind& kind : coded_kinds())
        all.push_back({clip, (name++)->c_str(), kind.category, kind.palette_index, kind.key, kind.secs_in,
                       kind.secs_out});
    all.push_back({clip, "Highlight", "Session", mint, "0", 6, 3});
    for (const auto& one : outcomes)
        all.push_back({qualifier, one.name, outcome_category, outcome_palette_index, one.key});
    for (const auto& one : zones)
        all.push_back({qualifier, one.name, zone_category, zone_palette_index, one.key});
    for (const char* key : player_keys)
        all.push_back({qualifier, (name++)->c_str(), player_category, player_palette_index, key});
    all.push_back({clip, "Half 1", "Half", mint, "7"});
    all.push_back({clip, "Half 2", "Half", mint, "8"});
    all.push_back({clip, "Replay", "Session", slate, "9", 8, 2});

    button_dict window;
    window.buttons = laid_out_buttons(all);
    for (button_record& button : window.buttons) {
        if (button->category() != "Half") continue;
        button = changed_button(button, [](auto& half) { half.set_block_qualifiers(true); });
    }
    return window;
}

}  // namespace vistels::demo
