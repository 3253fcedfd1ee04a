// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/filter_program.h"

#include <algorithm>
#include <utility>

namespace vistels {

namespace {

constexpr std::uint32_t none = static_cast<std::uint32_t>(-1);

word_source source_of(std::string_view code) {
    static constexpr std::pair<std::string_view, word_source> codes[] = {
        {"RN", word_source::row_name},       {"RC", word_source::row_category},
        {"QN", word_source::qualifier_name}, {"QC", word_source::qualifier_category},
        {"AN", word_source::attribute_name}, {"AC", word_source::attribute_category},
        {"NT", word_source::note},           {"STAR", word_source::star},
    };
    for (const auto& [text, source] : codes) {
        if (text == code) return source;
    }
    return word_source::nothing;
}

// Two bits: may be true (2), may be false (1).
constexpr std::uint8_t as_bits(verdict value) {
    return static_cast<std::uint8_t>(value);
}

constexpr std::uint8_t may_be_true = as_bits(verdict::yes);
constexpr std::uint8_t may_be_false = as_bits(verdict::no);

constexpr std::uint8_t negated(std::uint8_t value) {
    return static_cast<std::uint8_t>((value & may_be_true) >> 1U | (value & may_be_false) << 1U);
}

constexpr std::uint8_t both(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>((a & b & may_be_true) | ((a | b) & may_be_false));
}

constexpr std::uint8_t either(std::uint8_t a, std::uint8_t b) {
    return static_cast<std::uint8_t>(((a | b) & may_be_true) | (a & b & may_be_false));
}

constexpr std::uint8_t combined(std::uint8_t value, token_type by, std::uint8_t term) {
    if (by == token_type::AND) return both(value, term);
    return by == token_type::NOT ? both(value, negated(term)) : either(value, term);
}

bool is_set(const std::uint64_t* bits, std::uint32_t index) {
    return (bits[index / 64] >> (index % 64) & 1U) != 0;
}

bool is_operator(token_type type) {
    return type == token_type::OR || type == token_type::AND || type == token_type::NOT;
}

}  // namespace

filter_program::filter_program(const parser_ROOT& formula) {
    take_words(formula);
    const auto& tokens = formula.ray_token_ITEMs();
    const auto& nodes = formula.ray_FLAT_copy_of_all_Node_items();
    std::vector<std::uint32_t> word_at(tokens.size(), none);
    for (std::size_t word = 0; word < words_.size(); ++word) {
        word_at[words_[word].token] = static_cast<std::uint32_t>(word);
    }
    std::vector<std::uint32_t> result_of(nodes.size(), none);
    // Parents stand before their children.
    for (std::size_t node = nodes.size(); node-- > 0;) {
        if (!nodes[node].sub_Nodes.empty()) add_group(formula, node, result_of, word_at);
    }
}

void filter_program::take_words(const parser_ROOT& formula) {
    const auto& tokens = formula.ray_token_ITEMs();
    for (std::size_t at = 0; at < tokens.size(); ++at) {
        if (tokens[at].type != token_type::WORDS) continue;
        filter_word word{tokens[at].chars, tokens[at].wild_card_search};
        word.token = at;
        for (const auto& code : tokens[at].ray_word_IDENTIFIERS) {
            // Each code is tested in turn and the last one stays.
            word.decides = source_of(code);
            word.marks_names = word.marks_names || word.decides == word_source::qualifier_name;
            word.marks_categories = word.marks_categories || word.decides == word_source::qualifier_category;
        }
        by_source_[static_cast<std::size_t>(word.decides)].push_back(words_.size());
        words_.push_back(std::move(word));
    }
}

void filter_program::add_group(const parser_ROOT& formula, std::size_t node,
                               std::vector<std::uint32_t>& result_of,
                               const std::vector<std::uint32_t>& word_at) {
    const auto& tokens = formula.ray_token_ITEMs();
    const auto& nodes = formula.ray_FLAT_copy_of_all_Node_items();
    const auto& own = nodes[node];
    const auto& first = nodes[own.sub_Nodes.front()];
    step begin;
    begin.starts_true =
        first.first_token < first.last_token && tokens[first.first_token].type == token_type::NOT;
    steps_.push_back(begin);
    token_type pending = token_type::OR;
    for (const std::size_t child : own.sub_Nodes) {
        if (result_of[child] != none) {
            steps_.push_back({step_kind::group, pending, false, result_of[child]});
            continue;
        }
        // A group without children has no result and is no term.
        if (!nodes[child].is_leaf) continue;
        for (std::size_t at = nodes[child].first_token; at < nodes[child].last_token; ++at) {
            if (is_operator(tokens[at].type)) pending = tokens[at].type;
            if (word_at[at] != none) steps_.push_back({step_kind::word, pending, false, word_at[at]});
        }
    }
    const auto result = static_cast<std::uint32_t>(groups_.size());
    steps_.push_back({step_kind::end, token_type::OR, false, result});
    result_of[node] = result;
    groups_.push_back({node, result});
}

verdict filter_program::run(const std::uint64_t* bits, const std::uint64_t* unknown,
                            std::vector<verdict>& results) const {
    if (groups_.empty()) return verdict::no;
    results.resize(groups_.size());
    std::uint8_t value = may_be_false;
    for (const auto& one : steps_) {
        switch (one.kind) {
            case step_kind::begin:
                value = one.starts_true ? may_be_true : may_be_false;
                break;
            case step_kind::word: {
                std::uint8_t term = is_set(bits, one.index) ? may_be_true : may_be_false;
                if (unknown != nullptr && is_set(unknown, one.index)) term = may_be_true | may_be_false;
                value = combined(value, one.combine, term);
                break;
            }
            case step_kind::group:
                value = combined(value, one.combine, as_bits(results[one.index]));
                break;
            case step_kind::end:
                results[one.index] = static_cast<verdict>(value);
                break;
        }
    }
    // The top node comes last.
    return static_cast<verdict>(value);
}

}  // namespace vistels
