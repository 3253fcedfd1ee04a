// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/settings/places.h"
#include "app/settings/settings_file.h"
#include "util/result.h"

namespace vistels {

inline constexpr settings_file windows_open_file{"Windows", "windows open.plist"};

// One window as "windows open.plist" lists it.
struct open_window {
    std::string root_id;         // "root ID"
    std::string name;            // may be empty
    std::int64_t order = 0;      // front to back
    std::string open_from_path;  // the vault or folder that it shows
};

// The windows in their order; none when there is no readable file. What lay in a vault that was copied or
// restored elsewhere is found in the vault of that name that is known.
std::vector<open_window> load_open_windows(const home_places& places);
result<void> save_open_windows(const home_places& places, const std::vector<open_window>& windows);

}  // namespace vistels
