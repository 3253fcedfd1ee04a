// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/command_line.h"

namespace vistels {

// Adds the commands that play a collection: frame, play, seek.
void register_collection_playback(CLI::App& collection, command_line& line);

}  // namespace vistels
