// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings/search_patterns.h"

#include <cmath>
#include <utility>

#include "app/settings/settings_failures.h"
#include "util/clock.h"
#include "util/text_forms.h"

namespace vistels {

namespace {

constexpr settings_file older_file{"Chronologies", filter_patterns_file_name};

// What a date of a file can hold.
double whole_seconds_now() {
    return std::floor(seconds_since_1970());
}

result<void> save(const home_places& places, property_array items) {
    property_dictionary values;
    values.add(filter_patterns_key, std::move(items));
    return write_settings(places, search_patterns_file, values);
}

// Once: from then on the file is there.
result<void> carry_over(const home_places& places) {
    if (!read_settings(places, search_patterns_file).empty()) return {};
    const auto older = read_settings(places, older_file);
    return older.empty() ? result<void>() : save(places, patterns_carried_over(older, whole_seconds_now()));
}

// What is stored, as far as it could be brought over.
property_dictionary stored_patterns(const home_places& places) {
    if (carry_over(places)) return read_settings(places, search_patterns_file);
    property_dictionary unsaved;
    unsaved.add(filter_patterns_key,
                patterns_carried_over(read_settings(places, older_file), whole_seconds_now()));
    return unsaved;
}

result<void> refuse_unstorable(const std::string& text) {
    if (is_valid_text(text)) return {};
    return pattern_cannot_be_stored(text);
}

}  // namespace

std::vector<filter_pattern> load_search_patterns(const home_places& places) {
    return read_filter_patterns(stored_patterns(places));
}

result<void> remember_search_pattern(const home_places& places, const std::string& pattern) {
    if (pattern.empty()) return {};
    if (auto storable = refuse_unstorable(pattern); !storable) return storable;
    return save(places, with_pattern_remembered(stored_patterns(places), pattern, whole_seconds_now()));
}

result<void> remove_search_pattern(const home_places& places, const std::string& pattern) {
    if (pattern.empty()) return {};
    return save(places, with_pattern_removed(stored_patterns(places), pattern));
}

result<void> name_search_pattern(const home_places& places, const std::string& pattern,
                                 const std::string& name) {
    if (auto storable = refuse_unstorable(name); !storable) return storable;
    return save(places, with_pattern_named(stored_patterns(places), pattern, name));
}

}  // namespace vistels
