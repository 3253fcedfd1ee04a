// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

// What is wrong with a formula.
inline constexpr failure_of<> quotation_marks_are_odd{"quotation marks are odd", "Quotation marks"};
inline constexpr failure_of<> brackets_are_unbalanced{"brackets are unbalanced", "Unbalanced brackets"};
inline constexpr failure_of<> square_brackets_are_unbalanced{"square brackets are unbalanced",
                                                             "Unbalanced square brackets"};
inline constexpr failure_of<> brackets_are_out_of_order{"brackets are out of order", "Brackets out of order"};
inline constexpr failure_of<> square_brackets_are_out_of_order{"square brackets are out of order",
                                                               "Square brackets out of order"};
inline constexpr failure_of<> identifier_is_invalid{"identifier is invalid", "Invalid identifier"};
inline constexpr failure_of<> operator_stands_in_a_word{"operator stands in a word",
                                                        "Operator inside a word"};
inline constexpr failure_of<> character_is_unrecognised{"character is unrecognised",
                                                        "Unrecognised character"};
inline constexpr failure_of<a_cause, a_cause> several_problems{"several problems", "%1, %2"};

// Why a word cannot stand in a formula; the first, of the others.
inline constexpr failure_of<a_text, a_cause> word_cannot_be_written{
    "word cannot be written", "\"%1\" cannot be written in a formula: %2."};
inline constexpr failure_of<> word_has_no_plain_character{"word has no plain character",
                                                          "no character of it can stand in quotes"};
inline constexpr failure_of<a_text> character_cannot_be_quoted{"character cannot be quoted",
                                                               "\"%1\" cannot stand in quotes there"};
inline constexpr failure_of<a_text> text_has_a_meaning{"text has a meaning",
                                                       "\"%1\" has a meaning of its own"};
inline constexpr failure_of<> value_is_no_rating{"value is no rating", "it is no rating"};
inline constexpr failure_of<> value_counts_as_rating{"value counts as rating", "it would count as a rating"};

// Why nothing can be added to a formula.
inline constexpr failure_of<a_cause> formula_has_an_error{
    "formula has an error", "Nothing can be added while the formula has an error: %1."};
inline constexpr failure_of<> caret_is_in_square_brackets{"caret is in square brackets",
                                                          "Nothing can be added inside square brackets."};

}  // namespace vistels
