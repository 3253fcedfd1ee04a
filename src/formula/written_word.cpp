// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <vector>

#include "formula/code_points.h"
#include "formula/formula_builder.h"
#include "formula/formula_failures.h"
#include "formula/star_text.h"

namespace vistels {

namespace {

// One character of a value.
struct letter {
    std::string_view text;
    bool is_writable = true;
};

constexpr std::string_view star_code = "STAR";

constexpr std::string_view never_in_a_word[] = {"\"", "\u201C", "\u201D", "\r", "\n", "\u2028"};

std::vector<letter> letters_of(std::string_view value) {
    std::vector<letter> letters;
    while (!value.empty()) {
        const auto text = value.substr(0, code_point_size(value, 0));
        const bool is_writable = std::ranges::find(never_in_a_word, text) == std::end(never_in_a_word);
        letters.push_back({text, is_writable});
        value.remove_prefix(text.size());
    }
    return letters;
}

// Brackets count in words, too: one without its partner would be an error of the formula.
void rule_out_stray_brackets(std::vector<letter>& letters, std::string_view left, std::string_view right) {
    std::vector<std::size_t> open;
    for (std::size_t place = 0; place < letters.size(); ++place) {
        if (letters[place].text == left) open.push_back(place);
        if (letters[place].text != right) continue;
        if (open.empty()) {
            letters[place].is_writable = false;
        } else {
            open.pop_back();
        }
    }
    for (const std::size_t place : open) letters[place].is_writable = false;
}

}  // namespace

result<std::string> written_word(std::string_view value) {
    auto letters = letters_of(value);
    rule_out_stray_brackets(letters, "(", ")");
    rule_out_stray_brackets(letters, "[", "]");
    const auto is_writable = [](const letter& one) { return one.is_writable; };
    const auto first = std::find_if(letters.begin(), letters.end(), is_writable);
    const auto last = std::find_if(letters.rbegin(), letters.rend(), is_writable).base();
    if (first == letters.end()) return word_cannot_be_written(value, word_has_no_plain_character());
    if (const auto odd = std::find_if_not(first, last, is_writable); odd != last) {
        return word_cannot_be_written(value, character_cannot_be_quoted(odd->text));
    }
    std::string word;
    for (auto one = first; one != last; ++one) word += one->text;
    for (const char* mistaken : {" || ", " && ", " !! ", "[RO]"}) {
        if (word.find(mistaken) == std::string::npos) continue;
        return word_cannot_be_written(value, text_has_a_meaning(mistaken));
    }
    // One star at each end says how the word is compared.
    const bool open_before = first != letters.begin() || word.starts_with('*');
    const bool open_behind = last != letters.end() || word.ends_with('*');
    if (open_before) word.insert(word.begin(), '*');
    if (open_behind) word += '*';
    return '"' + word + '"';
}

result<std::string> written_term(const formula_term& term) {
    if (term.code == star_code) {
        if (is_star_text(term.value)) return '"' + term.value + '"';
        return word_cannot_be_written(term.value, value_is_no_rating());
    }
    if (is_star_text(term.value)) return word_cannot_be_written(term.value, value_counts_as_rating());
    auto word = written_word(term.value);
    if (!word) return word;
    return '[' + term.code + ']' + word.value();
}

}  // namespace vistels
