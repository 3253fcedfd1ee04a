// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/command_line.h"

namespace vistels {

// Adds "logger show", "logger resave" and "logger press" to the program.
void register_logger_commands(CLI::App& program, command_line& line);

}  // namespace vistels
