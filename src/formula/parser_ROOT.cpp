// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/parser_ROOT.h"

#include <utility>

#include "formula/formula_failures.h"
#include "formula/star_text.h"
#include "formula/tokenise.h"

namespace vistels {

namespace {

void note_code(const std::string& code, identifier_types_used& used) {
    if (code == "QN") used.QUALIFIER_NAME = true;
    if (code == "QC") used.QUALIFIER_CATEGORY = true;
    if (code == "AN") used.ATTRIBUTE_NAME = true;
    if (code == "AC") used.ATTRIBUTE_CATEGORY = true;
    if (code == "NT") used.NOTE = true;
}

// For each left bracket the place of its right one; the number of tokens when it has none.
std::vector<std::size_t> right_brackets(const std::vector<token_ITEM>& tokens) {
    std::vector<std::size_t> rights(tokens.size(), tokens.size());
    std::vector<std::size_t> open;
    for (std::size_t place = 0; place < tokens.size(); ++place) {
        if (tokens[place].type == token_type::BRACKET_LEFT) open.push_back(place);
        if (tokens[place].type == token_type::BRACKET_RIGHT && !open.empty()) {
            rights[open.back()] = place;
            open.pop_back();
        }
    }
    return rights;
}

}  // namespace

parser_ROOT::parser_ROOT(normalised_formula normalised)
    : filter_search_string_(std::move(normalised.text)),
      put_in_front_(normalised.put_in_front),
      ray_token_ITEMs_(tokenise(filter_search_string_)),
      problems_(check_syntax(filter_search_string_, ray_token_ITEMs_)) {
    note_codes_in_use();
    for (auto& token : ray_token_ITEMs_) {
        if (token.type != token_type::WORDS) continue;
        auto& codes = token.ray_word_IDENTIFIERS;
        if (is_star_text(token.chars)) codes.emplace_back("STAR");
        if (codes.empty()) codes.emplace_back("QN");
    }
}

parser_ROOT parser_ROOT::for_filter(std::string_view text) {
    parser_ROOT parsed(normalised_for_filter(text));
    parsed.build_tree();
    return parsed;
}

parser_ROOT parser_ROOT::for_display(std::string_view text) {
    return parser_ROOT(normalised_for_display(text));
}

failure parser_ROOT::parser_Errors() const {
    failure all;
    for (const auto& problem : problems_) all = all ? several_problems(all, problem.told) : problem.told;
    return all;
}

// Of the codes as they were written: a word without one notes none.
void parser_ROOT::note_codes_in_use() {
    for (const auto& token : ray_token_ITEMs_) {
        for (const auto& code : token.ray_word_IDENTIFIERS) note_code(code, used_);
    }
}

// The flat list is at the same time the queue of nodes that are still to be split.
void parser_ROOT::build_tree() {
    const auto rights = right_brackets(ray_token_ITEMs_);
    node_Item& top = nodes_.emplace_back();
    top.last_token = ray_token_ITEMs_.size();
    for (std::size_t place = 0; place < nodes_.size(); ++place) {
        if (nodes_[place].is_leaf) continue;
        const node_Item group = nodes_[place];
        const std::size_t first_child = nodes_.size();
        for (std::size_t token = group.first_token; token < group.last_token;) {
            node_Item& child = nodes_.emplace_back();
            child.nodel_level_idx0 = group.nodel_level_idx0 + 1;
            child.parent_Node = place;
            child.is_leaf = ray_token_ITEMs_[token].type != token_type::BRACKET_LEFT;
            child.first_token = child.is_leaf ? token : token + 1;
            child.last_token = child.is_leaf ? token + 1 : rights[token];
            token = child.is_leaf ? token + 1 : rights[token] + 1;
        }
        nodes_[place].sub_Nodes = {first_child, nodes_.size()};
    }
    lowest_node_level_ = nodes_.back().nodel_level_idx0;
}

}  // namespace vistels
