// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "util/failure.h"

namespace vistels {

// What a token of a formula is. EMPTY ones were consumed by others and are never in a finished list.
enum class token_type { CHAR, WORDS, IDENTIFIERS, OR, AND, NOT, BRACKET_LEFT, BRACKET_RIGHT, EMPTY };
const char* token_type_text(token_type type);  // "CHAR" and so on

// How a word is compared with a value.
enum class wild_card { MATCH_ALL, MATCH_PREFIX, MATCH_SUFFIX, MATCH_ANYWHERE };
const char* wild_card_text(wild_card mode);  // "MATCH_ALL" and so on

// A piece of a text: characters are Unicode code points, counted from 0.
struct text_span {
    std::size_t start = 0;
    std::size_t length = 0;

    bool operator==(const text_span&) const = default;
};

// Something that is wrong in a formula, and where: code points of the normalised text.
struct formula_problem {
    failure told;
    std::vector<text_span> places;
};

// One token of a formula. A plain value, for one thread at a time.
struct token_ITEM {
    token_type type = token_type::CHAR;
    // A word's text is that between its quotes, without the stars that became its match mode.
    // That of an operator is the first character of its spelling; empty for the operator put in front.
    std::string chars;
    int token_idx0_position = -1;                   // in the finished list; -1 until it is numbered
    int FLAG_Word_as_present = 0;                   // of a word: 1 matched the clip, -1 did not, 0 not looked
    std::vector<std::string> ray_word_IDENTIFIERS;  // of a word: "RN", "QN" ... in the order written
    wild_card wild_card_search = wild_card::MATCH_ALL;

    // Where it stands in the normalised text: of a word with its quotes, of an operator all of its spelling.
    // Empty for the operator that is put in front.
    text_span place;
    // Of a word: its group of identifiers in square brackets; empty when none was written.
    text_span identifiers_place;
};

}  // namespace vistels
