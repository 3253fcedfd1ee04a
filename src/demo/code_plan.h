// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>

#include "demo/simulation.h"
#include "logger/logger_Dict_funcs.h"

namespace vistels::demo {

// How plays of one kind are coded: their row and the button that makes its clips.
struct coded_kind {
    play_kind kind;
    const char* category;
    std::size_t palette_index;  // see button_palette_colour
    const char* key;
    double secs_in;  // seconds
    double secs_out;
};

// In the order of the timeline's rows.
const std::array<coded_kind, play_kind_count>& coded_kinds();

inline constexpr const char* player_category = "Player";
inline constexpr const char* zone_category = "Zone";
inline constexpr const char* outcome_category = "Outcome";
inline constexpr std::size_t player_palette_index = 7;
inline constexpr std::size_t zone_palette_index = 2;
inline constexpr std::size_t outcome_palette_index = 1;

// The code window with which the demo event is coded: a button for each row, each outcome and zone, and each
// player of the first team. None uses a key of the transport.
button_dict demo_code_window();

}  // namespace vistels::demo
