// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "formula/parser_ROOT.h"

namespace vistels {

namespace {

// "OR {} | WORDS {kick} RN,QN MATCH_PREFIX": operators and brackets as their kind alone.
std::string tokens_text(const parser_ROOT& parsed) {
    std::string all;
    for (const auto& token : parsed.ray_token_ITEMs()) {
        if (!all.empty()) all += ' ';
        if (token.type == token_type::WORDS) {
            for (const auto& code : token.ray_word_IDENTIFIERS) {
                all += code + (&code == &token.ray_word_IDENTIFIERS.back() ? ":" : ",");
            }
            all += token.chars;
            all += std::string("/") + (wild_card_text(token.wild_card_search) + 6);
        } else if (token.type == token_type::CHAR) {
            all += "<" + token.chars + ">";
        } else {
            all += token_type_text(token.type);
        }
    }
    return all;
}

std::string places_text(const parser_ROOT& parsed) {
    std::string all;
    for (const auto& problem : parsed.problems()) {
        if (!all.empty()) all += "; ";
        all += problem.told.message();
        for (const auto& place : problem.places) {
            all += " " + std::to_string(place.start) + "+" + std::to_string(place.length);
        }
    }
    return all;
}

// Groups as brackets, leaves by the number of their token.
std::string tree_text(const parser_ROOT& parsed, std::size_t node = 0) {
    const auto& one = parsed.ray_FLAT_copy_of_all_Node_items()[node];
    if (one.is_leaf) return std::to_string(one.first_token);
    std::string all = "(";
    for (const std::size_t child : one.sub_Nodes) {
        if (all.size() > 1) all += ' ';
        EXPECT_EQ(parsed.ray_FLAT_copy_of_all_Node_items()[child].parent_Node, node);
        all += tree_text(parsed, child);
    }
    return all + ")";
}

}  // namespace

TEST(normalisation, filter_and_display_forms) {
    const struct {
        const char* typed;
        const char* filter;
        const char* display;
    } cases[] = {
        {"", "", ""},
        {"Goal",
         "[QN]\"*Goal*\" | [QC]\"*Goal*\" | [AC]\"*Goal*\" | [AN]\"*Goal*\" | [RN]\"*Goal*\" | "
         "[NT]\"*Goal*\"",
         "Goal"},
        {"*a b*",
         "[QN]\"*a b*\" | [QC]\"*a b*\" | [AC]\"*a b*\" | [AN]\"*a b*\" | [RN]\"*a b*\" | [NT]\"*a b*\"",
         "*a b*"},
        {"!a", "[QN]\"*!a*\" | [QC]\"*!a*\" | [AC]\"*!a*\" | [AN]\"*!a*\" | [RN]\"*!a*\" | [NT]\"*!a*\"",
         " !a"},
        {" ", "\"*\"", " "},
        {"**", "\"*\"", "**"},
        {" ✭ ✭*", "\"✭✭*\"", " ✭ ✭*"},
        {"\u201Ca\u201D", "\"a\"", "\"a\""},
        {"[RO]\"[RO]\"", "[RN]\"[RN]\"", "[RN]\"[RN]\""},
        {"\"a\r\nb\u2028c\"", "\"a  b c\"", "\"a  b\u2028c\""},
        {"!\"a\"", " !\"a\"", " !\"a\""},
        {"&()", " &()", " &()"},
        {"\n|\"a\"", " |\"a\"", " |\"a\""},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(parser_ROOT::for_filter(one.typed).filter_search_string(), one.filter) << one.typed;
        EXPECT_EQ(parser_ROOT::for_display(one.typed).filter_search_string(), one.display) << one.typed;
    }
    EXPECT_EQ(parser_ROOT::for_display("!a").characters_put_in_front(), 1U);
    EXPECT_EQ(parser_ROOT::for_display(" !a").characters_put_in_front(), 0U);
}

TEST(tokens, of_display_texts) {
    const struct {
        const char* text;
        const char* tokens;
    } cases[] = {
        {"", "OR"},
        {"Goal", "OR <G> <o> <a> <l>"},
        {"\"a\" \"b\"", "OR QN:a/ALL QN:b/ALL"},
        {"[RN,QN]\"kick*\"", "OR RN,QN:kick/PREFIX"},
        {"[ A N , A C ]\"*x\"", "OR AN,AC:x/SUFFIX"},
        {"\"*\" \"**\" \"***\" \"*a*\" \"\"",
         "OR QN:/PREFIX QN:/ANYWHERE QN:*/ANYWHERE QN:a/ANYWHERE QN:/ALL"},
        {"\"a\"||\"b\"|\"c\"&&\"d\"!!!\"e\"",
         "OR QN:a/ALL OR QN:b/ALL OR QN:c/ALL AND QN:d/ALL NOT NOT QN:e/ALL"},
        {"!\"a\"", "OR NOT QN:a/ALL"},
        {"(!\"a\")", "OR BRACKET_LEFT NOT QN:a/ALL BRACKET_RIGHT"},
        {"\"a|b(c[d\"", "OR QN:a|b(c[d/ALL"},
        {"|\"|\"", "OR OR QN:|/ALL"},
        {"[RN][QC](\"a\" \"b\")", "OR BRACKET_LEFT QC:a/ALL QN:b/ALL BRACKET_RIGHT"},
        {"[RN]&\"a\"[NT]", "OR AND RN:a/ALL"},
        {"[\"b\"]\"a\"", "OR \"b\":a/ALL"},
        {"[Q(N]\"a\"", "OR Q(N:a/ALL"},
        {"[]\"a\" [RN,]\"b\"", "OR :a/ALL RN,:b/ALL"},
        {"[a[RN]\"b\"]", "OR a[RN:b/ALL <]>"},
        {"\"✭✭*\" [QC]\"✭\" \"✭a\"", "OR STAR:✭✭/PREFIX QC,STAR:✭/ALL QN:✭a/ALL"},
        {"\"a\"\t\"b", "OR QN:a/ALL <\t> <\"> <b>"},
        {"\xE2\x80\"é\"\xC3\"", "OR <\xE2> <\x80> QN:é/ALL <\xC3> <\">"},
        {")a(", "OR BRACKET_RIGHT <a> BRACKET_LEFT"},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(tokens_text(parser_ROOT::for_display(one.text)), one.tokens) << one.text;
    }
}

TEST(tokens, problems_come_in_order_with_their_places) {
    const struct {
        const char* text;
        const char* problems;
    } cases[] = {
        {"\"a\" | \"b\"", ""},
        {"\"a\" \"b", "Quotation marks 4+1; Unrecognised character 4+2"},
        {")(", "Brackets out of order 0+1"},
        {"(\"a\" & (\"b\")", "Unbalanced brackets 0+1"},
        {"\"a(\" & (\"b\")", "Unbalanced brackets 2+1"},
        {"(\"a)\")", "Unbalanced brackets 3+1; Brackets out of order 3+1"},
        {"\"(\" \")\"", ""},
        {"[[RN]\"a\"", "Unbalanced square brackets 0+1; Invalid identifier 0+8"},
        {"\"a\"][", "Square brackets out of order 3+1; Unrecognised character 3+2"},
        {"!\"a\" [XX]\"é\" [RN,STAR] \"b\"", "Invalid identifier 6+7 14+9 24+3"},
        {"[XX]", ""},
        {"\"a || b\" \"a||b\" \" !! *\"", "Operator inside a word 0+8 16+7"},
        {"\"a\" xy z", "Unrecognised character 4+2 7+1"},
        {"*\"a\"\t\u2028", "Unrecognised character 0+1 4+2"},
        {")(( ][[ [Q]\"a || b\" x \"",
         "Quotation marks 22+1; Unbalanced brackets 1+1 2+1; Unbalanced square brackets 5+1 6+1; "
         "Brackets out of order 0+1; Square brackets out of order 4+1; Invalid identifier 5+14; "
         "Operator inside a word 11+8; Unrecognised character 4+1 20+1 22+1"},
    };
    for (const auto& one : cases) {
        const auto parsed = parser_ROOT::for_display(one.text);
        EXPECT_EQ(places_text(parsed), one.problems) << one.text;
        EXPECT_EQ(parsed.parser_Error(), !std::string(one.problems).empty());
    }
}

TEST(tokens, codes_in_use_are_the_typed_ones) {
    const auto flags = [](const char* text) {
        const auto used = parser_ROOT::for_filter(text).identifier_Type_used();
        return std::string(used.QUALIFIER_NAME ? "QN " : "") + (used.QUALIFIER_CATEGORY ? "QC " : "") +
               (used.ATTRIBUTE_NAME ? "AN " : "") + (used.ATTRIBUTE_CATEGORY ? "AC " : "") +
               (used.NOTE ? "NT" : "");
    };
    EXPECT_EQ(flags("\"a\" [RN]\"b\""), "");
    EXPECT_EQ(flags("[QN,NT]\"a\" | [AC]\"\""), "QN AC NT");
    EXPECT_EQ(flags("Goal"), "QN QC AN AC NT");
    EXPECT_EQ(flags("[QC]"), "QN QC AN AC NT");  // a plain search
    EXPECT_EQ(flags("\"\"[QC]"), "");
}

TEST(tree, of_brackets) {
    const struct {
        const char* text;
        const char* tree;
        int lowest_level;
    } cases[] = {
        {"", "(0)", 0},
        {"\"a\" & (\"b\" | \"c\")", "(0 1 2 (4 5 6))", 1},
        {"((\"a\"))()", "(0 ((3)) ())", 2},
        {"\"a\" ( \"b\" ( \"c\"", "(0 1 (3 (5)))", 2},
        {") (\"a\"", "(0 1 (3))", 1},
        {"(\"a\") \"b\" (\"c\" !(\"d\") \"e\")", "(0 (2) 4 (6 7 (9) 11))", 2},
    };
    for (const auto& one : cases) {
        const auto parsed = parser_ROOT::for_filter(one.text);
        EXPECT_EQ(tree_text(parsed), one.tree) << one.text;
        EXPECT_EQ(parsed.lowest_node_level(), one.lowest_level) << one.text;
    }
    const auto shown = parser_ROOT::for_display("(\"a\")");
    EXPECT_TRUE(shown.ray_FLAT_copy_of_all_Node_items().empty());
    EXPECT_EQ(shown.lowest_node_level(), -1);
}

// What would take quadratic time or a deep stack would not come back from these.
TEST(tree, of_very_long_texts) {
    const auto nested = parser_ROOT::for_filter(std::string(100'000, '(') + std::string(100'000, ')'));
    EXPECT_EQ(nested.lowest_node_level(), 99'999);
    EXPECT_FALSE(nested.parser_Error());
    for (const char* piece :
         {"(", ")", "[", "]", "\"", "[\"]", "[,", "!", "a", "\xE2\x80", "(\"a\" ! ", "[RN]\"x\""}) {
        std::string text;
        while (text.size() < 300'000) text += piece;
        const auto parsed = parser_ROOT::for_filter(text);
        EXPECT_GE(parsed.ray_token_ITEMs().size(), 1U);
        EXPECT_EQ(parsed.ray_FLAT_copy_of_all_Node_items().back().nodel_level_idx0,
                  parsed.lowest_node_level());
    }
}

}  // namespace vistels
