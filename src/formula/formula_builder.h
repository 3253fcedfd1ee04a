// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "util/result.h"

namespace vistels {

// Pure functions on the text of a formula as it is typed, for menus that put it together. Carets are in
// characters (code points); one beyond the end counts as the end. Any thread.

struct edited_formula {
    std::string text;
    std::size_t caret = 0;
    bool operator==(const edited_formula&) const = default;
};

// A value that a clip has to have.
struct formula_term {
    std::string code;   // "RN", "QN" ...; "STAR": `value` is the stars of the rating
    std::string value;  // exactly as the clip has it
};

// The value between quotes, in such a way that the word matches it. What no word can hold (quotes, ends of
// lines, brackets without their partner) is stood for by a star at either end, and so is a star that is part
// of the value; the word may then match further values. A failure says why a value cannot be written: because
// something of that kind stands in its midst, because it would count as an operator or as a rating, or
// because nothing would be left.
result<std::string> written_word(std::string_view value);
// The same with the code in front, as in `[RN]"row 1"`.
result<std::string> written_term(const formula_term& term);

// The formula with a further term at the caret, or behind the word in which the caret is. It is joined to the
// terms beside it by `symbol` ("&", "|" or "!"), unless an operator is there already; to an empty formula
// nothing is joined. A plain search text is first written out as the formula that it stands for, and the term
// put behind. The caret comes to stand behind the term. A failure says why the term cannot be written or the
// formula take it up.
result<edited_formula> with_term(std::string_view formula, std::size_t caret, const formula_term& term,
                                 char symbol);

// The formula with one operator in the place of another, double ones too, but for what stands in quotes. A
// plain search text has no operators.
std::string with_operator_replaced(std::string_view formula, char old_symbol, char new_symbol);

// "Replace & with |"
std::string replace_operator_title(char old_symbol, char new_symbol);

// True for a text that is searched for as it stands, not read as a formula. Not for one of operators,
// brackets and blanks alone, from which a formula can still be made.
bool is_plain_search_text(std::string_view typed);

}  // namespace vistels
