// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "timeline/sxy_DATA_root.h"
#include "util/file_system.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

inline constexpr const char* timeline_file_name = "chron data.plist";
inline constexpr const char* timeline_header_file_name = "chron data header.plist";
inline constexpr const char* timeline_save_time_file_name = "chron save time.plist";

// A timeline read from its stored form, with what was passed over.
struct loaded_timeline {
    timeline_snapshot content;
    std::size_t skipped_clips = 0;  // without a readable time
};

// Reads the stored dictionary of a timeline. Nothing in it but its being a dictionary is required.
loaded_timeline read_timeline(const property_dictionary& stored);

// The stored dictionary: the keys in their order, "rows" last. With `only_selected` only the clips that are
// selected and filtered in are written, and rows without one are left out.
property_dictionary write_timeline(const timeline_snapshot& timeline, bool only_selected = false);

// Reads a timeline from a folder that holds "chron data.plist", or from a ".plist" or ".json" file. The
// journal is not looked at. The message names the file.
result<loaded_timeline> load_timeline(const std::string& source);

// Writes "chron data.plist" into the folder.
result<void> save_timeline(const timeline_snapshot& timeline, const std::string& folder,
                           bool only_selected = false, file_system& files = machine_files());

// The names of the rows without building clips; nothing when there are none to be read.
std::optional<std::vector<std::string>> read_row_names(const std::string& folder);

// What "chron data header.plist" holds: identity and display settings of a timeline.
struct timeline_header {
    std::string uuid;               // "UUID chronology header"
    std::string created_by;         // "created by"
    std::string linked_collection;  // "UUID linked collection"
    std::string name;               // "chronology name"
    bool full_row_colored = false;
    double duration = 0;           // seconds
    double pixels_per_second = 0;  // zoom; 0 = not set
    double body_left = 0;          // scroll position in pixels
    double name_column_width = 0;  // points; 0 = not set
    double cursor_seconds = 0;     // the playhead
    property_dictionary kept;      // all keys as read; those above are replaced when written
};

timeline_header load_timeline_header(const std::string& folder);
result<void> save_timeline_header(const timeline_header& header, const std::string& folder,
                                  file_system& files = machine_files());

// Notes in "chron save time.plist" that the instance `saver` saved just now.
result<void> save_save_time(const std::string& folder, const std::string& saver,
                            file_system& files = machine_files());

}  // namespace vistels
