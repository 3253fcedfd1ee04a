// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// Sizes of filter fields, their lists and menus in logical pixels.
struct filter_metrics {
    int filter_height = 30;
    int filter_least_width = 180;
    int filter_button = 24;            // side of the buttons inside the filter field
    int token_padding = 3;             // of a word's ground in a filter, left and right of it
    int completion_width = 300;        // least, of the list under a filter field
    int menu_greatest_width = 360;     // of a text of the user's in a menu
    int completion_lines = 8;          // shown at once
    int message_greatest_width = 520;  // of the message under a filter field
};
inline constexpr filter_metrics filter_sizes;

}  // namespace vistels
