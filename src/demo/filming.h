// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "demo/simulation.h"
#include "util/job.h"
#include "util/result.h"

namespace vistels::demo {

// One movie file of a vistel.
struct film_part {
    std::string path;
    int first_frame = 0;  // on the vistel's time line
    int frames = 0;
};

// What one camera films.
struct film_order {
    int camera = 0;        // see film_camera_at
    double starts_at = 0;  // seconds of the game at the vistel's first frame
    std::vector<film_part> parts;
};

// Films a game with every camera, two at a time, and waits until all is done. Progress is told on other
// threads than the caller's, one call at a time. When `work` is cancelled or a movie fails, the unfinished
// files are removed and the finished ones left; the failure names the file.
result<void> film_game(const game_record& game, const std::vector<film_order>& orders, job& work);

}  // namespace vistels::demo
