// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/merge_timeline.h"

#include <gtest/gtest.h>

#include "support/timeline_builder.h"
#include "timeline/edits/sxy_Clip_Blocks_ROOT.h"
#include "timeline/edits/tombstones.h"
#include "timeline/records/clip_row.h"

namespace vistels {
namespace {

using testing::clip_of;
using testing::row_of;
using testing::state_text;

constexpr double now = 1e9;

sxy_CLIP edited(const std::string& uuid, double start, std::optional<double> edit_seconds) {
    auto clip = clip_of(uuid, start, start + 1);
    if (!edit_seconds) return clip;
    property_dictionary set;
    set.add("edit_seconds", *edit_seconds);
    return clip_with(clip, set, {});
}

void add(sxy_DATA_root& timeline, std::vector<operation::any> operations) {
    change_set touched;
    const auto applied = apply_edit(timeline, {"", "", std::move(operations)}, touched);
    ASSERT_TRUE(applied) << applied.message();
}

void bury(sxy_DATA_root& timeline, const std::string& clip, double seconds) {
    change_set touched;
    ASSERT_TRUE(apply_edit(timeline, plan_delete_clips(timeline, {clip}, "them", seconds), touched));
}

// Two copies of one timeline with the row R and the clips a, b and c in it.
struct two_copies {
    sxy_DATA_root mine;
    sxy_DATA_root other;

    two_copies() {
        const shared_text r("R");
        add(mine, {operation::insert_row{0, row_of("R", "Shot")},
                   operation::insert_clip{r, edited("a", 1, now - 100)},
                   operation::insert_clip{r, edited("b", 2, {})},
                   operation::insert_clip{r, edited("c", 3, now - 100)}});
        other = sxy_DATA_root(read_timeline(write_timeline(mine.snapshot())).content);
    }

