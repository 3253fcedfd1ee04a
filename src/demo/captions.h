// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "demo/canvas.h"
#include "demo/simulation.h"

namespace vistels::demo {

// The event's time as burnt into every picture: h:mm:ss.ff, ff being frames; a minus before the event's
// start.
std::string burnt_in_time(double seconds);

// The burnt-in time in the upper right corner.
void draw_burnt_in_time(canvas& picture, double seconds);

// Teams, score and game clock in the upper left corner.
void draw_score(canvas& picture, const game_state& game);

}  // namespace vistels::demo
