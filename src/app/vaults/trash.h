// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

#include "util/file_system.h"
#include "util/result.h"

namespace vistels {

// Where something lies in the trash.
struct trashed {
    std::string path;         // of what was moved there
    std::string information;  // the file that says where it was
};

// Moves a file or folder into the desktop's trash: `home_trash` when that lies on the same volume (it is made
// when missing), else the trash of its own volume. A symbolic link is moved itself. Nothing is copied or
// deleted: where it cannot be moved it stays, and the failure says why. Any thread.
result<trashed> move_to_trash(const std::string& path, const std::string& home_trash,
                              file_system& files = machine_files());

// What was moved to the trash from `path` last; nothing when it is not there any more. Any thread.
std::optional<trashed> find_in_trash(const std::string& path, const std::string& home_trash);

// Brings it back to `path`, where nothing must be.
result<void> restore_from_trash(const trashed& what, const std::string& path,
                                file_system& files = machine_files());

// The path as it stands in addresses of files and in what the trash notes of its items.
std::string percent_encoded(const std::string& path);

}  // namespace vistels
