// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// Sizes of what shows jobs in logical pixels.
struct job_metrics {
    int button_width = 236;  // in the menu bar, for title and bar
    int bar_width = 48;
    int bar_height = 4;
    int popover_width = 320;
};
inline constexpr job_metrics job_sizes;

}  // namespace vistels
