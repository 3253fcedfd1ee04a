// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/colour_text.h"

#include <charconv>
#include <cmath>
#include <vector>

#include "util/text_forms.h"

namespace vistels {

namespace {

std::string joined(const std::vector<double>& numbers, bool at_least_one_decimal) {
    std::string text;
    for (const double number : numbers) {
        if (!text.empty()) text += ',';
        const std::size_t from = text.size();
        append_shortest_decimal(text, number);
        if (at_least_one_decimal && text.find_first_of(".e", from) == std::string::npos) text += ".0";
    }
    return text;
}

// Every finite number that stands in `text`, whatever stands between them.
std::vector<double> numbers_in(std::string_view text) {
    std::vector<double> numbers;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end) {
        double number = 0;
        const auto [next, fault] = std::from_chars(at, end, number);
        const bool is_number = fault == std::errc() && std::isfinite(number);
        if (is_number) numbers.push_back(number);
        at = is_number ? next : at + 1;
    }
    return numbers;
}

std::optional<rectangle> rectangle_of(const std::vector<double>& numbers) {
    if (numbers.size() != 4) return std::nullopt;
    return rectangle{numbers[0], numbers[1], numbers[2], numbers[3]};
}

}  // namespace

std::string colour_text(const colour& value, int decimals) {
    const double scale = std::pow(10.0, decimals);
    const auto rounded = [scale](double component) {
        if (!std::isfinite(component)) return 0.0;
        // A double this large has no decimals left to round.
        if (std::abs(component) * scale >= 0x1p53) return component;
        return std::round(component * scale) / scale + 0.0;
    };
    std::vector<double> components{rounded(value.red), rounded(value.green), rounded(value.blue)};
    if (value.alpha != 1.0) components.push_back(rounded(value.alpha));
    return joined(components, true);
}

std::optional<colour> colour_from_text(std::string_view text) {
    std::vector<double> components;
    while (true) {
        const auto comma = text.find(',');
        const auto component = number_from_text(text.substr(0, comma));
        if (!component || !std::isfinite(*component)) return std::nullopt;
        components.push_back(*component);
        if (comma == std::string_view::npos) break;
        text.remove_prefix(comma + 1);
    }
    if (components.size() != 3 && components.size() != 4) return std::nullopt;
    return colour{components[0], components[1], components[2], components.size() == 4 ? components[3] : 1.0};
}

colour colour_from_hex(std::string_view text) {
    const auto component = [text](std::size_t at) {
        int value = 0;
        if (text.size() >= at + 2) std::from_chars(text.data() + at, text.data() + at + 2, value, 16);
        return value / 255.0;
    };
    return {component(1), component(3), component(5), 1.0};
}

std::string rectangle_text(const rectangle& value) {
    return joined({value.x, value.y, value.width, value.height}, false);
}

std::optional<rectangle> rectangle_from(const property_value& value) {
    if (const auto* text = value.text()) return rectangle_of(numbers_in(*text));
    if (const auto* array = value.array()) {
        std::vector<double> numbers;
        for (const auto& item : *array) {
            if (const auto number = item.number()) numbers.push_back(*number);
        }
        return rectangle_of(numbers);
    }
    if (const auto* dictionary = value.dictionary()) {
        const auto x = dictionary->number("x");
        const auto y = dictionary->number("y");
        const auto width = dictionary->number("width");
        const auto height = dictionary->number("height");
        if (x && y && width && height) return rectangle{*x, *y, *width, *height};
    }
    return std::nullopt;
}

}  // namespace vistels