    result<timeline_edit> plan() { return plan_merge_timeline(mine, other.snapshot(), now); }
    // Merges, and once more, which must have nothing left to do.
    void merge() {
        const auto edit = plan();
        ASSERT_TRUE(edit) << edit.message();
        add(mine, edit.value().operations);
        const auto again = plan();
        ASSERT_TRUE(again) << again.message();
        EXPECT_TRUE(again.value().operations.empty());
    }
};

TEST(merge_timeline, the_later_edit_of_a_clip_wins) {
    struct edit_case {
        const char* name;
        std::optional<double> mine, other;
        double start;  // 10 mine, 20 the other's
    };
    const edit_case cases[] = {
        {"mine is later", now - 1, now - 2, 10},  {"the other is later", now - 2, now - 1, 20},
        {"both at once", now - 1, now - 1, 10},   {"neither says", {}, {}, 10},
        {"only the other says", {}, now - 9, 20}, {"only mine says", now - 9, {}, 10},
    };
    for (const auto& [name, mine, other, start] : cases) {
        two_copies copies;
        add(copies.mine, {operation::insert_clip{shared_text("R"), edited("x", 10, mine)}});
        add(copies.other, {operation::insert_row{0, row_of("N", "New")},
                           operation::insert_clip{shared_text("N"), edited("x", 20, other)}});
        copies.merge();
        const auto found = copies.mine.find_clip("x");
        ASSERT_TRUE(found) << name;
        EXPECT_EQ(found->clip->secs_start(), start) << name;
        EXPECT_EQ(found->row.str(), start == 10 ? "R" : "N") << name;
    }
}

TEST(merge_timeline, a_clip_that_got_a_qualifier_or_another_row_later_wins) {
    for (const bool mine_is_later : {false, true}) {
        two_copies copies;
        const auto edit = [](sxy_DATA_root& timeline, operation::any one, double seconds) {
            change_set touched;
            ASSERT_TRUE(apply_edit(timeline, {"", "", {std::move(one)}, edit_stamp{"", seconds}}, touched));
        };
        add(copies.other, {operation::insert_row{9, row_of("S", "Pass")}});
        edit(copies.mine, operation::insert_qualifier{"b", 0, testing::qualifier_of("q", "Goal")}, now - 10);
        edit(copies.other, operation::move_clip{"b", shared_text("S")}, now - (mine_is_later ? 11 : 9));
        copies.merge();
        const auto found = copies.mine.find_clip("b");
        ASSERT_TRUE(found);
        EXPECT_EQ(found->row.str(), mine_is_later ? "R" : "S");
        EXPECT_EQ(found->clip->qualifiers()->size(), mine_is_later ? 1U : 0U);
    }
}

TEST(merge_timeline, deletions_hold_on_both_sides_until_they_expire) {
    two_copies copies;
    add(copies.other, {operation::insert_clip{shared_text("R"), edited("late", 9, now - 1)}});
    bury(copies.mine, "a", now - 50);
    bury(copies.mine, "b", now - tombstone_life_seconds);  // expired: as if it had never been here
    bury(copies.other, "c", now - 200);                    // edited here since
    copies.merge();
    EXPECT_FALSE(copies.mine.find_clip("a"));
    EXPECT_TRUE(copies.mine.find_clip("b"));
    EXPECT_TRUE(copies.mine.find_clip("c"));
    EXPECT_TRUE(copies.mine.find_clip("late"));

    two_copies later;
    bury(later.other, "b", now - 5);
    bury(later.other, "c", now - 5);
    add(later.other, {operation::insert_clip{shared_text("R"), edited("c", 3, {})}});  // taken back there
    add(later.other, {operation::insert_clip{shared_text("R"), edited("made and", 3, {})}});
    bury(later.other, "made and", now - 5);
    later.merge();
    EXPECT_FALSE(later.mine.find_clip("b"));
    EXPECT_TRUE(later.mine.find_clip("c"));
    const auto known = tombstones_of(later.mine.rows(), now);
    EXPECT_TRUE(known.contains("b")) << "a third copy learns of it from here";
    EXPECT_TRUE(known.contains("made and"));
    EXPECT_EQ(known.at("b").edit_author, "them");
}

TEST(merge_timeline, rows_are_matched_by_uuid_then_by_name_and_new_ones_keep_their_place) {
    two_copies copies;
    add(copies.mine, {operation::insert_row{1, row_of("P here", "Pass")},
                      operation::insert_row{2, row_of("T", "Tackle")}});
    auto renamed = row_of("T", "Pass");  // the same UUID counts before the same name
    add(copies.other,
        {operation::insert_row{1, row_of("P there", "Pass")}, operation::insert_row{2, row_of("N", "New")},
         operation::insert_row{3, renamed}, operation::insert_row{0, row_of("F", "First")},
         operation::insert_row{9, row_of("G", "All deleted")},
         operation::insert_clip{shared_text("P there"), edited("p", 1, {})},
         operation::insert_clip{shared_text("T"), edited("t", 1, {})},
         operation::insert_clip{shared_text("G"), edited("g", 1, {})}});
    add(copies.mine, {operation::insert_clip{shared_text("R"), edited("g", 1, {})}});
    bury(copies.mine, "g", now - 5);
    copies.merge();
    std::string order;
    for (const auto& row : copies.mine.rows()) order += row->uuid().str() + " ";
    EXPECT_EQ(order, "F R P here N T ");
    EXPECT_EQ(copies.mine.find_clip("p")->row.str(), "P here");
    EXPECT_EQ(copies.mine.find_clip("t")->row.str(), "T");
}

TEST(merge_timeline, another_timeline_and_a_growing_clip_are_refused) {
    two_copies copies;
    sxy_DATA_root stranger;
    EXPECT_FALSE(plan_merge_timeline(copies.mine, stranger.snapshot(), now));
    add(copies.mine, {operation::begin_clip{shared_text("R"), edited("g", 50, {})}});
    add(copies.other, {operation::insert_clip{shared_text("R"), edited("g", 50, now)}});
    EXPECT_FALSE(copies.plan());
}

TEST(tombstones, an_import_leaves_out_what_was_deleted) {
    two_copies copies;
    bury(copies.mine, "a", now - 5);
    auto incoming = copies.other.snapshot();
    EXPECT_EQ(leave_out_deleted_clips(incoming, tombstones_of(copies.mine.rows(), now)), 1U);
    ASSERT_EQ(incoming.rows[0]->clips().size(), 2U);
    EXPECT_EQ(incoming.rows[0]->clips()[0]->id(), "b");
    EXPECT_EQ(copies.other.clip_count(), 3U);
}

TEST(clip_row, lists_the_clips_of_all_rows_in_start_order) {
    const shared_text r("R");
    const shared_text s("S");
    const auto timeline = testing::timeline_of(
        {operation::insert_row{0, row_of("R", "Shot")}, operation::insert_row{1, row_of("S", "Pass")},
         operation::insert_clip{r, clip_of("r1", 1, 9)}, operation::insert_clip{r, clip_of("r2", 5, 6)},
         operation::insert_clip{s, clip_of("s1", 1, 9)}, operation::insert_clip{s, clip_of("s2", 1, 2)},
         operation::insert_clip{s, clip_of("hidden", 2, 3)}});
    clip_set passing;
    for (const auto& row : timeline.rows()) {
        for (const auto& clip : row->clips()) passing.put(*clip, clip->id() != "hidden");
    }
    const auto words = [&](const clip_set* only) {
        std::string all;
        for (const auto& one : clips_in_start_order(timeline.rows(), only)) {
            EXPECT_EQ(one.clip_start_, one.clip_->secs_start());
            all += one.clip_->id() + "@" + std::to_string(one.row_num_ix1) + one.row_->name() + " ";
        }
        return all;
    };
    EXPECT_EQ(words(nullptr), "s2@2Pass r1@1Shot s1@2Pass hidden@2Pass r2@1Shot ");
    EXPECT_EQ(words(&passing), "s2@2Pass r1@1Shot s1@2Pass r2@1Shot ");
}

TEST(clip_blocks, move_back_what_comes_after_what_is_left_out) {
    const auto kept = sxy_Clip_Blocks_ROOT::keeping({{30, 40}, {10, 20}, {15, 25}, {90, 120}, {5, 5}}, 100);
    struct time_case {
        double seconds;
        double moved;
        bool is_excluded;
    };
    const time_case cases[] = {
        {-1, -1, false}, {0, 0, true},    {9.5, 0, true},   {10, 0, false},   {24, 14, false},
        {25, 15, true},  {29, 15, true},  {30, 15, false},  {39, 24, false},  {40, 25, true},
        {90, 25, false}, {99, 34, false}, {100, 35, false}, {110, 45, false},
    };
    for (const auto& [seconds, moved, is_excluded] : cases) {
        EXPECT_NEAR(kept.moved_back(seconds), moved, 1e-9) << seconds;
        EXPECT_EQ(kept.is_excluded(seconds), is_excluded) << seconds;
    }
    // Given out of order and overlapping, and a gap that is closed but for a second.
    const sxy_Clip_Blocks_ROOT given({{20, 30, true, 9}, {0, 22, false, 0}, {21, 22, true, 1}});
    ASSERT_EQ(given.blocks().size(), 2U);
    EXPECT_EQ(given.moved_back(21.5), 21.5);
    EXPECT_EQ(given.moved_back(30), 21);
    EXPECT_EQ(given.moved_back(25), 21);
    EXPECT_EQ(sxy_Clip_Blocks_ROOT().moved_back(7), 7);
}

}  // namespace
}  // namespace vistels
