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
constexpr std::size_t number_bytes = 32;     // room for any number in its shortest form
constexpr double first_date = -62167219200;  // the first second of the year 0
constexpr double last_date = 253402300799;   // the last second of the year 9999
constexpr std::string_view blanks = " \t\r\n";

std::string_view without_blanks(std::string_view text) {
    const auto first = text.find_first_not_of(blanks);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// The digits of base64 by their character; -1 for what is none, -2 for what is passed over.
constexpr std::array<std::int8_t, 256> base64_values = [] {
    std::array<std::int8_t, 256> values{};
    values.fill(-1);
    for (const char passed : {' ', '\t', '\r', '\n', '='}) values[static_cast<unsigned char>(passed)] = -2;
    for (std::size_t value = 0; value < base64_digits.size(); ++value) {
        values[static_cast<unsigned char>(base64_digits[value])] = static_cast<std::int8_t>(value);
    }
    return values;
}();

// A decimal with so few digits that they, and the power of ten that they are divided by, are doubles exactly:
// then the quotient is the double nearest to it. Nothing for all others, be they numbers or not.
std::optional<double> short_decimal(std::string_view text) {
    constexpr std::size_t most_characters = 18;  // of which at most 18 digits, far from overflow
    constexpr std::uint64_t largest_exact = std::uint64_t{1} << 53U;
    constexpr std::array<double, 19> powers{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8, 1e9,
                                            1e10, 1e11, 1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18};
    const bool negative = text.starts_with('-');
    if (negative) text.remove_prefix(1);
    if (text.empty() || text.size() > most_characters) return std::nullopt;
    std::uint64_t digits = 0;
    std::size_t decimals = 0;
    const char* const end = text.data() + text.size();
    const char* at = text.data();
    const auto take_digits = [&] {
        const char* const first = at;
        for (; at != end && *at >= '0' && *at <= '9'; ++at)
            digits = digits * 10 + static_cast<unsigned>(*at - '0');
        return static_cast<std::size_t>(at - first);
    };
    if (take_digits() == 0) return std::nullopt;
    if (at != end && *at == '.') {
        ++at;
        decimals = take_digits();
    }
    if (at != end || digits > largest_exact) return std::nullopt;
    const double number = static_cast<double>(digits) / powers[decimals];
    return negative ? -number : number;
}

// Writes a number that is a decimal of few digits, quicker than to_chars and the same; its length, or 0 for
// other numbers. A decimal of at most 15 digits is the only one so short that reads as its double, so once
// the zeros at its end are gone it is the shortest; and with a fraction, from 0.001 on, it is no longer than
// with an exponent.
std::size_t write_short_decimal(char* to, double number) {
    constexpr double scale = 1e8;
    constexpr std::size_t decimals = 8;
    constexpr double most_digits = 1e15;
    constexpr double least = 0.001;
    const double scaled = std::abs(number) * scale;
    if (!(scaled < most_digits && scaled >= least * scale)) return 0;
    const auto digits = static_cast<std::uint64_t>(scaled + 0.5);
    if (static_cast<double>(digits) / scale != std::abs(number)) return 0;
    auto fraction = static_cast<std::uint32_t>(digits % 100000000);
    if (fraction == 0) return 0;
    char* at = to;
    if (number < 0) *at++ = '-';
    at = std::to_chars(at, at + number_bytes, digits / 100000000).ptr;
    *at++ = '.';
    std::size_t count = decimals;
    for (; fraction % 10 == 0; fraction /= 10) --count;
    for (std::size_t place = count; place > 0; fraction /= 10)
        at[--place] = static_cast<char>('0' + fraction % 10);
    return static_cast<std::size_t>(at - to) + count;
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

std::size_t write_shortest(char* to, double number) {
    if (const auto size = write_short_decimal(to, number)) return size;
    return static_cast<std::size_t>(std::to_chars(to, to + number_bytes, number).ptr - to);
}

std::size_t write_integer(char* to, std::int64_t number) {
    return static_cast<std::size_t>(std::to_chars(to, to + number_bytes, number).ptr - to);
}

void append_shortest(std::string& to, double number) {
    std::array<char, number_bytes> digits;
    to.append(digits.data(), write_shortest(digits.data(), number));
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
    std::array<char, number_bytes> digits;
    to.append(digits.data(), write_integer(digits.data(), number));
}

std::optional<double> number_from_text(std::string_view text) {
    if (const auto number = short_decimal(text)) return number;
    return whole_text_as<double>(text);
}

std::optional<std::int64_t> integer_from_text(std::string_view text) {
    return whole_text_as<std::int64_t>(text);
}

std::string date_text(double seconds_since_1970) {
    using namespace std::chrono;
    const double bounded = std::isfinite(seconds_since_1970)
                               ? std::fmin(std::fmax(std::floor(seconds_since_1970), first_date), last_date)
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
    const auto seconds_of_day = number(11, 2) * 3600 + number(14, 2) * 60 + number(17, 2);
    return std::fmin(static_cast<double>(day_seconds + seconds_of_day), last_date);  // with a leap second
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
    std::string bytes(text.size() / 4 * 3 + 3, '\0');
    std::size_t count = 0;
    unsigned group = 0;
    unsigned bits = 0;
    for (const char digit : text) {
        const int value = base64_values[static_cast<unsigned char>(digit)];
        if (value < 0) {
            if (value == -1) return std::nullopt;
            continue;
        }
        group = (group << 6U | static_cast<unsigned>(value)) & 0xFFFFU;
        bits += 6;
        if (bits >= 8) {
            bits -= 8;
            bytes[count++] = static_cast<char>(group >> bits & 0xFFU);
        }
    }
    bytes.resize(count);
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
