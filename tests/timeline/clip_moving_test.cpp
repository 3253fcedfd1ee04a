// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/clip_moving.h"

#include <gtest/gtest.h>

#include "support/checked_edit.h"

namespace vistels {
namespace {

using testing::apply_and_check;
using testing::clip_of;
using testing::qualifier_of;
using testing::row_of;
using testing::timeline_of;
using strings = std::vector<std::string>;

const edit_stamp stamp{"me", 1e9};
const std::vector<shared_text> shown_rows{shared_text("R"), shared_text("S"), shared_text("T")};

sxy_CLIP with_all_that_has_a_time() {
    sxy_CLIP clip = clip_of("a", 0.1, 10.3);
    qual_ROOT qualifiers;
    for (const auto& [name, at] : {std::pair{"early", 1.1}, {"late", 7.7}}) {
        qualifiers.push_back(qualifier_of(name, name));
        qualifiers.back().set_time(at);
    }
    clip.set_qualifiers(std::move(qualifiers));
    clip.set_pause_items({{2.2, {}}, {8.8, {}}});
    trigger_event_ITEM trigger;
    trigger.trigger_Time = 9.9;
    clip.set_triggers({trigger});
    clip.set_stars(3);
    clip.set_note(std::make_shared<const clip_note>(clip_note().with_text("good")));
    return clip;
}

// Rows R, S and T; in R the clips a and b, which touch, and one that grows, in S the clip c.
sxy_DATA_root coded() {
    sxy_ROW row = row_of("R", "Shot");
    row.set_category("attack");
    return timeline_of({operation::insert_row{0, row}, operation::insert_row{1, row_of("S", "Pass")},
                        operation::insert_row{2, row_of("T", "Goal")},
                        operation::insert_clip{shared_text("R"), with_all_that_has_a_time()},
                        operation::insert_clip{shared_text("R"), clip_of("b", 10.3, 20)},
                        operation::insert_clip{shared_text("S"), clip_of("c", 3, 3.02)},
                        operation::begin_clip{shared_text("R"), clip_of("live", 40, 40)}});
}

std::string times(const sxy_DATA_root& timeline, const std::string& clip) {
    const auto place = timeline.find_clip(clip);
    if (!place) return "gone";
    char text[80];
    std::snprintf(text, sizeof text, "%s %.6g %.6g", place->row.str().c_str(), place->clip->secs_start(),
                  place->clip->secs_end());
    return text;
}

strings qualifiers_of(const sxy_CLIP& clip) {
    strings names;
    for (const auto& one : *clip.qualifiers()) names.push_back(one.name().str());
    return names;
}

TEST(clip_moving, clips_keep_their_distance_in_time_and_rows_and_all_that_is_on_them) {
    const struct {
        strings clips;
        double seconds;
        int rows;
        strings expected;  // of a, b and c
    } cases[] = {
        {{"a"}, 5.7, 0, {"R 5.8 16", "R 10.3 20", "S 3 3.02"}},
        {{"a", "c"}, -0.1, 1, {"S 0 10.2", "R 10.3 20", "T 2.9 2.92"}},
        {{"a", "b", "c"}, 0, 2, {"T 0.1 10.3", "T 10.3 20", "S 3 3.02"}},
        {{"c"}, 0, -1, {"R 3 3.02"}},
    };
    for (const auto& c : cases) {
        auto timeline = coded();
        apply_and_check(timeline, plan_move_clips(timeline, c.clips, c.seconds, shown_rows, c.rows));
        const strings names = c.expected.size() == 1 ? strings{"c"} : strings{"a", "b", "c"};
        for (std::size_t i = 0; i < names.size(); ++i) EXPECT_EQ(times(timeline, names[i]), c.expected[i]);
        const auto clip = timeline.find_clip("a")->clip;
        const double by = c.clips.front() == "a" ? c.seconds : 0;
        EXPECT_NEAR((*clip->qualifiers())[1].time(), 7.7 + by, 1e-9);
        EXPECT_NEAR(clip->pause_items()[0].seconds, 2.2 + by, 1e-9);
        EXPECT_NEAR(clip->triggers()[0].trigger_Time, 9.9 + by, 1e-9);
    }
    auto timeline = coded();
    EXPECT_FALSE(plan_move_clips(timeline, {"a", "live"}, 1));
    EXPECT_FALSE(plan_move_clips(timeline, {"nobody"}, 1));
    EXPECT_FALSE(plan_move_clips(timeline, {"a"}, HUGE_VAL));
    EXPECT_TRUE(plan_move_clips(timeline, {"a"}, 0).value().operations.empty());
}

TEST(clip_moving, trims_and_rolls_leave_something_of_every_clip) {
    const struct {
        strings clips;
        double starts_by, ends_by;
        strings expected;  // of a, b and c
    } cases[] = {
        {{"a", "b"}, 1, 0, {"R 1.1 10.3", "R 11.3 20", "S 3 3.02"}},
        {{"a", "b"}, 9.9, 0, {"R 10 10.3", "R 19.96 20", "S 3 3.02"}},
        {{"a", "b"}, 50, 0, {"R 10.26 10.3", "R 19.96 20", "S 3 3.02"}},
        {{"a", "c"}, 0, -50, {"R 0.1 0.14", "R 10.3 20", "S 3 3.02"}},
        {{"c"}, 0, 1, {"R 0.1 10.3", "R 10.3 20", "S 3 4.02"}},
    };
    for (const auto& c : cases) {
        auto timeline = coded();
        apply_and_check(timeline, plan_trim_edges(timeline, c.clips, c.starts_by, c.ends_by));
        EXPECT_EQ((strings{times(timeline, "a"), times(timeline, "b"), times(timeline, "c")}), c.expected);
    }
    for (const auto& [at, joint] : {std::pair{5.0, "5"}, {-3.0, "0.14"}, {99.0, "19.96"}}) {
        auto timeline = coded();
        apply_and_check(timeline, plan_roll_joint(timeline, "a", "b", at));
        EXPECT_EQ(times(timeline, "a"), std::string("R 0.1 ") + joint);
        EXPECT_EQ(times(timeline, "b"), std::string("R ") + joint + " 20");
    }
}

TEST(clip_moving, a_clip_is_split_with_what_has_a_time_in_its_own_half) {
    auto timeline = coded();
    auto edit = plan_split_at(timeline, {"a", "b"}, 5, stamp);
    apply_and_check(timeline, edit);
    EXPECT_EQ(times(timeline, "a"), "R 0.1 5");
    EXPECT_EQ(times(timeline, "b"), "R 10.3 20") << "it lies elsewhere";
    const auto row = timeline.row(shared_text("R"));
    ASSERT_EQ(row->clips().size(), 3U);
    const clip_pointer first = timeline.find_clip("a")->clip;
    const clip_pointer second = row->clips()[1];
    EXPECT_EQ(second->secs_start(), 5);
    EXPECT_EQ(second->secs_end(), 10.3);
    EXPECT_EQ(qualifiers_of(*first), strings{"early"});
    EXPECT_EQ(qualifiers_of(*second), strings{"late"});
    EXPECT_EQ(first->pause_items().size(), 1U);
    EXPECT_EQ(second->pause_items().front().seconds, 8.8);
    EXPECT_TRUE(first->triggers().empty());
    EXPECT_EQ(second->triggers().size(), 1U);
    EXPECT_EQ(second->stars(), 3);
    EXPECT_EQ(second->note_text(), "good");
    EXPECT_FALSE(plan_split_at(timeline, {"a", "b"}, 5, stamp)) << "at the joint lies nothing";
    EXPECT_FALSE(plan_split_at(timeline, {}, 5, stamp));
}

TEST(clip_moving, clips_are_drawn_and_pasted_with_identities_of_their_own) {
    auto timeline = coded();
    apply_and_check(timeline, plan_draw_clip(timeline, shared_text("T"), 8, 6));
    ASSERT_EQ(timeline.row(shared_text("T"))->clips().size(), 1U);
    EXPECT_EQ(timeline.row(shared_text("T"))->clips()[0]->secs_start(), 6);
    EXPECT_FALSE(plan_draw_clip(timeline, shared_text("nowhere"), 6, 8));

    const auto copied = copied_clips(timeline, {"a", "c"});
    ASSERT_TRUE(copied) << copied.message();
    apply_and_check(timeline, plan_paste(timeline, copied.value(), 100, stamp));
    const auto here = timeline.row(shared_text("R"))->clips();
    ASSERT_EQ(here.size(), 3U);
    EXPECT_DOUBLE_EQ(here[2]->secs_start(), 100);
    EXPECT_NE(here[2]->id(), "a");
    EXPECT_NEAR((*here[2]->qualifiers())[0].time(), 101, 1e-9);
    EXPECT_NEAR(timeline.row(shared_text("S"))->clips()[1]->secs_start(), 102.9, 1e-9);

    // Elsewhere: one row is known by its name, the other is made.
    auto other = timeline_of({operation::insert_row{0, row_of("P", "Pass")}});
    for (int n = 0; n < 2; ++n) {
        apply_and_check(other, plan_paste(other, copied.value(), 0, stamp));
        ASSERT_EQ(other.rows().size(), 2U);
        EXPECT_EQ(other.rows()[0]->clips().size(), static_cast<std::size_t>(n + 1));
        EXPECT_EQ(other.rows()[1]->name(), "Shot");
        EXPECT_NE(other.rows()[1]->uuid().str(), "R");
    }
    EXPECT_TRUE(plan_paste(other, {}, 0, stamp).value().operations.empty());
    EXPECT_FALSE(copied_clips(timeline, {"live"}));
}

}  // namespace
}  // namespace vistels
