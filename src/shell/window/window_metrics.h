// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// Sizes of a window and of the parts that it hosts in logical pixels.
struct window_metrics {
    int menu_bar_height = 28;
    int super_tab_height = 36;
    int side_bar_width = 208;
    int side_bar_least_width = 160;
    int side_bar_greatest_width = 360;
    int inspector_width = 272;
    int inspector_greatest_width = 400;
    int least_window_width = 1024;
    int least_window_height = 640;
    int overlay_below_width = 1500;      // the inspector lies over the edge in windows narrower than this
    int small_window_width = 1200;       // the side bar too
    int key_map_column = 240;            // least width of its columns
    int key_map_key = 32;                // least width of a key
    int press_note_width = 280;          // of the note that a press asks for
    int history_width = 320;             // of the undo history
    int history_height = 420;
    double key_map_ground_share = 0.94;  // how much it covers what is below it
};
inline constexpr window_metrics window_sizes;

}  // namespace vistels
