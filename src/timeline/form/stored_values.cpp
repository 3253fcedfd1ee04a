// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/form/stored_values.h"

#include <array>
#include <charconv>

#include "util/text_forms.h"

namespace vistels {

namespace {

// The two finite numbers that `text` holds, whatever stands around them.
std::optional<point> point_in(std::string_view text) {
    std::array<double, 2> numbers{};
    std::size_t count = 0;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end) {
        double number = 0;
        const auto [next, fault] = std::from_chars(at, end, number);
        const bool is_number = fault == std::errc() && std::isfinite(number);
        if (is_number && count == numbers.size()) return std::nullopt;
        if (is_number) numbers[count++] = number;
        at = is_number ? next : at + 1;
    }
    return count == numbers.size() ? std::optional(point{numbers[0], numbers[1]}) : std::nullopt;
}

}  // namespace

std::string point_text(const point& value) {
    std::string text;
    append_shortest_decimal(text, value.x);
    text += ',';
    append_shortest_decimal(text, value.y);
    return text;
}

std::optional<point> point_from(const stored_view& value) {
    if (const auto text = value.text()) return point_in(*text);
    std::optional<double> x;
    std::optional<double> y;
    if (const auto items = value.items(); items.size() == 2) {
        x = finite_number(items[0]);
        y = finite_number(items[1]);
    }
    for (const auto& member : value.members()) {
        if (member.key == "x") x = finite_number(member.value);
        if (member.key == "y") y = finite_number(member.value);
    }
    return x && y ? std::optional(point{*x, *y}) : std::nullopt;
}

bool take_value(std::optional<rectangle>& to, const stored_view& from, text_cache&) {
    const auto value = rectangle_from(from.copy());
    if (value) to = value;
    return value.has_value();
}

void put_value(const std::optional<rectangle>& value, std::string_view key, stored_sink& to) {
    if (value) to.put(key, rectangle_text(*value));
}

bool take_value(std::optional<point>& to, const stored_view& from, text_cache&) {
    const auto value = point_from(from);
    if (value) to = value;
    return value.has_value();
}

void put_value(const std::optional<point>& value, std::string_view key, stored_sink& to) {
    if (value) to.put(key, point_text(*value));
}

bool take_value(std::vector<std::string>& to, const stored_view& from, text_cache&) {
    if (!from.is_array()) return false;
    const auto items = from.items();
    to.clear();
    to.reserve(items.size());
    for (const auto& item : items) to.emplace_back(item.text().value_or(std::string_view()));
    return true;
}

void put_value(const std::vector<std::string>& value, std::string_view key, stored_sink& to) {
    if (value.empty()) return;
    to.begin_array(key);
    for (const auto& text : value) to.put({}, std::string_view(text));
    to.end();
}

bool take_value(std::vector<std::int64_t>& to, const stored_view& from, text_cache&) {
    if (!from.is_array()) return false;
    const auto items = from.items();
    to.clear();
    to.reserve(items.size());
    for (const auto& item : items) to.push_back(item.integer().value_or(0));
    return true;
}

void put_value(const std::vector<std::int64_t>& value, std::string_view key, stored_sink& to) {
    if (value.empty()) return;
    to.begin_array(key);
    for (const std::int64_t number : value) to.put({}, number);
    to.end();
}

bool take_colour(std::optional<colour>& to, const stored_view& from, text_cache&) {
    const auto text = from.text();
    const auto value = text ? colour_from_text(*text) : std::nullopt;
    if (value) to = value;
    return value.has_value();
}

}  // namespace vistels
