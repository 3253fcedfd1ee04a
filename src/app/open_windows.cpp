// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/open_windows.h"

#include <algorithm>

#include "util/property_value.h"

namespace vistels {

std::vector<open_window> load_open_windows(const home_places& places) {
    std::vector<open_window> windows;
    const auto stored = read_settings(places, windows_open_file);
    if (const auto* all = stored.array("open windows")) {
        for (const auto& value : *all) {
            const auto* window = value.dictionary();
            if (!window) continue;
            const auto* path = window->find("open_from_path");
            windows.push_back({window->text_or_empty("root ID"), window->text_or_empty("name"),
                               window->integer("order").value_or(0), path ? path_from(*path) : ""});
        }
    }
    std::stable_sort(windows.begin(), windows.end(),
                     [](const auto& a, const auto& b) { return a.order < b.order; });
    return windows;
}

result<void> save_open_windows(const home_places& places, const std::vector<open_window>& windows) {
    property_array all;
    property_array order;
    for (const auto& window : windows) {
        property_dictionary one;
        one.add("root ID", window.root_id);
        if (!window.name.empty()) one.add("name", window.name);
        one.add("order", window.order);
        one.add("open_from_path", stored_path(window.open_from_path));
        all.emplace_back(std::move(one));
        order.emplace_back(window.root_id);
    }
    property_dictionary stored;
    stored.add("open windows", std::move(all));
    stored.add("window_order_on_save", std::move(order));
    return write_settings(places, windows_open_file, stored);
}

}  // namespace vistels
