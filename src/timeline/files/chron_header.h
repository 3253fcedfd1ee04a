// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "document/file_content_mark.h"
#include "util/file_system.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

// The small files beside "chron data.plist". Reading never fails: a missing or damaged file, or a value of
// the wrong type, leaves the defaults. Messages of failed writes name the file. Any thread.

inline constexpr const char* timeline_header_file_name = "chron data header.plist";
inline constexpr const char* timeline_summary_file_name = "chron data summary.plist";
inline constexpr const char* timeline_save_time_file_name = "chron save time.plist";

// What "chron data header.plist" holds: identity and display settings of a timeline, in the stored order.
struct timeline_header {
    std::string uuid;  // "UUID chronology header"
    bool full_row_colored = false;
    std::string created_by;
    std::string secondary_header;  // "UUID secondary chronology header"
    std::string linked_collection;
    std::string source_path;       // of the video collection that it was opened with
    std::string name;              // "chronology name"
    double duration = 0;           // seconds
    double pixels_per_second = 0;  // zoom; 0 = not set
    double body_left = 0;          // scroll position in pixels
    bool block_auto_relinking = false;
    double name_column_width = 0;  // points; 0 = not set
    double last_saved = 0;         // seconds since 1970; 0 = never
    std::string unlinked_message_created_by;
    double cursor_seconds = 0;  // the playhead
    // The content of "chron data.plist" that it was written beside, and the one before that: by them a copy
    // that a broken-off save left is told from one that has nothing to say any more. Of size -1: not known.
    file_content_mark data;
    file_content_mark data_before;
    // Values whose use is not built yet, by their key: the bookmark of the source path, and when the timeline
    // was last copied between folders.
    property_dictionary kept;
};

timeline_header read_timeline_header(const property_dictionary& stored);
// With the time of now as "last saved".
property_dictionary write_timeline_header(const timeline_header& header);
timeline_header load_timeline_header(const std::string& folder);
// Beside the "chron data.plist" that is in the folder, whatever `header` says of it.
result<void> save_timeline_header(const timeline_header& header, const std::string& folder,
                                  file_system& files = machine_files());

// What "chron data summary.plist" holds: links to a secondary timeline and to the source object.
struct timeline_summary {
    std::string secondary_uuid;
    property_value source_object;  // of any type
    property_value sync_data_dict;

    bool operator==(const timeline_summary&) const = default;
};

timeline_summary load_timeline_summary(const std::string& folder);
result<void> save_timeline_summary(const timeline_summary& summary, const std::string& folder,
                                   file_system& files = machine_files());

// Notes in "chron save time.plist" that the instance `saver` saved just now.
result<void> save_save_time(const std::string& folder, const std::string& saver,
                            file_system& files = machine_files());

}  // namespace vistels
