// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/formula_completion.h"

#include <gtest/gtest.h>

#include "support/caret_text.h"
#include "support/timeline_builder.h"

namespace vistels {

namespace {

using testing::at_caret;

// What is replaced, between bars; what was typed of it; and the codes.
std::string described(const edited_formula& here) {
    const auto found = completion_at(here.text, here.caret);
    if (found.part == typed_part::nothing) return "nothing";
    const std::size_t first = byte_of_code_point(here.text, found.replaced.start);
    const std::size_t last = byte_of_code_point(here.text, found.replaced.start + found.replaced.length);
    std::string all = found.part == typed_part::quoted_word  ? "quoted"
                      : found.part == typed_part::plain_word ? "plain"
                                                             : "codes";
    all += " " + here.text.substr(0, first) + "<" + here.text.substr(first, last - first) + ">" +
           here.text.substr(last) + " " + found.typed;
    if (found.part == typed_part::quoted_word) {
        for (const auto& code : found.codes) all += " " + code;
    }
    return all;
}

qual_ITEM stamped(const char* name, const char* category) {
    auto item = testing::qualifier_of(std::string("Q ") + name, name);
    item.set_category(shared_text(category));
    return item;
}

timeline_snapshot coded_timeline() {
    auto goal = testing::clip_of("1", 0, 1);
    auto shot = stamped("Shot", "What");
    clip_attribute_ITEM side;
    side.name = shared_text("left");
    side.attribute_category = shared_text("Side");
    shot.set_attributes({side, side});
    goal.set_qualifiers({stamped("Goal", "What"), shot});
    auto shot_alone = testing::clip_of("2", 2, 3);
    shot_alone.set_qualifiers({shot, stamped("\"no\"", ""), stamped("un\"writable", "")});
    sxy_ROW first = testing::row_of("R1", "Home");
    first.set_category("Team");
    sxy_ROW second = testing::row_of("R2", "Away goals");
    second.set_category("Team");
    sxy_DATA_root timeline;
    EXPECT_TRUE(timeline.insert_row(0, std::move(first)) && timeline.insert_row(1, std::move(second)));
    EXPECT_TRUE(timeline.insert_clip(shared_text("R2"), std::move(goal)));
    EXPECT_TRUE(timeline.insert_clip(shared_text("R2"), std::move(shot_alone)));
    return timeline.snapshot();
}

std::string listed(const std::vector<formula_text>& texts) {
    std::string all;
    for (const auto& one : texts) all += one.code + ":" + one.text + "*" + std::to_string(one.uses) + " ";
    return all;
}

}  // namespace

TEST(formula_completion, tells_what_is_typed) {
    const struct {
        const char* text;
        const char* described;
    } cases[] = {
        {"^", "nothing"},
        {"[RN]\"ro^", "quoted [RN]<\"ro> ro RN"},
        {"[RN]\"*é ro^w 1\" & \"b\"", "quoted [RN]<\"*é row 1\"> & \"b\" é ro RN"},
        {"[RN, QC] \u201Cro^", "quoted [RN, QC] <\u201Cro> ro RN QC"},
        {"\"a\" & \"^", "quoted \"a\" & <\">  QN"},
        {"\"ro^ & [QN]\"Goal\"", "quoted <\"ro> & [QN]\"Goal\" ro QN"},
        {"!\"é^\"", "quoted !<\"é\"> é QN"},
        {"\"a\"^", "nothing"},
        {"\"a\" & ^", "nothing"},
        {"Pen cor^ner x", "plain <Pen corner> x Pen cor"},
        {"\"a\" &  é^", "plain \"a\" &  <é> é"},
        {"!Go^", "plain !<Go> Go"},
        {"[QC]wh^", "quoted [QC]<wh> wh QC"},
        {"[^", "codes [<> "},
        {"[R^", "codes [<R> R"},
        {"[RN, q^c]\"a\"", "codes [RN, <qc>]\"a\" q"},
        {"[RN ,^", "codes [RN ,<> "},
        {"\"[a^\"", "quoted <\"[a\"> [a QN"},
    };
    for (const auto& one : cases) EXPECT_EQ(described(at_caret(one.text)), one.described) << one.text;
    EXPECT_EQ(described({"\"ab", 99}), "quoted <\"ab> ab QN");
}

TEST(formula_completion, texts_of_a_timeline_by_use) {
    const formula_texts texts(coded_timeline());
    EXPECT_EQ(listed(texts.of("RN")), "RN:Away goals*2 RN:Home*0 ");
    EXPECT_EQ(listed(texts.of("RC")), "RC:Team*2 ");
    EXPECT_EQ(listed(texts.of("QN")), "QN:Shot*2 QN:\"no\"*1 QN:Goal*1 QN:un\"writable*1 ");
    EXPECT_EQ(listed(texts.of("QC")), "QC:What*3 ");
    EXPECT_EQ(listed(texts.of("AN")), "AN:left*4 ");
    EXPECT_EQ(listed(texts.of("AC")), "AC:Side*4 ");
    EXPECT_EQ(listed(texts.of("NT")) + listed(texts.of("??")), "");
}

TEST(formula_completion, offers_what_fits_and_takes_it_up) {
    const formula_texts texts(coded_timeline());
    const struct {
        const char* text;
        const char* offered;
        const char* completed;  // with the first of them
    } cases[] = {
        {"go^", "QN:Goal*1 RN:Away goals*2 ", "[QN]\"Goal\"^"},
        {"\"a\" & [RN]\"go^\" | \"b\"", "RN:Away goals*2 ", "\"a\" & [RN]\"Away goals\"^ | \"b\""},
        // The last code decides.
        {"[QN,RN]\"o^", "RN:Away goals*2 RN:Home*0 ", "[QN,RN]\"Away goals\"^"},
        {"\"^", "QN:Shot*2 QN:\"no\"*1 QN:Goal*1 ", "\"Shot\"^"},
        {"[QN]\"no^", "QN:\"no\"*1 ", "[QN]\"*no*\"^"},
        {"\"un^", "", ""},
        {"[q^", "QN:QN*0 QC:QC*0 ", "[QN]^"},
        {"[RN,n^]\"a\"", "NT:NT*0 QN:QN*0 AN:AN*0 RN:RN*0 ", "[RN,NT^]\"a\""},
        {"\"xyz^", "", ""},
    };
    for (const auto& one : cases) {
        const auto here = at_caret(one.text);
        const auto at = completion_at(here.text, here.caret);
        const auto offered = completions(at, texts, 10);
        EXPECT_EQ(listed(offered), one.offered) << one.text;
        if (offered.empty()) continue;
        const auto done = with_completion(here.text, at, offered.front());
        ASSERT_TRUE(done) << done.message();
        EXPECT_EQ(testing::marked(done.value()), one.completed) << one.text;
    }
    EXPECT_EQ(completions(completion_at("\"", 1), texts, 1).size(), 1U);
}

}  // namespace vistels
