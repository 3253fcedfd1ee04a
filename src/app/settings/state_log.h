// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <string_view>

#include "app/settings/places.h"

namespace vistels {

inline constexpr const char* program_log_name = "vistels log";
inline constexpr const char* presses_log_name = "vistels presses";

// Appends a line with the time to "System/vistels log.txt", or that of the name, in the state folder: what
// nobody has to act on but whoever looks for a cause wants to read. A log of a megabyte is kept as
// "vistels log 1.txt" in the place of the one before it. A log that cannot be written is no failure of
// anything. Any thread, any number of programs.
void log_line(const home_places& places, std::string_view text, const std::string& log = program_log_name);

}  // namespace vistels
