// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "cli/command_line.h"

namespace vistels {

// Each adds its commands to the program.
void register_startup_commands(CLI::App& program, command_line& line);
void register_timeline_commands(CLI::App& program, command_line& line);
void register_collection_commands(CLI::App& program, command_line& line);
void register_formula_commands(CLI::App& program, command_line& line);
void register_filter_commands(CLI::App& program, command_line& line);
void register_demo_command(CLI::App& program, command_line& line);

}  // namespace vistels
