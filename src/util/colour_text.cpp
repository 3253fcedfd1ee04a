// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/colour_text.h"

#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <vector>

#include "util/text_forms.h"

namespace vistels {

namespace {

constexpr std::array<double, 10> powers_of_ten{1, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9};

// The component rounded, in its shortest form with at least one decimal.
void append_component(std::string& to, double component, int decimals) {
    const double scale = powers_of_ten[static_cast<std::size_t>(decimals)];
    const double scaled = std::isfinite(component) ? std::round(component * scale) : 0.0;
    constexpr double most_digits = 1e15;
    if (scaled >= 0 && scaled < most_digits) {
        // The digits of the whole number `scaled` are those of the shortest form, zeros at the end aside.
        const auto number = static_cast<std::uint64_t>(scaled);
        const auto one = static_cast<std::uint64_t>(scale);
        append_integer(to, static_cast<std::int64_t>(number / one));
        to += '.';
        const std::size_t last_kept = to.size() + 1;
        std::uint64_t rest = number % one;
        for (std::uint64_t place = one / 10; place > 0; place /= 10) {
            to += static_cast<char>('0' + rest / place);
            rest %= place;
        }
        if (to.size() < last_kept) to += '0';
        while (to.size() > last_kept && to.back() == '0') to.pop_back();
        return;
    }
    const std::size_t from = to.size();
    // From here on doubles stand so far apart that one that was rounded could be rounded to another one
    // again.
    constexpr double fewest_unrounded = 0x1p51;
    append_shortest_decimal(
        to, std::abs(component) * scale >= fewest_unrounded ? component : scaled / scale + 0.0);
    if (to.find_first_of(".e", from) == std::string::npos) to += ".0";
}

// Every finite number that stands in `text`, whatever stands between them.
std::vector<double> numbers_in(std::string_view text) {
    std::vector<double> numbers;
    const char* at = text.data();
    const char* const end = at + text.size();
    while (at != end) {
        double number = 0;
        const auto [next, fault] = std::from_chars(at, end, number);
        if (fault == std::errc() && std::isfinite(number)) numbers.push_back(number);
        // One beyond the range of a double is passed over whole: its digits may be many.
        at = next == at ? at + 1 : next;
    }
    return numbers;
}

std::optional<rectangle> rectangle_of(const std::vector<double>& numbers) {
    if (numbers.size() != 4) return std::nullopt;
    return rectangle{numbers[0], numbers[1], numbers[2], numbers[3]};
}

}  // namespace

std::string colour_text(const colour& value, int decimals) {
    std::string text;
    append_component(text, value.red, decimals);
    text += ',';
    append_component(text, value.green, decimals);
    text += ',';
    append_component(text, value.blue, decimals);
    std::string alpha;
    append_component(alpha, value.alpha, decimals);
    if (alpha != "1.0") text += ',' + alpha;  // one that rounds to 1 says nothing
    return text;
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
    std::string text;
    for (const double number : {value.x, value.y, value.width, value.height}) {
        if (!text.empty()) text += ',';
        append_shortest_decimal(text, number);
    }
    return text;
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
