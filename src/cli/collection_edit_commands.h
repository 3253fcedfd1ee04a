// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "cli/command_line.h"

namespace vistels {

// What `collection show` prints of the collection in `folder`.
result<command_outcome> show_collection(const std::string& folder, const home_places& places);

// Adds the commands that change a collection's vistels: add, remove, duplicate, move, close, deinterlace,
// overlay, copy, tidy; and resave.
void register_collection_edits(CLI::App& collection, command_line& line);

}  // namespace vistels
