// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/formula_builder.h"

#include <algorithm>
#include <vector>

#include "formula/code_points.h"
#include "formula/formula_failures.h"
#include "formula/normalise.h"
#include "formula/parser_ROOT.h"

namespace vistels {

namespace {

token_type type_of(char symbol) {
    if (symbol == '|') return token_type::OR;
    return symbol == '&' ? token_type::AND : token_type::NOT;
}

bool is_operator(const token_ITEM& token) {
    return token.type == token_type::OR || token.type == token_type::AND || token.type == token_type::NOT;
}

// The formula's tokens that were typed, and the characters that each of them takes up: of a word with its
// codes and what stands between.
struct typed_token {
    const token_ITEM* token;
    std::size_t start;
    std::size_t end;
};

std::vector<typed_token> typed_tokens(const parser_ROOT& parsed) {
    const std::size_t shift = parsed.characters_put_in_front();
    std::vector<typed_token> typed;
    for (const auto& token : parsed.ray_token_ITEMs()) {
        if (token.place.length == 0) continue;
        const auto& first = token.identifiers_place.length > 0 ? token.identifiers_place : token.place;
        typed.push_back({&token, first.start - shift, token.place.start + token.place.length - shift});
    }
    return typed;
}

// What stands to either side of the place where a term goes.
struct gap {
    std::size_t caret = 0;
    bool joins_before = false;
    bool joins_behind = false;
};

gap gap_at(const std::vector<typed_token>& tokens, std::size_t caret) {
    gap found{caret};
    for (const auto& one : tokens) {
        if (one.start < found.caret && found.caret < one.end) found.caret = one.end;
    }
    for (const auto& one : tokens) {
        if (one.end <= found.caret) {
            found.joins_before = !is_operator(*one.token) && one.token->type != token_type::BRACKET_LEFT;
        } else {
            found.joins_behind = !is_operator(*one.token) && one.token->type != token_type::BRACKET_RIGHT;
            break;
        }
    }
    return found;
}

std::string joint_before(std::string_view left, bool joins, char symbol) {
    if (joins) return std::string(left.ends_with(' ') ? "" : " ") + symbol + ' ';
    const bool needs_none = left.empty() || left.ends_with(' ') || left.ends_with('(') || left.ends_with('!');
    return needs_none ? "" : " ";
}

std::string joint_behind(std::string_view right, bool joins, char symbol) {
    if (joins) return std::string(" ") + symbol + (right.starts_with(' ') ? "" : " ");
    return right.empty() || right.starts_with(' ') || right.starts_with(')') ? "" : " ";
}

// True when the word at that place reads as the term that was written there.
bool is_read_as(const parser_ROOT& parsed, std::size_t start, const std::string& term,
                const std::string& code) {
    const std::size_t end = start + count_code_points(term) + parsed.characters_put_in_front();
    for (const auto& token : parsed.ray_token_ITEMs()) {
        if (token.type != token_type::WORDS || token.place.start + token.place.length != end) continue;
        return token.ray_word_IDENTIFIERS == std::vector<std::string>{code};
    }
    return false;
}

}  // namespace

result<edited_formula> with_term(std::string_view formula, std::size_t caret, const formula_term& term,
                                 char symbol) {
    const auto written = written_term(term);
    if (!written) return written.error();
    std::string before(formula);
    if (is_plain_search_text(before) && before.find_first_of("[]") == std::string::npos) {
        before = '(' + normalised_for_filter(before).text + ')';
        caret = before.size();
    }
    const auto parsed = parser_ROOT::for_display(before);
    const auto place = gap_at(typed_tokens(parsed), caret);
    const std::size_t at = byte_of_code_point(before, place.caret);
    const std::string left = before.substr(0, at);
    const std::string right = before.substr(at);
    const std::string front = left + joint_before(left, place.joins_before, symbol);
    edited_formula edited{front + written.value() + joint_behind(right, place.joins_behind, symbol) + right,
                          count_code_points(front) + count_code_points(written.value())};
    if (!is_read_as(parser_ROOT::for_display(edited.text), count_code_points(front), written.value(),
                    term.code)) {
        return parsed.parser_Error() ? formula_has_an_error(parsed.parser_Errors())
                                     : caret_is_in_square_brackets();
    }
    return edited;
}

std::string with_operator_replaced(std::string_view formula, char old_symbol, char new_symbol) {
    std::string replaced(formula);
    if (is_plain_search_text(formula)) return replaced;
    const auto parsed = parser_ROOT::for_display(formula);
    std::size_t place = 0;  // character, and the byte at which it begins
    std::size_t at = 0;
    for (const auto& one : typed_tokens(parsed)) {
        for (; place < one.start; ++place) at += code_point_size(replaced, at);
        if (one.token->type != type_of(old_symbol)) continue;
        for (std::size_t n = 0; n < one.end - one.start; ++n) replaced[at + n] = new_symbol;
    }
    return replaced;
}

std::string replace_operator_title(char old_symbol, char new_symbol) {
    return std::string("Replace ") + old_symbol + " with " + new_symbol;
}

bool is_plain_search_text(std::string_view typed) {
    const auto parsed = parser_ROOT::for_display(typed);
    if (parsed.filter_search_string().find_first_of("\"()") != std::string::npos) return false;
    return std::ranges::any_of(parsed.ray_token_ITEMs(),
                               [](const token_ITEM& token) { return token.type == token_type::CHAR; });
}

}  // namespace vistels
