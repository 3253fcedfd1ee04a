// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "util/property_value.h"

namespace vistels {

// One remembered filter text.
struct filter_pattern {
    std::string pattern;         // exactly as it was typed
    std::optional<double> date;  // when it was last applied or brought over: seconds since 1970
    std::string name;            // what is shown instead of the pattern; may be empty

    const std::string& title() const { return name.empty() ? pattern : name; }
    bool operator==(const filter_pattern&) const = default;
};

// The file of the remembered patterns holds the dictionary {"items": array}, newest first, from which these
// read and make "items". They are pure; times are seconds since 1970. Any thread.
inline constexpr const char* filter_patterns_file_name = "Filter Search Patterns.plist";
inline constexpr const char* filter_patterns_key = "items";

// The patterns in stored order; an item without a "pattern" text is passed over.
std::vector<filter_pattern> read_filter_patterns(const property_dictionary& stored);

// The items after `pattern` was applied: it stands first, once, with the new date and the name it had. The
// empty text changes nothing. Items and keys of items that are not known stay.
property_array with_pattern_remembered(const property_dictionary& stored, std::string_view pattern,
                                       double now);
// The items without it.
property_array with_pattern_removed(const property_dictionary& stored, std::string_view pattern);
// The items after it was given a name; an empty one takes its name away.
property_array with_pattern_named(const property_dictionary& stored, std::string_view pattern,
                                  const std::string& name);

// What is brought over from the file at the older place: pattern and name of each item, with the date `now`.
property_array patterns_carried_over(const property_dictionary& older, double now);

}  // namespace vistels
