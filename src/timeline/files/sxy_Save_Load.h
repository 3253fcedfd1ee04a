// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "timeline/files/chron_header.h"
#include "timeline/records/sxy_DATA_root.h"
#include "util/file_system.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

class stored_sink;

inline constexpr const char* timeline_file_name = "chron data.plist";

// The names of new rows begin so; what follows counts them.
inline constexpr std::string_view default_row_name_mark = "row {start of default timeline row name}";

// A timeline read from its stored form, with what was passed over.
struct loaded_timeline {
    timeline_snapshot content;
    std::size_t skipped_clips = 0;  // without a readable time
    std::vector<failure> messages;  // what was passed over or wrong with its notes, for the user
};
// What to tell of clips that were passed over.
failure skipped_clips(const std::string& path, std::size_t count);

// Reads the stored dictionary of a timeline. Nothing in it but its being a dictionary is required.
loaded_timeline read_timeline(const property_dictionary& stored);
// The same from the bytes of a property list; strict about these, and the message names `path`. Files in the
// shape that timeline_bytes writes are read without a tree of values between.
result<loaded_timeline> read_timeline_bytes(std::string_view bytes, const std::string& path);
// The same from the bytes of a JSON document.
result<loaded_timeline> read_timeline_json(std::string_view bytes, const std::string& path);

// Puts the stored values: the keys in their order, "rows" last. Of a snapshot with `only_selected` only the
// clips that are selected and filtered in are written, and rows without one are left out. Each row is locked
// while it is written. Any thread.
void write_timeline(const timeline_snapshot& timeline, stored_sink& to);
property_dictionary write_timeline(const timeline_snapshot& timeline);
// The same as a dictionary: all that "chron data.plist" holds.
void write_whole_timeline(const timeline_snapshot& timeline, stored_sink& to);
// The bytes of "chron data.plist".
std::string timeline_bytes(const timeline_snapshot& timeline);

// Reads a timeline from a folder that holds "chron data.plist", or from a ".plist" or ".json" file, with the
// notes beside it; what was passed over is among its messages. The journal is not looked at. The message
// names the file.
result<loaded_timeline> load_timeline(const std::string& source);

// Writes "chron notes.plist" and then "chron data.plist" into the folder.
result<void> save_timeline(const timeline_snapshot& timeline, const std::string& folder,
                           file_system& files = machine_files());

// The names of the rows without building clips; nothing when there are none to be read.
std::optional<std::vector<std::string>> read_row_names(const std::string& folder);

}  // namespace vistels
