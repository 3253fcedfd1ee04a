// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QRect>
#include <string>
#include <vector>

#include "app/settings/places.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

// What a window remembers from one run to the next; theme and folded vaults are the same for all windows.
// What is missing or makes no sense keeps its default.
struct window_memory {
    QRect place;  // in logical pixels; null: not known
    bool is_maximized = false;
    int side_bar_width = 0;   // 0: not known
    int inspector_width = 0;  // 0: not known
    bool side_bar_shown = true;
    bool inspector_shown = true;
    bool playback_health_shown = false;
    int tab = 0;
    std::string theme;                       // "dark", "light", or empty: as the desktop has it
    std::vector<std::string> folded_vaults;  // paths
    property_dictionary work_sizes;          // of the panes, see work_area
};

// One file in the state folder holds the memories of the windows that were open, by the "root ID" of each; at
// its top stands that of the one in front, for windows that are not known.
window_memory load_window_memory(const home_places& places, const std::string& root_id = {});

struct remembered_window {
    std::string root_id;
    window_memory memory;
};
// `windows` front to back. Nothing is written for no windows. Any thread.
result<void> save_window_memories(const home_places& places, const std::vector<remembered_window>& windows);

// `place` moved and cut so that it lies on `screen` (the part that windows may use), and the window's title
// can be reached.
QRect place_on_screen(QRect place, const QRect& screen);

// The place for a new window of the size of `front`: a step down and to the right of it and of every other
// window, on `screen`. Where there is no more room it becomes smaller, down to `least`, and then the steps
// begin anew at the left edge or at the top.
QRect cascaded_place(const QRect& front, const std::vector<QRect>& others, QSize least, const QRect& screen);

}  // namespace vistels
