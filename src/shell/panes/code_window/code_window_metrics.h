// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// Sizes of the code window in logical pixels.
struct code_window_metrics {
    int button_margin = 8;
    int button_least_width = 40;
    int button_least_height = 32;
    int button_text_indent = 8;
    int clip_band = 5;
    int qualifier_band = 4;
    int key_cap = 18;
    int key_cap_small = 14;  // on a low button
    int ping_radius = 12;
    int trace_radius = 3;
    int link_width = 2;
    int link_head = 11;
    int link_sign = 16;
    int link_run = 5;         // radius of what runs along it
    int list_width = 320;     // of the list of a row's clips
    int list_most_lines = 8;  // that are seen at once
};
inline constexpr code_window_metrics code_window_sizes;

}  // namespace vistels
