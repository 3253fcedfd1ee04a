// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string_view>

#include "demo/simulation.h"
#include "demo/view_camera.h"

namespace vistels::demo {

inline constexpr int film_width = 1280;
inline constexpr int film_height = 720;
inline constexpr int film_frame_rate = 30;

// Where one of the demo's cameras stands and what it looks at.
struct film_camera {
    std::string_view name;
    point3 eye;
    point3 looks_at;      // of a camera that follows the ball: only its height counts
    double focal = 1000;  // pixels
    bool follows = false;
    int near_goal = 0;  // -1 or 1: that goal stands between the camera and the players
    bool shows_score = false;

    // What it sees at a moment of the game (seconds).
    view_camera view_at(const game_record& game, double seconds) const;
};

// The camera number `index`, from 0: wide, left end, right end, following, then further angles, again and
// again.
film_camera film_camera_at(int index);

// When it starts, as a vistel's start offset in seconds; a whole number of frames. The largest is that of
// camera 3, or camera 1 when there are fewer than four.
double film_offset_at(int index);

}  // namespace vistels::demo
