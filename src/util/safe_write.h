// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "util/file_system.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

// A number no other call in this process gets: the monotonic clock's nanoseconds, moved by a fixed offset.
// Any thread.
std::int64_t safe_write_number();

inline constexpr std::string_view temporary_mark = " temp file ";
inline constexpr std::string_view previous_mark = " <previous> ";

// Replaces the file at `path` by `bytes` so that at every instant, after a kill or a power cut too, the old
// or the new content stands there whole. On failure the old file is as it was and the message names the file.
// Any thread; two calls for one path must not run at once.
result<void> safe_write_bytes(const std::string& path, std::string_view bytes,
                              file_system& files = machine_files());

// The same for a property list.
result<void> safe_write(const std::string& path, const property_value& value,
                        file_system& files = machine_files());

// The first free name "X damaged N" for a file "X" that is kept aside, its ending kept.
std::string damaged_name(const std::string& path);

// What a recovery did, in words for the user, with the files' paths.
struct recovery {
    std::vector<std::string> recovered;
    std::vector<std::string> messages;
};

// Mends what a broken-off safe write left in `folder`: a destination that is missing, or is no readable
// property list, gets its newest whole copy back (the torn file is kept as "X damaged N"). Idempotent. Only
// property lists are looked at. Not while another program writes there.
recovery recover_folder(const std::string& folder, file_system& files = machine_files());

// Deletes files in `folder` and the folders in it that a broken-off safe write left, when they are older than
// an hour and than `running_seconds`, the time this program has been running. Returns their paths.
std::vector<std::string> clean_up_strays(const std::string& folder, double running_seconds);

}  // namespace vistels
