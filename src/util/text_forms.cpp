// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/text_forms.h"

#include <array>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstddef>

namespace vistels {

namespace {

constexpr std::string_view base64_digits = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr std::string_view blanks = " \t\r\n";

std::string_view without_blanks(std::string_view text) {
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

template <class Number>
std::optional<Number> whole_text_as(std::string_view text) {
    text = without_blanks(text);
    if (text.size() > 1 && text.front() == '+' && text[1] != '-') text.remove_prefix(1);
    Number number{};
    const auto [end, fault] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (fault != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return number;
}

// The length of the UTF-8 sequence at the start of `text` that XML can hold, or 0.
std::size_t valid_sequence(std::string_view text) {
    const auto byte = [&](std::size_t at) -> unsigned { return static_cast<unsigned char>(text[at]); };
    const unsigned lead = byte(0);
    if (lead < 0x80) return lead >= 0x20 || lead == '\t' || lead == '\n' || lead == '\r' ? 1 : 0;
    const std::size_t length = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    if (lead < 0xC2 || lead > 0xF4 || text.size() < length) return 0;
    unsigned code = lead & (0xFFU >> (length + 1));
    for (std::size_t at = 1; at < length; ++at) {
        if ((byte(at) & 0xC0U) != 0x80U) return 0;
        code = (code << 6U) | (byte(at) & 0x3FU);
    }
    constexpr std::array<unsigned, 5> smallest{0, 0, 0x80, 0x800, 0x10000};
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    const bool not_a_character = code == 0xFFFE || code == 0xFFFF;
    return code < smallest[length] || code > 0x10FFFF || surrogate || not_a_character ? 0 : length;
}

}  // namespace

void append_shortest(std::string& to, double number) {
    std::array<char, 32> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    to.append(digits.data(), end);
}

void append_shortest_decimal(std::string& to, double number) {
    constexpr double largest_written_out = 1e15;
    std::array<char, 400> digits;  // the smallest doubles have over 300 decimals
    if (!(std::abs(number) < largest_written_out)) return append_shortest(to, number);
    const auto end =
        std::to_chars(digits.data(), digits.data() + digits.size(), number, std::chars_format::fixed);
    to.append(digits.data(), end.ptr);
}

void append_integer(std::string& to, std::int64_t number) {
    std::array<char, 24> digits;
    const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
    to.append(digits.data(), end);
}

std::optional<double> number_from_text(std::string_view text) {
    return whole_text_as<double>(text);
}

std::optional<std::int64_t> integer_from_text(std::string_view text) {
    return whole_text_as<std::int64_t>(text);
}

std::string date_text(double seconds_since_1970) {
    using namespace std::chrono;
    constexpr double largest = 253402300799;   // the last second of the year 9999
    constexpr double smallest = -62167219200;  // the first second of the year 0
    const double bounded = std::isfinite(seconds_since_1970)
                               ? std::fmin(std::fmax(std::floor(seconds_since_1970), smallest), largest)
                               : 0.0;
    const sys_seconds moment{seconds(static_cast<std::int64_t>(bounded))};
    const auto day = floor<days>(moment);
    const year_month_day date(day);
    const hh_mm_ss time(moment - day);
    std::string text;
    const auto part = [&text](std::int64_t number, std::size_t width, char after) {
        const std::string digits = std::to_string(number);
        if (digits.size() < width) text.append(width - digits.size(), '0');
        text += digits;
        text += after;
    };
    part(static_cast<int>(date.year()), 4, '-');
    part(static_cast<unsigned>(date.month()), 2, '-');
    part(static_cast<unsigned>(date.day()), 2, 'T');
    part(time.hours().count(), 2, ':');
    part(time.minutes().count(), 2, ':');
    part(time.seconds().count(), 2, 'Z');
    return text;
}

std::optional<double> date_from_text(std::string_view text) {
    using namespace std::chrono;
    text = without_blanks(text);
    constexpr std::string_view form = "0000-00-00T00:00:00Z";
    if (text.size() != form.size()) return std::nullopt;
    for (std::size_t at = 0; at < form.size(); ++at) {
        const bool digit = text[at] >= '0' && text[at] <= '9';
        if (form[at] == '0' ? !digit : text[at] != form[at]) return std::nullopt;
    }
    const auto number = [&](std::size_t at, std::size_t length) {
        return static_cast<int>(*integer_from_text(text.substr(at, length)));
    };
    const year_month_day date{year(number(0, 4)), month(static_cast<unsigned>(number(5, 2))),
                              day(static_cast<unsigned>(number(8, 2)))};
    if (!date.ok() || number(11, 2) > 23 || number(14, 2) > 59 || number(17, 2) > 60) return std::nullopt;
    const auto day_seconds = duration_cast<seconds>(sys_days(date).time_since_epoch()).count();
    return static_cast<double>(day_seconds + number(11, 2) * 3600 + number(14, 2) * 60 + number(17, 2));
}

std::string base64_text(std::string_view bytes) {
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (std::size_t at = 0; at < bytes.size(); at += 3) {
        const std::size_t count = bytes.size() - at < 3 ? bytes.size() - at : 3;
        unsigned group = 0;
        for (std::size_t k = 0; k < 3; ++k) {
            group = group << 8U | (k < count ? static_cast<unsigned char>(bytes[at + k]) : 0U);
        }
        for (std::size_t k = 0; k < 4; ++k) {
            text += k <= count ? base64_digits[group >> (18U - 6U * k) & 63U] : '=';
        }
    }
    return text;
}

std::optional<std::string> bytes_from_base64(std::string_view text) {
    std::string bytes;
    bytes.reserve(text.size() / 4 * 3);
    unsigned group = 0;
    unsigned bits = 0;
    for (const char digit : text) {
        if (blanks.find(digit) != std::string_view::npos || digit == '=') continue;
        const auto value = base64_digits.find(digit);
        if (value == std::string_view::npos) return std::nullopt;
        group = (group << 6U | static_cast<unsigned>(value)) & 0xFFFFU;
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes += static_cast<char>(group >> bits & 0xFFU);
        }
    }
    return bytes;
}

void append_valid_text(std::string& to, std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = valid_sequence(text);
        if (length == 0) {
            to += "\xEF\xBF\xBD";
            text.remove_prefix(1);
        } else {
            to.append(text, 0, length);
            text.remove_prefix(length);
        }
    }
}

bool is_valid_text(std::string_view text) {
    while (!text.empty()) {
        const std::size_t length = valid_sequence(text);
        if (length == 0) return false;
        text.remove_prefix(length);
    }
    return true;
}

}  // namespace vistels
