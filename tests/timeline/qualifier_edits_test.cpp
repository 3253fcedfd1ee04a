// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/qualifier_edits.h"

#include <gtest/gtest.h>

#include "support/checked_edit.h"

namespace vistels {
namespace {

using testing::apply_and_check;
using testing::clip_of;
using testing::qualifier_of;
using testing::row_of;

sxy_DATA_root coded() {
    sxy_CLIP a = clip_of("a", 10, 20);
    qual_ITEM marek = qualifier_of("1", "Marek");
    marek.set_category(shared_text("Player"));
    marek.set_time(12);
    a.set_qualifiers({qualifier_of("0", "Won"), marek});
    return testing::timeline_of({operation::insert_row{0, row_of("R", "Shot")},
                                 operation::insert_clip{shared_text("R"), a},
                                 operation::insert_clip{shared_text("R"), clip_of("b", 30, 40)},
                                 operation::begin_clip{shared_text("R"), clip_of("live", 50, 50)}});
}

TEST(qualifier_edits, one_is_written_in_its_place_and_keeps_all_else) {
    auto timeline = coded();
    const qualifier_words words{"Sato", "Player", "Sato", "Ferri", "S", 0.5};
    apply_and_check(timeline, plan_change_qualifier(timeline, "a", "1", words));
    const auto all = timeline.find_clip("a")->clip->qualifiers();
    ASSERT_EQ(all->size(), 2U);
    EXPECT_EQ(words_in((*all)[1]), words);
    EXPECT_EQ((*all)[1].time(), 12);
    EXPECT_TRUE(plan_change_qualifier(timeline, "a", "1", words).value().operations.empty());
    EXPECT_FALSE(plan_change_qualifier(timeline, "a", "1", {}));
    EXPECT_FALSE(plan_change_qualifier(timeline, "a", "2", words));
    EXPECT_FALSE(plan_change_qualifier(timeline, "z", "1", words));
}

TEST(qualifier_edits, a_new_one_comes_once_and_within_its_clip) {
    auto timeline = coded();
    apply_and_check(timeline, plan_add_qualifier(timeline, {"a", "b"}, "Marek", "Player", 35));
    EXPECT_EQ(timeline.find_clip("a")->clip->qualifiers()->size(), 2U) << "it has that one";
    EXPECT_EQ(timeline.find_clip("b")->clip->qualifiers()->front().time(), 35);
    apply_and_check(timeline, plan_add_qualifier(timeline, {"a", "b"}, "Marek", "", 35));
    EXPECT_EQ(timeline.find_clip("a")->clip->qualifiers()->back().time(), 20);
    EXPECT_FALSE(plan_add_qualifier(timeline, {"live"}, "Marek", "", 35));
    EXPECT_FALSE(plan_add_qualifier(timeline, {"a"}, "", "Player", 35));
    const std::vector<std::pair<std::string, std::string>> known{
        {"Marek", ""}, {"Marek", "Player"}, {"Won", ""}};
    EXPECT_EQ(known_qualifiers(timeline), known);
}

}  // namespace
}  // namespace vistels
