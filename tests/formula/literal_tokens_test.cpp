// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "formula/parser_ROOT.h"
#include "support/literal_formula.h"
#include "support/sanitized.h"

namespace vistels {

namespace {

using testing::literal_formula;

std::string joined(const std::vector<std::string>& codes) {
    std::string all;
    for (const auto& code : codes) all += "<" + code + ">";
    return all;
}

std::string described(const parser_ROOT& parsed) {
    std::string text = parsed.filter_search_string() + "\n" + parsed.parser_Errors_String() + "\n";
    for (const auto& token : parsed.ray_token_ITEMs()) {
        text += std::to_string(token.token_idx0_position) + " " + token_type_text(token.type) + " {" +
                token.chars + "} " + joined(token.ray_word_IDENTIFIERS) + " " +
                wild_card_text(token.wild_card_search) + " " + std::to_string(token.place.start) + "+" +
                std::to_string(token.place.length) + "\n";
    }
    for (const auto& node : parsed.ray_FLAT_copy_of_all_Node_items()) {
        text += std::to_string(node.nodel_level_idx0) + "(" + std::to_string(node.sub_Nodes.size()) + ")";
        for (std::size_t token = node.first_token; token < node.last_token; ++token) {
            text += " " + std::to_string(token);
        }
        text += "\n";
    }
    const auto& used = parsed.identifier_Type_used();
    return text + std::to_string(parsed.lowest_node_level()) + " " + std::to_string(used.QUALIFIER_NAME) +
           std::to_string(used.QUALIFIER_CATEGORY) + std::to_string(used.ATTRIBUTE_NAME) +
           std::to_string(used.ATTRIBUTE_CATEGORY) + std::to_string(used.NOTE);
}

std::string described(const literal_formula& formula) {
    std::string text = formula.text + "\n" + formula.errors + "\n";
    for (const auto& token : formula.tokens) {
        text += std::to_string(token.position) + " " + token.type + " {" + token.chars + "} " +
                joined(token.codes) + " " + token.mode + " " + std::to_string(token.start) + "+" +
                std::to_string(token.length) + "\n";
    }
    for (const auto& node : formula.flat) {
        text += std::to_string(node->level) + "(" + std::to_string(node->children.size()) + ")";
        for (const std::size_t token : node->tokens) text += " " + std::to_string(token);
        text += "\n";
    }
    return text + std::to_string(formula.lowest_level) + " " + std::to_string(formula.uses_qn) +
           std::to_string(formula.uses_qc) + std::to_string(formula.uses_an) +
           std::to_string(formula.uses_ac) + std::to_string(formula.uses_nt);
}

}  // namespace

TEST(literal_tokens, equal_those_of_the_passes_one_after_the_other) {
    testing::random_formulas formulas(20);
    const std::vector<std::string> words{"a", "b", "ab", "✭", "✭✭", "", "*", "a || b", "["};
    constexpr int rounds = testing::is_sanitized ? 20'000 : 120'000;
    for (int n = 0; n < rounds; ++n) {
        const std::string text = n % 4 == 0 ? formulas.well_formed(words) : formulas.any();
        ASSERT_EQ(described(parser_ROOT::for_filter(text)), described(literal_formula(text, true))) << text;
        if (n % 3 != 0) continue;
        ASSERT_EQ(described(parser_ROOT::for_display(text)), described(literal_formula(text, false))) << text;
    }
}

}  // namespace vistels
