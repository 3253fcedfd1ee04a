// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/places.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

// One window as "windows open.plist" lists it.
struct open_window {
    std::string root_id;         // "root ID"
    std::string name;            // may be empty
    std::int64_t order = 0;      // front to back
    std::string open_from_path;  // the vault or folder that it shows
};

// What starting found and did.
struct start_up_report {
    std::vector<std::string> cleaned;    // paths of deleted stray files
    std::vector<std::string> recovered;  // paths of files put back whole
    std::vector<std::string> messages;   // for the user
    std::vector<open_window> windows;    // to be opened again, front to back
    bool ended_well_before = true;       // the previous run was quit, not killed
};

// The steps before the first window: home vault and state folder are made when missing, strays of broken-off
// writes are cleaned up, torn files in the state folder and in the vaults are mended, the build is checked
// against the one that ran last, and the run is noted as begun. A folder that cannot be made is an error;
// anything else that goes wrong is a message. `build` is the running build's number, `running_seconds` how
// long this program has been running.
result<start_up_report> start_up(const home_places& places, double build, double running_seconds);

// Notes that the run ended as it should, with the UUID of the item that had the focus.
result<void> note_clean_quit(const home_places& places, const std::string& uuid_last_focus);

// The windows in their order; none when there is no readable file.
std::vector<open_window> load_open_windows(const home_places& places);
result<void> save_open_windows(const home_places& places, const std::vector<open_window>& windows);

// The message for a running build that is older than the one used before; empty when it is not.
std::string build_message(double running_build, double last_build);

}  // namespace vistels
