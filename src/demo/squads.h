// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <string_view>

namespace vistels::demo {

inline constexpr int players_a_side = 8;
inline constexpr int player_count = 2 * players_a_side;

// Where a player of either team plays; also the player's place in the squad.
enum position { keeper, left_back, right_back, left_half, right_half, left_wing, right_wing, striker };

struct squad_player {
    int number;
    std::string_view name;
};

struct squad {
    std::string_view name;
    std::string_view short_name;  // three letters, for the score
    std::array<squad_player, players_a_side> players;
};

// Team 0 plays towards positive x, team 1 towards negative x.
inline constexpr std::array<squad, 2> squads{{
    {"Harbour",
     "HAR",
     {{{1, "Ilves"},
       {3, "Brandt"},
       {4, "Duarte"},
       {8, "Ferri"},
       {10, "Marek"},
       {11, "Sato"},
       {7, "Okafor"},
       {9, "Lindqvist"}}}},
    {"Northgate",
     "NOR",
     {{{1, "Novak"},
       {5, "Greaves"},
       {2, "Tanaka"},
       {6, "Moreau"},
       {8, "Castell"},
       {11, "Bauer"},
       {7, "Adeyemi"},
       {9, "Rossi"}}}},
}};

// Players are numbered through both teams, 0 to player_count - 1.
inline constexpr int team_of(int player) {
    return player / players_a_side;
}
inline constexpr int player_at(int team, int place) {
    return team * players_a_side + place;
}
inline constexpr int place_of(int player) {
    return player % players_a_side;
}
inline constexpr int keeper_of(int team) {
    return player_at(team, keeper);
}
inline constexpr const squad_player& member(int player) {
    return squads[static_cast<std::size_t>(team_of(player))]
        .players[static_cast<std::size_t>(place_of(player))];
}
// The direction along x in which a team plays.
inline constexpr double direction_of(int team) {
    return team == 0 ? 1 : -1;
}

}  // namespace vistels::demo
