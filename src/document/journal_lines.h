// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "document/change_journal.h"
#include "util/property_value.h"

namespace vistels {

// A segment is lines of "checksum blank document newline", the document being one of
//   {"base": {...}}             first line, and again before a save: what the journal continues
//   {"number": n, "edit": {...}}
//   {"time": seconds}
// A line whose checksum is wrong was torn and is passed over; the numbers tell whether one is missing.
std::string line_of(const property_dictionary& document);

// The document in a line without its newline, and its checksum; null when the line is torn.
property_value read_line(std::string_view line, std::uint64_t& sum);

property_dictionary write_base(const journal_base& base);
std::optional<journal_base> read_base(const property_dictionary& document, const recorded_form& form);

inline constexpr int highest_segment = 1'000'000'000;

// The number in a segment's file name; 0 for other files.
int segment_number(const std::string& name, const recorded_form& form);

}  // namespace vistels
