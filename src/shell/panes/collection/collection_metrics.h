// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// Sizes of the collection pane in logical pixels.
struct collection_metrics {
    int icon_transport = 20;
    int transport_height = 56;
    int play_width = 56;
    int play_height = 44;
    int step_button = 40;

    int vistel_gap = 1;
    int vistel_ring = 2;
    int vistel_label_height = 20;
    int vistel_grip = 6;          // how near to a vistel's edge a drag resizes
    int vistel_handle = 8;        // side of the squares at its corners
    int vistel_snap = 6;          // how near to a line a dragged edge meets it
    int vistel_least = 64;        // least side
    int vistel_key_step = 8;      // of the arrow keys
    int scroll_step = 30;         // of one step of the wheel or an arrow of the bar
    int vistel_scroll_edge = 32;  // how near to the view's edge what is held scrolls it
    int vistel_scroll_step = 20;  // and how far each time, at the most
    int align_frame_width = 6;    // so far a vistel is dragged for one frame
    int align_name_width = 160;   // greatest, of a vistel's name where it is brought into step
};
inline constexpr collection_metrics collection_sizes;

}  // namespace vistels
