// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/timeline_edit.h"

#include <gtest/gtest.h>

#include "support/timeline_builder.h"
#include "timeline/sxy_Save_Load.h"

namespace vistels {
namespace {

using testing::clip_of;
using testing::qualifier_of;
using testing::random_edits;
using testing::row_of;

// Everything that is stored, and the growing clips.
std::string state_of(sxy_DATA_root& timeline) {
    return testing::state_text(timeline);
}

TEST(edit, a_random_history_is_taken_back_exactly) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        sxy_DATA_root timeline;
        random_edits next(seed, false);
        std::vector<timeline_edit> inverse;
        std::vector<std::string> states{state_of(timeline)};
        for (int n = 0; n < 200; ++n) {
            change_set touched;
            const auto edit = next.make(timeline);
            auto back = apply_edit(timeline, edit, touched);
            if (!back) {
                EXPECT_EQ(state_of(timeline), states.back()) << "a refused edit changed something";
                continue;
            }
            // What is put on record must do the same as what was done.
            const auto stored = read_edit(write_edit(edit));
            ASSERT_TRUE(stored) << stored.message();
            EXPECT_EQ(write_edit(stored.value()), write_edit(edit));
            inverse.push_back(std::move(back).value());
            states.push_back(state_of(timeline));
        }
        ASSERT_GT(inverse.size(), 50U);
        while (!inverse.empty()) {
            change_set touched;
            states.pop_back();
            const auto again = apply_edit(timeline, inverse.back(), touched);
            ASSERT_TRUE(again) << again.message();
            inverse.pop_back();
            ASSERT_EQ(state_of(timeline), states.back());
        }
    }
}

TEST(edit, one_refused_amid_growing_clips_leaves_them_growing) {
    sxy_DATA_root timeline;
    random_edits next(5);
    int refused = 0;
    for (int n = 0; n < 2000; ++n) {
        const auto before = state_of(timeline);
        change_set touched;
        if (apply_edit(timeline, next.make(timeline), touched)) continue;
        ++refused;
        ASSERT_EQ(state_of(timeline), before);
    }
    EXPECT_GT(refused, 100);
}

TEST(edit, a_refused_edit_leaves_the_timeline_equal) {
    sxy_DATA_root timeline;
    change_set touched;
    const shared_text row("R");
    ASSERT_TRUE(apply_edit(
        timeline,
        {"",
         "",
         {operation::insert_row{0, row_of("R", "Shot")}, operation::insert_clip{row, clip_of("1", 1, 2)},
          operation::insert_clip{row, clip_of("2", 3, 4)}}},
        touched));
    const auto before = state_of(timeline);
    const std::vector<std::vector<operation::any>> refused = {
        {operation::change_clip{"1", {}, {}}, operation::remove_clip{"nobody"}},
        {operation::remove_clip{"1"}, operation::remove_clip{"2"}, operation::remove_row{row},
         operation::insert_clip{row, clip_of("3", 1, 2)}},
        {operation::insert_qualifier{"1", 0, qualifier_of("Q", "Goal")},
         operation::insert_qualifier{"1", 0, qualifier_of("Q", "Goal")}},
        {operation::insert_clip{row, clip_of("2", 9, 10)}},
        {operation::finish_clip{"1", 0, 1}},
        {operation::remove_row{row}},
    };
    for (const auto& operations : refused) {
        const auto applied = apply_edit(timeline, {"Test", "", operations}, touched);
        EXPECT_FALSE(applied);
        EXPECT_EQ(state_of(timeline), before);
    }
}

TEST(edit, a_change_of_stored_values_keeps_identity_and_qualifiers_and_orders_times) {
    sxy_DATA_root timeline;
    change_set touched;
    const shared_text row("R");
    property_dictionary set;
    set.add("time_start", 9.0);
    set.add("stars", 4);
    ASSERT_TRUE(apply_edit(
        timeline,
        {"",
         "",
         {operation::insert_row{0, row_of("R", "Shot")}, operation::insert_clip{row, clip_of("1", 1, 2)},
          operation::insert_qualifier{"1", 0, qualifier_of("Q", "Goal")},
          operation::change_clip{"1", set, {}}}},
        touched));
    const auto clip = timeline.find_clip("1")->clip;
    EXPECT_EQ(clip->secs_start(), 2);
    EXPECT_EQ(clip->secs_end(), 9);
    EXPECT_EQ(clip->stars(), 4);
    EXPECT_EQ(clip->qualifiers()->size(), 1U);
}

TEST(edit, deleting_leaves_a_tombstone_and_undo_takes_it_away) {
    sxy_DATA_root timeline;
    change_set touched;
    const shared_text row("R");
    ASSERT_TRUE(apply_edit(
        timeline,
        {"",
         "",
         {operation::insert_row{0, row_of("R", "Shot")}, operation::insert_clip{row, clip_of("1", 1, 2)},
          operation::insert_clip{row, clip_of("2", 3, 4)}}},
        touched));
    const auto before = state_of(timeline);
    const auto back =
        apply_edit(timeline, plan_delete_clips(timeline, {"1", "2", "nobody"}, "me", 1e9), touched);
    ASSERT_TRUE(back) << back.message();
    EXPECT_EQ(timeline.clip_count(), 0U);
    ASSERT_EQ(timeline.rows()[0]->deleted_clips().size(), 2U);
    EXPECT_EQ(timeline.rows()[0]->deleted_clips()[1].deleted_clip_ID, "2");
    ASSERT_TRUE(apply_edit(timeline, back.value(), touched));
    EXPECT_EQ(state_of(timeline), before);
}

TEST(snapshot, does_not_change_when_the_timeline_does) {
    sxy_DATA_root timeline;
    change_set touched;
    random_edits next(7);
    for (int n = 0; n < 100; ++n) (void)apply_edit(timeline, next.make(timeline), touched);
    const auto snapshot = timeline.snapshot();
    const auto before = write_timeline(snapshot);
    for (int n = 0; n < 100; ++n) (void)apply_edit(timeline, next.make(timeline), touched);
    EXPECT_EQ(write_timeline(snapshot), before);
    EXPECT_FALSE(write_timeline(timeline.snapshot()) == before);
}

}  // namespace
}  // namespace vistels
