// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "logger/code_window_files.h"
#include "util/colour_text.h"
#include "util/file_system.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

// All of these are pure functions of their arguments and of the files they name: any thread.

inline constexpr const char* logger_info_file_name = "logger info.plist";
inline constexpr const char* logger_offsets_file_name = "logger offsets.plist";

// What "logger info.plist" holds: the settings of one code window.
struct logger_settings {
    std::string linked_timeline_uuid;  // the timeline that it writes into; empty: its collection's
    double scroller_offset_x = 0;      // canvas scroll position in logical pixels
    double scroller_offset_y = 0;
    std::optional<colour> background_colour;
    bool remember_markup_mode = false;
    property_dictionary kept;  // all keys as read; those above are replaced when they have changed

    bool operator==(const logger_settings&) const = default;
};

logger_settings read_logger_settings(const property_dictionary& stored);
// What was read, with what has changed since; a value that is at its default now is left out.
property_dictionary write_logger_settings(const logger_settings& settings);

// A missing file gives the defaults, and so does a damaged one, see read_code_window_file.
logger_settings load_logger_settings(const std::string& logger_folder,
                                     std::vector<failure>* messages = nullptr);
// See save_code_window_file.
result<void> save_logger_settings(const logger_settings& settings, const std::string& logger_folder,
                                  file_system& files = machine_files(),
                                  std::vector<file_conflict>* met = nullptr);

// What "logger offsets.plist" holds: how the times of another source of the buttons fit those of the
// collection. Kept as it was read.
struct logger_offsets {
    property_dictionary kept;

    // What the dictionary "sync data dict - markup" names, or the empty text.
    std::string source_object() const;
    bool operator==(const logger_offsets&) const = default;
};
logger_offsets load_logger_offsets(const std::string& logger_folder,
                                   std::vector<failure>* messages = nullptr);
result<void> save_logger_offsets(const logger_offsets& offsets, const std::string& logger_folder,
                                 file_system& files = machine_files(),
                                 std::vector<file_conflict>* met = nullptr);

}  // namespace vistels
