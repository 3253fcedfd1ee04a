// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>

#include "formula/code_points.h"
#include "formula/formula_failures.h"
#include "formula/tokenise.h"

namespace vistels {

namespace {

constexpr std::size_t npos = std::string_view::npos;

// How the brackets of one kind are paired, with those in quotes.
struct bracket_balance {
    std::size_t opened = 0;
    std::size_t closed = 0;
    bool is_out_of_order = false;

    bool is_balanced() const { return opened == closed; }
    bool is_well() const { return is_balanced() && !is_out_of_order; }
};

bracket_balance balance_of(std::string_view text, char left, char right) {
    bracket_balance balance;
    for (const char letter : text) {
        if (letter == left) ++balance.opened;
        if (letter == right) ++balance.closed;
        if (balance.closed > balance.opened) balance.is_out_of_order = true;
    }
    return balance;
}

struct bracket {
    std::size_t place;  // character
    bool opens;
    bool is_quoted;
};

std::vector<bracket> brackets_in(std::string_view text, char left, char right) {
    std::vector<bracket> brackets;
    const std::size_t unpaired = unpaired_quote(text);
    bool is_quoted = false;
    std::size_t place = 0;
    for (std::size_t at = 0; at < text.size(); at += code_point_size(text, at), ++place) {
        if (text[at] == '"' && at != unpaired) is_quoted = !is_quoted;
        if (text[at] == left || text[at] == right) brackets.push_back({place, text[at] == left, is_quoted});
    }
    return brackets;
}

// Takes away each pair of those that `may_pair` lets.
template <class May>
std::vector<bracket> without_pairs(const std::vector<bracket>& brackets, May may_pair) {
    std::vector<bool> paired(brackets.size());
    std::vector<std::size_t> open;
    for (std::size_t index = 0; index < brackets.size(); ++index) {
        if (!may_pair(brackets[index])) continue;
        if (brackets[index].opens) {
            open.push_back(index);
        } else if (!open.empty()) {
            paired[open.back()] = paired[index] = true;
            open.pop_back();
        }
    }
    std::vector<bracket> left;
    for (std::size_t index = 0; index < brackets.size(); ++index) {
        if (!paired[index]) left.push_back(brackets[index]);
    }
    return left;
}

// The brackets to blame: those that have no partner. Brackets outside quotes are paired among themselves
// first, since one inside a word is more likely the stray one.
std::vector<bracket> unpaired_brackets(std::string_view text, char left, char right) {
    const auto outside_done =
        without_pairs(brackets_in(text, left, right), [](const bracket& one) { return !one.is_quoted; });
    return without_pairs(outside_done, [](const bracket&) { return true; });
}

std::vector<text_span> places_of(const std::vector<bracket>& brackets, bool opens) {
    std::vector<text_span> places;
    for (const auto& one : brackets) {
        if (one.opens == opens) places.push_back({one.place, 1});
    }
    return places;
}

// A span that begins where the one before it ends is one with it.
void add_place(std::vector<text_span>& places, const text_span& place) {
    if (place.length == 0) return;
    if (!places.empty() && places.back().start + places.back().length == place.start) {
        places.back().length += place.length;
    } else {
        places.push_back(place);
    }
}

void check_quotes(std::string_view text, std::vector<formula_problem>& problems) {
    const std::size_t unpaired = unpaired_quote(text);
    if (unpaired == npos) return;
    problems.push_back({quotation_marks_are_odd(), {{count_code_points(text.substr(0, unpaired)), 1}}});
}

void check_brackets(std::string_view text, std::vector<formula_problem>& problems) {
    const auto round = balance_of(text, '(', ')');
    const auto square = balance_of(text, '[', ']');
    const auto stray_round = round.is_well() ? std::vector<bracket>() : unpaired_brackets(text, '(', ')');
    const auto stray_square = square.is_well() ? std::vector<bracket>() : unpaired_brackets(text, '[', ']');
    if (!round.is_balanced()) {
        problems.push_back({brackets_are_unbalanced(), places_of(stray_round, round.opened > round.closed)});
    }
    if (!square.is_balanced()) {
        problems.push_back(
            {square_brackets_are_unbalanced(), places_of(stray_square, square.opened > square.closed)});
    }
    if (round.is_out_of_order)
        problems.push_back({brackets_are_out_of_order(), places_of(stray_round, false)});
    if (square.is_out_of_order) {
        problems.push_back({square_brackets_are_out_of_order(), places_of(stray_square, false)});
    }
}

bool holds_operator(const token_ITEM& word) {
    return word.chars.find(" || ") != std::string::npos || word.chars.find(" && ") != std::string::npos ||
           word.chars.find(" !! ") != std::string::npos;
}

void check_tokens(const std::vector<token_ITEM>& tokens, std::vector<formula_problem>& problems) {
    std::vector<text_span> invalid;
    std::vector<text_span> with_operators;
    std::vector<text_span> unrecognised;
    for (const auto& token : tokens) {
        if (token.type == token_type::CHAR) add_place(unrecognised, token.place);
        if (token.type != token_type::WORDS) continue;
        if (!is_valid_word(token)) {
            add_place(invalid, token.identifiers_place);
            add_place(invalid, token.place);
        }
        if (holds_operator(token)) add_place(with_operators, token.place);
    }
    if (!invalid.empty()) problems.push_back({identifier_is_invalid(), std::move(invalid)});
    if (!with_operators.empty()) problems.push_back({operator_stands_in_a_word(), std::move(with_operators)});
    if (!unrecognised.empty()) problems.push_back({character_is_unrecognised(), std::move(unrecognised)});
}

}  // namespace

std::vector<formula_problem> check_syntax(std::string_view normalised,
                                          const std::vector<token_ITEM>& tokens) {
    std::vector<formula_problem> problems;
    check_quotes(normalised, problems);
    check_brackets(normalised, problems);
    check_tokens(tokens, problems);
    return problems;
}

}  // namespace vistels
