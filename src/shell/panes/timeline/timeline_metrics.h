// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// Sizes of the timeline pane in logical pixels.
struct timeline_metrics {
    int pane_header_with_filter_height = 40;
    int selected_count_from = 1040;  // least width of a timeline that says how many clips are selected
    int compact_below_height = 700;  // rows are low in windows lower than this

    int row_height = 30;
    int row_small_height = 24;  // in small windows
    int row_least_height = 20;
    int row_greatest_height = 72;
    int row_names_width = 140;
    int clip_inset = 3;
    int ruler_height = 26;
    int major_tick_distance = 90;
    int minor_tick_distance = 6;
    int major_tick_length = 10;
    int minor_tick_length = 5;
    int playhead_flag_width = 78;
    int playhead_flag_height = 20;
    int whole_event_height = 24;
    int zoom_slider_width = 84;
    double band_share = 0.15;  // of the accent, inside what a hand goes round
    int edge_grip = 5;         // how near to a clip's edge a drag trims

    // Widths from which a clip shows its parts.
    int clip_merge_below = 3;
    int clip_gap_below = 1;
    int clip_least_marked = 2;  // of a selected or passing clip
    int clip_narrow_below = 8;
    int clip_label_indent = 5;
    int clip_number_from = 22;
    int clip_qualifier_from = 58;
    int clip_second_qualifier_from = 120;
    int clip_note_from = 24;
    int clip_note_fold = 7;
    int clip_stars_from = 80;
    int clip_star = 9;
    int trigger_mark = 9;
    int trigger_mark_darker = 150;  // than the row, in per cent
};
inline constexpr timeline_metrics timeline_sizes;

}  // namespace vistels
