// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

#include "demo/canvas.h"
#include "demo/view_camera.h"

namespace vistels::demo {

// Everything that does not move: sky, stands with their crowd, pitch, boards, goals. `seed` seats the crowd.
void draw_ground(canvas& picture, const view_camera& camera, std::uint64_t seed);

// One goal with its net, for `side` -1 the left one, for 1 the right one.
void draw_goal(canvas& picture, const view_camera& camera, int side);

}  // namespace vistels::demo
