// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/formula_builder.h"

#include <gtest/gtest.h>

#include "formula/parser_ROOT.h"
#include "support/caret_text.h"
#include "support/literal_formula.h"

namespace vistels {

using testing::at_caret;
using testing::marked;

TEST(formula_builder, terms_are_joined_to_what_stands_beside_them) {
    const struct {
        const char* before;
        char symbol;
        const char* after;
    } cases[] = {
        {"^", '&', "[RN]\"x\"^"},
        {"  ^", '&', "  [RN]\"x\"^"},
        {"\"é\"^", '&', "\"é\" & [RN]\"x\"^"},
        {"\"a\" ^", '!', "\"a\" ! [RN]\"x\"^"},
        {"\"a\" | ^", '&', "\"a\" | [RN]\"x\"^"},
        {"\"a\" |^", '&', "\"a\" | [RN]\"x\"^"},
        {"^\"b\"", '|', "[RN]\"x\"^ | \"b\""},
        {"[Q^N] \"é\" & \"b\"", '|', "[QN] \"é\" | [RN]\"x\"^ & \"b\""},
        {"\"a\" & ^\"b\"", '|', "\"a\" & [RN]\"x\"^ | \"b\""},
        {"(^)", '|', "([RN]\"x\"^)"},
        {"(\"a\"^)", '|', "(\"a\" | [RN]\"x\"^)"},
        {"(\"a\")^(\"b\")", '|', "(\"a\") | [RN]\"x\"^ | (\"b\")"},
        {"^!\"b\"", '&', "[RN]\"x\"^ !\"b\""},
        {"!^", '&', "![RN]\"x\"^"},
        {"\"a\" &^&", '|', "\"a\" && [RN]\"x\"^"},
        {"\u201Ca\u201D^", '&', "\u201Ca\u201D & [RN]\"x\"^"},
        {"Go^al", '&',
         "([QN]\"*Goal*\" | [QC]\"*Goal*\" | [AC]\"*Goal*\" | [AN]\"*Goal*\" | [RN]\"*Goal*\" | "
         "[NT]\"*Goal*\") & [RN]\"x\"^"},
        {"✭✭^", '&', "(\"✭✭*\") & [RN]\"x\"^"},
    };
    for (const auto& one : cases) {
        const auto before = at_caret(one.before);
        const auto after = with_term(before.text, before.caret, {"RN", "x"}, one.symbol);
        ASSERT_TRUE(after) << one.before << after.message();
        EXPECT_EQ(marked(after.value()), one.after) << one.before;
    }
    EXPECT_EQ(with_term("\"a\"", 99, {"STAR", "✭✭"}, '&').value().text, "\"a\" & \"✭✭\"");
    EXPECT_EQ(with_term("\"a\" [RN]", 5, {"RN", "x"}, '&').message(),
              "Nothing can be added inside square brackets.");
    for (const char* broken : {"\"a\" & \"b", "[RN", "\"a\" [R^"}) {
        const auto refused = with_term(broken, 99, {"RN", "x"}, '&');
        EXPECT_FALSE(refused) << broken;
        EXPECT_NE(refused.message().find("error"), std::string::npos) << refused.message();
    }
}

TEST(formula_builder, values_are_written_so_that_the_word_matches_them) {
    const struct {
        const char* value;
        const char* word;  // empty: refused
    } cases[] = {
        {"row 1", "\"row 1\""},
        {"*x", "\"**x\""},
        {"x*", "\"x**\""},
        {"*", "\"***\""},
        {"**", "\"****\""},
        {"the \"D\"", ""},
        {"\"D\"", "\"*D*\""},
        {"\"D\" one", ""},
        {"12\"", "\"12*\""},
        {"\"", ""},
        {"", ""},
        {"\u201Cgo\u201D", "\"*go*\""},
        {"two\nlines", ""},
        {"ended\n", "\"ended*\""},
        {"Shot (left)", "\"Shot (left)\""},
        {"a) Shot", ""},
        {"(Shot", "\"*Shot\""},
        {"Shot :)", "\"Shot :*\""},
        {"[QN]", "\"[QN]\""},
        {"]", ""},
        {"a || b", ""},
        {"a||b", "\"a||b\""},
        {"[RO]", ""},
    };
    for (const auto& one : cases) {
        const auto word = written_word(one.value);
        EXPECT_EQ(word ? word.value() : "", one.word) << one.value;
        EXPECT_EQ(word.message().find("cannot be written") == std::string::npos, word.ok());
    }
    EXPECT_FALSE(written_term({"QN", "✭✭"}));
    EXPECT_FALSE(written_term({"STAR", "Goal"}));
}

// Whatever can be written is found again by the plain evaluator.
TEST(formula_builder, what_is_written_selects_the_clip_that_has_the_value) {
    testing::random_formulas random(7);
    int written = 0;
    for (int n = 0; n < 3000; ++n) {
        const std::string value = random.any(6);
        const auto edited = with_term("(!\"no such one\")", 99, {"QN", value}, '&');
        if (!edited) continue;
        ++written;
        testing::literal_formula formula(edited.value().text, true);
        testing::literal_clip clip;
        clip.qualifier_names = {value};
        EXPECT_EQ(formula.errors, "") << value;
        EXPECT_EQ(formula.evaluate(clip), 1) << value << "\n" << edited.value().text;
        clip.qualifier_names = {"0"};
        EXPECT_EQ(formula.evaluate(clip), -1) << value;
    }
    EXPECT_GT(written, 300);
}

TEST(formula_builder, operators_are_replaced_outside_quotes) {
    const struct {
        const char* before;
        char from, to;
        const char* after;
    } cases[] = {
        {"\"a & b\" & \"é\" && (\"c\"&\"d\") | \"e\"", '&', '|',
         "\"a & b\" | \"é\" || (\"c\"|\"d\") | \"e\""},
        {"!\"a\" ! \"b\"", '!', '&', "&\"a\" & \"b\""},
        {"\u201Cé|\u201D|\"b\"", '|', '!', "\u201Cé|\u201D!\"b\""},
        {"a & b", '&', '|', "a & b"},
        {"[R&N]\"a\"", '&', '|', "[R&N]\"a\""},
        {"", '&', '|', ""},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(with_operator_replaced(one.before, one.from, one.to), one.after) << one.before;
    }
    EXPECT_EQ(replace_operator_title('&', '|'), "Replace & with |");
}

}  // namespace vistels
