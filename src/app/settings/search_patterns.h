// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "app/settings/places.h"
#include "app/settings/settings_file.h"
#include "formula/filter_data_Funcs.h"
#include "util/result.h"

namespace vistels {

// The remembered filter texts, "Filter Search Patterns.plist" in the state folder. The first call that finds
// no such file brings over what an older one in "Chronologies" holds. A file that is damaged counts as empty
// and is kept as "X damaged N" by what writes. Not for two threads at once.
inline constexpr settings_file search_patterns_file{"", filter_patterns_file_name};

// Newest first.
std::vector<filter_pattern> load_search_patterns(const home_places& places);
// Puts a pattern first, with the time now. A text that no file can hold is refused; an empty one does
// nothing.
result<void> remember_search_pattern(const home_places& places, const std::string& pattern);
result<void> remove_search_pattern(const home_places& places, const std::string& pattern);
// Gives a remembered pattern a name; an empty one takes its name away.
result<void> name_search_pattern(const home_places& places, const std::string& pattern,
                                 const std::string& name);

}  // namespace vistels
