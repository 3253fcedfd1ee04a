// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/records/shift_times.h"

#include <gtest/gtest.h>

#include <limits>

#include "support/timeline_builder.h"
#include "timeline/edits/timeline_edit.h"

namespace vistels {
namespace {

using namespace vistels::testing;

// A clip with every time that there is, each in its own hundred.
sxy_CLIP full_clip() {
    sxy_CLIP clip = clip_of("C", 100, 200);
    clip.set_pause_items({{300}});
    clip.set_triggers({{400, shared_text("going up"), {}}});
    clip.set_alt_seconds(7);
    clip.set_mins(8);
    clip_attribute_ITEM attribute;
    attribute.attribute_time = 500;
    qual_ITEM qualifier = qualifier_of("Q", "Goal");
    qualifier.set_time(600);
    qualifier.set_alt_time(9);
    qualifier.set_attributes({attribute});
    clip.set_qualifiers({qualifier});
    clip.set_inserted_objects(inserted_Objects_Root_25{{{700, 10, "pic", "P"}}});
    sxy_CLIP_telestration_data_24 drawn;
    drawn.secs_start_original = 800;
    drawn.secs_start_aux_coll = 11;
    drawn.secs_end_trimmed_261027 = 900;
    clip.set_telestration(drawn);
    sxy_data_clip_VISTEL shown;
    shown.vistels.emplace_back();
    shown.vistels.back().set_zoom_items({{1000, {}}});
    clip.set_vistel_data(shown);
    clip_note note;
    property_dictionary item;
    item.add("time_start", 1100.0);
    item.add("note_string", "here");
    note.kept.add("note_items", property_array{item});
    clip.set_note(std::make_shared<const clip_note>(note));
    return clip;
}

TEST(shift_times, moves_what_lies_on_the_clock_of_the_collection_and_nothing_else) {
    const sxy_CLIP clip = full_clip();
    clip.set_selected(true);
    const auto moved = clip_shifted(clip, -150.5);
    const auto& qualifier = moved->qualifiers()->front();
    const double times[] = {
        moved->secs_start(),
        moved->secs_end(),
        moved->pause_items().front().seconds,
        moved->triggers().front().trigger_Time,
        qualifier.attributes().front().attribute_time.value_or(0),
        qualifier.time(),
        moved->inserted_objects()->items.front().inserted_obj_start_secs,
        moved->telestration()->secs_start_original.value_or(0),
        moved->telestration()->secs_end_trimmed_261027.value_or(0),
        moved->vistel_data()->vistels.front().zoom_items().front().key_frame_secs,
        moved->note()->kept.array("note_items")->front().dictionary()->number("time_start").value_or(0)};
    double expected = 100 - 150.5;
    for (const double time : times) {
        EXPECT_EQ(time, expected);
        expected += 100;
    }
    EXPECT_EQ(moved->inserted_objects()->items.front().inserted_obj_duration_secs, 10);
    EXPECT_EQ(moved->telestration()->secs_start_aux_coll, 11);
    EXPECT_EQ(moved->alt_seconds(), 7);
    EXPECT_EQ(moved->mins(), 8);
    EXPECT_EQ(qualifier.alt_time(), 9);
    EXPECT_TRUE(moved->selected());
    EXPECT_EQ(clip.secs_start(), 100);  // the clip itself is of an earlier revision
    EXPECT_EQ(write_clip(*clip_shifted(*moved, 150.5)), write_clip(clip));
}

TEST(shift_times, one_operation_moves_rows_tags_and_growing_clips_of_a_timeline) {
    sxy_DATA_root timeline;
    change_set touched;
    const shared_text row("R");
    timeline_edit setup{"", "", {operation::insert_row{0, row_of("R", "Shot")}}};
    for (int n = 0; n < 1000; ++n) {
        setup.operations.emplace_back(operation::insert_clip{row, clip_of(std::to_string(n), n % 7, 9)});
    }
    setup.operations.emplace_back(operation::begin_clip{row, clip_of("live", 3, 3)});
    ASSERT_TRUE(apply_edit(timeline, setup, touched));
    timeline.set_tags({{4, {}}});
    const auto snapshot = timeline.snapshot();
    const timeline_edit shift{"", "", {operation::shift_times{-20}}};
    EXPECT_LT(write_edit(shift).array("operations")->size(), 2U);
    ASSERT_TRUE(apply_edit(timeline, shift, touched));
    EXPECT_EQ(timeline.find_clip("8")->clip->secs_start(), -19);
    EXPECT_EQ(timeline.find_clip("live")->clip->secs_start(), -17);
    EXPECT_EQ(timeline.tags().front().secs_tag, -16);
    EXPECT_EQ(snapshot.rows.front()->clips()[0]->secs_start(), 0);
    // Still found by what they are: places, order and changes.
    EXPECT_TRUE(apply_edit(timeline, {"", "", {operation::remove_clip{"8"}}}, touched));
    EXPECT_EQ(timeline.rows().front()->clips().first_starting_at(-19), 143U);
    EXPECT_FALSE(apply_edit(
        timeline, {"", "", {operation::shift_times{std::numeric_limits<double>::infinity()}}}, touched));
}

}  // namespace
}  // namespace vistels
