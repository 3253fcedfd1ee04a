// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vistels {

// Numbers, dates and bytes as text, the same wherever a file holds them. Never dependent on the locale.

// Appends the shortest decimal text that reads back as the same number ("12", "0.1", "1e+30").
void append_shortest(std::string& to, double number);
// The same without an exponent ("0.0001"), but for numbers beyond 1e15.
void append_shortest_decimal(std::string& to, double number);
void append_integer(std::string& to, std::int64_t number);
// The texts of append_shortest and append_integer, written to `to`, which has room for 32 bytes; their
// length.
std::size_t write_shortest(char* to, double number);
std::size_t write_integer(char* to, std::int64_t number);

// The number that the whole of `text` is, blanks around it aside; nothing otherwise.
std::optional<double> number_from_text(std::string_view text);
std::optional<std::int64_t> integer_from_text(std::string_view text);

// "2026-03-01T14:05:09Z"; fractions of a second are dropped.
std::string date_text(double seconds_since_1970);
std::optional<double> date_from_text(std::string_view text);

std::string base64_text(std::string_view bytes);
// White space is passed over; nothing for any other character that is not base64.
std::optional<std::string> bytes_from_base64(std::string_view text);

// Appends `text`, with every byte sequence that is not UTF-8, and every character that XML 1.0 cannot hold,
// replaced by U+FFFD.
void append_valid_text(std::string& to, std::string_view text);
// True when `text` holds nothing that append_valid_text would replace.
bool is_valid_text(std::string_view text);

}  // namespace vistels
