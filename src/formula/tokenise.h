// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "formula/token_ITEM.h"

namespace vistels {

// The tokens of a normalised formula, numbered. What cannot be read is a CHAR token; words have the codes
// that were written for them and no others. An OR token comes first, unless the text begins with an operator.
// Any text, in time linear in its length. Any thread.
std::vector<token_ITEM> tokenise(std::string_view normalised);

// What is wrong with that formula, in a fixed order, each thing once. `tokens` are those of the same text.
std::vector<formula_problem> check_syntax(std::string_view normalised, const std::vector<token_ITEM>& tokens);

// True when every code of the word is one that may be written.
bool is_valid_word(const token_ITEM& word);

// The quote that has no other one, as a byte of the text; npos when the quotes are in pairs.
std::size_t unpaired_quote(std::string_view normalised);

}  // namespace vistels
