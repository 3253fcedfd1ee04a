// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/command_line.h"

namespace vistels {

// Adds the commands that change a timeline in its folder by one edit: merge, compact, expand.
void register_timeline_edits(CLI::App& timeline, command_line& line);

}  // namespace vistels
