// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>
#include <string>
#include <vector>

#include "app/places.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

// What a window remembers from one run to the next: one file in the state folder, read whole and written
// whole. What is missing or makes no sense keeps its default.
struct window_memory {
    QRect place;  // in logical pixels; null: not known
    bool is_maximized = false;
    int side_bar_width = 0;   // 0: not known
    int inspector_width = 0;  // 0: not known
    bool side_bar_shown = true;
    bool inspector_shown = true;
    int tab = 0;
    std::string theme;                       // "dark", "light", or empty: as the desktop has it
    std::vector<std::string> folded_vaults;  // paths
    property_dictionary work_sizes;          // of the panes, see work_area
};

window_memory load_window_memory(const home_places& places);
result<void> save_window_memory(const home_places& places, const window_memory& memory);

// `place` moved and cut so that it lies on `screen` (the part that windows may use), and the window's title
// can be reached.
QRect place_on_screen(QRect place, const QRect& screen);

}  // namespace vistels
