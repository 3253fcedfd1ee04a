// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/filter_data_Funcs.h"

#include <utility>

namespace vistels {

namespace {

constexpr const char* pattern_key = "pattern";
constexpr const char* date_key = "date";
constexpr const char* name_key = "name";

const property_array& items_in(const property_dictionary& stored) {
    static const property_array none;
    const auto* items = stored.array(filter_patterns_key);
    return items ? *items : none;
}

// The pattern of an item; null when it has none.
const std::string* pattern_of(const property_value& item) {
    const auto* entries = item.dictionary();
    return entries ? entries->text(pattern_key) : nullptr;
}

bool holds(const property_value& item, std::string_view pattern) {
    const auto* held = pattern_of(item);
    return held && *held == pattern;
}

}  // namespace

std::vector<filter_pattern> read_filter_patterns(const property_dictionary& stored) {
    std::vector<filter_pattern> patterns;
    for (const auto& item : items_in(stored)) {
        const auto* pattern = pattern_of(item);
        if (!pattern) continue;
        const auto* date_value = item.dictionary()->find(date_key);
        const auto* date = date_value ? date_value->date() : nullptr;
        patterns.push_back({*pattern, date ? std::optional(date->seconds) : std::nullopt,
                            item.dictionary()->text_or_empty(name_key)});
    }
    return patterns;
}

property_array with_pattern_remembered(const property_dictionary& stored, std::string_view pattern,
                                       double now) {
    if (pattern.empty()) return items_in(stored);
    property_dictionary newest;
    newest.add(pattern_key, pattern);
    for (const auto& item : items_in(stored)) {
        if (!holds(item, pattern)) continue;
        newest = *item.dictionary();
        break;
    }
    newest.set(date_key, property_date{now});
    property_array items{std::move(newest)};
    for (auto& item : with_pattern_removed(stored, pattern)) items.push_back(std::move(item));
    return items;
}

property_array with_pattern_removed(const property_dictionary& stored, std::string_view pattern) {
    property_array items = items_in(stored);
    if (pattern.empty()) return items;
    std::erase_if(items, [&](const property_value& item) { return holds(item, pattern); });
    return items;
}

property_array with_pattern_named(const property_dictionary& stored, std::string_view pattern,
                                  const std::string& name) {
    property_array items = items_in(stored);
    for (auto& item : items) {
        if (!holds(item, pattern)) continue;
        if (name.empty()) {
            item.dictionary()->remove(name_key);
        } else {
            item.dictionary()->set(name_key, name);
        }
    }
    return items;
}

property_array patterns_carried_over(const property_dictionary& older, double now) {
    property_array items;
    for (const auto& one : read_filter_patterns(older)) {
        property_dictionary item;
        item.add(pattern_key, one.pattern);
        item.add(date_key, property_date{now});
        if (!one.name.empty()) item.add(name_key, one.name);
        items.emplace_back(std::move(item));
    }
    return items;
}

}  // namespace vistels
