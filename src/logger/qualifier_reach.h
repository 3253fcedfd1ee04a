// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "logger/press_settings.h"
#include "timeline/records/sxy_DATA_root.h"

namespace vistels {

// What a press at a time goes by to find the clips that a qualifier is stamped on.
struct reach_view {
    const sxy_DATA_root& timeline;
    press_settings settings;
    // Clips, beside those that grow, that a press of this run made and whose "secs out" still runs.
    std::vector<std::string> running;
    // Those that presses of this run made, the last at the end.
    const std::vector<std::string>& made;
    std::function<bool(const clip_place&)> is_blocked;  // takes no qualifiers
};

// The clips that a qualifier pressed at `at` is stamped on, none or more, and the time that it gets: `at`,
// but for a qualifier that is brought inside a clip. In this order, until some are found:
// - those that grow, with `running`;
// - of each row the one that started last among those that hold the time (of several the one that ends
//   last);
// - with the setting, the one nearest to the time, when that is near enough;
// - the one that was made last and is still there, when it ended at most `longest_way_back_seconds` before.
// Clips that are blocked are passed over. Seconds on the collection's clock.
struct stamped_clips {
    std::vector<std::string> clips;
    double time = 0;
};
stamped_clips find_stamped_clips(const reach_view& view, double at);
inline constexpr double longest_way_back_seconds = 60;

}  // namespace vistels
