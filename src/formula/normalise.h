// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vistels {

// A formula's text in the form that is split into tokens.
struct normalised_formula {
    std::string text;
    std::size_t put_in_front = 0;  // characters that were put in front of the typed ones
};

// Both replace typographic double quotes by plain ones, the old code "[RO]" by "[RN]", and ends of lines by
// spaces, and put a space in front of a text that begins with an operator. Any text, any thread.

// As a filter: the line separator U+2028 becomes a space, too, and a text without quotes and round brackets
// is a plain search, written out as a formula that looks for it in the names and categories of qualifiers and
// attributes, in row names and notes; a run of "✭" looks for at least that many stars.
normalised_formula normalised_for_filter(std::string_view typed);
// To be shown: each character stands for the one that was typed.
normalised_formula normalised_for_display(std::string_view typed);

}  // namespace vistels
