// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/property_value.h"

#include <cmath>

namespace vistels {

namespace {

// The largest magnitude below which every whole number is a double.
constexpr double largest_exact_integer = 9007199254740992.0;

}  // namespace

std::optional<bool> property_value::boolean() const {
    if (const auto* value = std::get_if<bool>(&value_)) return *value;
    return std::nullopt;
}

std::optional<std::int64_t> property_value::integer() const {
    if (const auto* value = std::get_if<std::int64_t>(&value_)) return *value;
    if (const auto* value = std::get_if<double>(&value_)) {
        if (std::abs(*value) <= largest_exact_integer && std::trunc(*value) == *value) {
            return static_cast<std::int64_t>(*value);
        }
    }
    return std::nullopt;
}

std::optional<double> property_value::number() const {
    if (const auto* value = std::get_if<double>(&value_)) return *value;
    if (const auto* value = std::get_if<std::int64_t>(&value_)) return static_cast<double>(*value);
    return std::nullopt;
}

const property_value* property_dictionary::find(std::string_view key) const {
    for (auto entry = entries_.rbegin(); entry != entries_.rend(); ++entry) {
        if (entry->key == key) return &entry->value;
    }
    return nullptr;
}

property_value* property_dictionary::find(std::string_view key) {
    return const_cast<property_value*>(std::as_const(*this).find(key));
}

void property_dictionary::set(std::string_view key, property_value value) {
    if (auto* found = find(key)) {
        *found = std::move(value);
    } else {
        add(key, std::move(value));
    }
}

void property_dictionary::add(std::string_view key, property_value value) {
    entries_.push_back({std::string(key), std::move(value)});
}

void property_dictionary::add(std::string&& key, property_value value) {
    entries_.push_back({std::move(key), std::move(value)});
}

void property_dictionary::reserve(std::size_t count) {
    entries_.reserve(count);
}

void property_dictionary::remove(std::string_view key) {
    std::erase_if(entries_, [key](const property_entry& entry) { return entry.key == key; });
}

std::optional<bool> property_dictionary::boolean(std::string_view key) const {
    const auto* value = find(key);
    return value ? value->boolean() : std::nullopt;
}

std::optional<std::int64_t> property_dictionary::integer(std::string_view key) const {
    const auto* value = find(key);
    return value ? value->integer() : std::nullopt;
}

std::optional<double> property_dictionary::number(std::string_view key) const {
    const auto* value = find(key);
    return value ? value->number() : std::nullopt;
}

const std::string* property_dictionary::text(std::string_view key) const {
    const auto* value = find(key);
    return value ? value->text() : nullptr;
}

const property_array* property_dictionary::array(std::string_view key) const {
    const auto* value = find(key);
    return value ? value->array() : nullptr;
}

const property_dictionary* property_dictionary::dictionary(std::string_view key) const {
    const auto* value = find(key);
    return value ? value->dictionary() : nullptr;
}

std::string property_dictionary::text_or_empty(std::string_view key) const {
    const auto* found = text(key);
    return found ? *found : std::string();
}

}  // namespace vistels
