// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "demo/canvas.h"
#include "demo/simulation.h"
#include "demo/view_camera.h"

namespace vistels::demo {

// The players and the ball with their shadows, the farthest first.
void draw_figures(canvas& picture, const view_camera& camera, const game_state& game);

}  // namespace vistels::demo
