// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/start/open_windows.h"

#include <algorithm>

#include "app/vaults/known_vaults.h"
#include "util/file_system.h"
#include "util/property_value.h"
#include "video/video_coll_LOAD.h"

namespace vistels {

namespace {

// An item of a vault that is not known under its path, but by its name, was copied or restored with it: it is
// looked for there first, whatever still lies in the old place.
std::string in_own_vault(const std::string& path, const std::vector<std::string>& vaults) {
    const std::string vault = vault_of(path);
    const auto is_same = [&](const std::string& known) { return is_same_folder(known, vault); };
    if (vault.empty() || std::any_of(vaults.begin(), vaults.end(), is_same)) return path;
    for (const auto& known : vaults) {
        if (path_name(known) != path_name(vault)) continue;
        std::string there = known + path.substr(std::min(vault.size(), path.size()));
        if (is_folder(there)) return there;
    }
    return path;
}

}  // namespace

std::vector<open_window> load_open_windows(const home_places& places) {
    std::vector<open_window> windows;
    const auto stored = read_settings(places, windows_open_file);
    const auto vaults = known_vaults(places);
    if (const auto* all = stored.array("open windows")) {
        for (const auto& value : *all) {
            const auto* window = value.dictionary();
            if (!window) continue;
            const auto* path = window->find("open_from_path");
            windows.push_back({window->text_or_empty("root ID"), window->text_or_empty("name"),
                               window->integer("order").value_or(0),
                               path ? in_own_vault(path_from(*path), vaults) : ""});
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
