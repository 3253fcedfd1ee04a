// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/row_edits.h"

#include <gtest/gtest.h>

#include "support/checked_edit.h"

namespace vistels {
namespace {

using testing::apply_and_check;
using testing::clip_of;
using testing::row_of;
using testing::timeline_of;
using rows = std::vector<shared_text>;

const colour red{1, 0, 0, 1};
const colour blue{0, 0, 1, 1};

sxy_CLIP coloured(sxy_CLIP clip, const colour& shade) {
    clip.set_col(shade);
    return clip;
}

// Row 10 and Row 9 of "attack", the first with three clips, and "pass" without a category and with one.
sxy_DATA_root coded() {
    const auto made = [](const char* uuid, const char* name, const char* category) {
        sxy_ROW row = row_of(uuid, name);
        row.set_category(category);
        row.set_col(red);
        return row;
    };
    return timeline_of({operation::insert_row{0, made("A", "Row 10", "attack")},
                        operation::insert_row{1, made("B", "pass", "")},
                        operation::insert_row{2, made("C", "row 9", "attack")},
                        operation::insert_clip{shared_text("A"), coloured(clip_of("a", 5, 6), red)},
                        operation::insert_clip{shared_text("A"), coloured(clip_of("b", 7, 8), blue)},
                        operation::insert_clip{shared_text("A"), clip_of("c", 9, 10)},
                        operation::insert_clip{shared_text("B"), clip_of("d", 1, 2)}});
}

std::string order_of(const sxy_DATA_root& timeline) {
    std::string order;
    for (const auto& row : timeline.rows()) order += row->uuid().str();
    return order;
}

TEST(row_edits, rows_are_made_named_and_coloured_with_the_clips_that_had_their_colour) {
    auto timeline = coded();
    apply_and_check(timeline, plan_new_row(timeline, shared_text("A"), blue));
    apply_and_check(timeline, plan_new_row(timeline, {}, blue));
    ASSERT_EQ(timeline.rows().size(), 5U);
    EXPECT_EQ(timeline.rows()[1]->name(), "Row");
    EXPECT_EQ(timeline.rows()[4]->name(), "Row 2");
    apply_and_check(timeline, plan_rename_row(timeline, shared_text("B"), "  Pass \n"));
    EXPECT_EQ(timeline.row(shared_text("B"))->name(), "Pass");
    EXPECT_FALSE(plan_rename_row(timeline, shared_text("B"), " \t"));
    EXPECT_FALSE(plan_rename_row(timeline, shared_text("Z"), "x"));
    apply_and_check(timeline, plan_row_category(timeline, {shared_text("A"), shared_text("B")}, "play"));
    EXPECT_EQ(timeline.row(shared_text("B"))->category(), "play");

    const colour green{0, 1, 0, 1};
    apply_and_check(timeline, plan_row_colour(timeline, {shared_text("A"), shared_text("B")}, green));
    EXPECT_EQ(timeline.row(shared_text("A"))->col(), green);
    EXPECT_EQ(timeline.find_clip("a")->clip->col(), green);
    EXPECT_EQ(timeline.find_clip("b")->clip->col(), blue);
    EXPECT_FALSE(timeline.find_clip("c")->clip->col());
    EXPECT_TRUE(plan_row_colour(timeline, {shared_text("A")}, green).value().operations.empty());
}

TEST(row_edits, rows_are_moved_and_sorted_and_keep_their_order_where_they_are_equal) {
    const struct {
        rows moved;
        std::size_t before;
        const char* order;
    } moves[] = {
        {{shared_text("A")}, 3, "BCA"},
        {{shared_text("C")}, 0, "CAB"},
        {{shared_text("A")}, 1, "ABC"},
        {{shared_text("C"), shared_text("A")}, 2, "BAC"},  // as they follow each other
        {{shared_text("A"), shared_text("C")}, 1, "ACB"},
    };
    for (const auto& move : moves) {
        auto timeline = coded();
        apply_and_check(timeline, plan_move_rows(timeline, move.moved, move.before));
        EXPECT_EQ(order_of(timeline), move.order);
    }
    const std::pair<row_order, const char*> orders[] = {{row_order::by_name, "BCA"},
                                                        {row_order::by_category, "CAB"},
                                                        {row_order::by_count, "ABC"},
                                                        {row_order::by_time, "BAC"}};
    for (const auto& [order, expected] : orders) {
        auto timeline = coded();
        apply_and_check(timeline, plan_sort_rows(timeline, order));
        EXPECT_EQ(order_of(timeline), expected);
        EXPECT_TRUE(plan_sort_rows(timeline, order).operations.empty());
    }
    EXPECT_FALSE(plan_move_rows(coded(), {shared_text("Z")}, 0));
}

TEST(row_edits, hidden_rows_come_back_as_high_as_they_were) {
    auto timeline = coded();
    apply_and_check(timeline, plan_row_height(timeline, {shared_text("A")}, 50));
    for (int n = 0; n < 2; ++n)
        apply_and_check(timeline, plan_hide_rows(timeline, {shared_text("A"), shared_text("B")}));
    EXPECT_TRUE(is_hidden(*timeline.row(shared_text("A"))));
    apply_and_check(timeline, plan_show_hidden_rows(timeline));
    EXPECT_FALSE(is_hidden(*timeline.row(shared_text("A"))));
    EXPECT_EQ(timeline.row(shared_text("A"))->height(), 50);
    EXPECT_TRUE(plan_show_hidden_rows(timeline).operations.empty());
}

}  // namespace
}  // namespace vistels
