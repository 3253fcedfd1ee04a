// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/clip_operations.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <regex>
#include <set>

#include "support/checked_edit.h"
#include "timeline/edits/row_compaction.h"

namespace vistels {
namespace {

using testing::apply_and_check;
using testing::clip_of;
using testing::qualifier_of;
using testing::row_of;
using testing::state_text;
using testing::timeline_of;

const edit_stamp stamp{"me", 1e9};

sxy_CLIP noted(sxy_CLIP clip, const std::string& text) {
    clip.set_note(std::make_shared<const clip_note>(clip_note().with_text(text)));
    return clip;
}

sxy_CLIP stamped(sxy_CLIP clip, const std::vector<std::pair<const char*, double>>& names) {
    qual_ROOT all = *clip.qualifiers();
    for (const auto& [name, time] : names) {
        all.push_back(qualifier_of(clip.id() + name, name));
        all.back().set_time(time);
        clip_attribute_ITEM attribute;
        attribute.uuid = compact_text(clip.id() + name + "-a");
        attribute.name = shared_text("far");
        all.back().set_attributes({attribute});
    }
    clip.set_qualifiers(std::move(all));
    return clip;
}

// Rows R and S; in R the clips a, b, c and one that grows, in S the clip d.
sxy_DATA_root coded() {
    const shared_text r("R");
    return timeline_of(
        {operation::insert_row{0, row_of("R", "Shot")}, operation::insert_row{1, row_of("S", "Pass")},
         operation::insert_clip{r, noted(stamped(clip_of("a", 0, 10), {{"x", 4}, {"y", 9}}), "one")},
         operation::insert_clip{r, stamped(clip_of("b", 5, 15), {{"z", 6}})},
         operation::insert_clip{r, noted(clip_of("c", 15, 20), "three")},
         operation::insert_clip{shared_text("S"), noted(clip_of("d", 2, 30), "four")},
         operation::begin_clip{r, clip_of("live", 40, 40)}});
}

std::string names_of(const sxy_CLIP& clip) {
    std::string names;
    for (const auto& one : *clip.qualifiers()) names += one.name().str();
    return names;
}

std::vector<double> times_of(const sxy_DATA_root& timeline, const char* clip) {
    const auto place = timeline.find_clip(clip);
    if (!place) return {};
    return {place->clip->secs_start(), place->clip->secs_end()};
}

TEST(clip_operations, merging_keeps_the_earliest_with_everything_of_the_others) {
    auto timeline = coded();
    apply_and_check(timeline, plan_clips_Merge(timeline, {"c", "b", "d", "a", "b"}, stamp));
    const auto kept = timeline.find_clip("a");
    ASSERT_TRUE(kept);
    EXPECT_EQ(times_of(timeline, "a"), (std::vector<double>{0, 30}));
    EXPECT_EQ(names_of(*kept->clip), "xzy");
    EXPECT_EQ(kept->clip->note_text(), "one\nfour\nthree");
    EXPECT_EQ(timeline.clip_count(), 1U);
    std::set<std::string> buried;
    for (const auto& row : timeline.rows()) {
        for (const auto& one : row->deleted_clips()) buried.insert(one.deleted_clip_ID + one.edit_author);
    }
    EXPECT_EQ(buried, (std::set<std::string>{"bme", "cme", "dme"}));
}

// Each value of the merged clip, by where it comes from: a has the second of each pair, b the first.
TEST(clip_operations, merging_keeps_every_value_of_the_first_clip_that_has_it) {
    sxy_CLIP a = clip_of("a", 0, 4);
    a.set_stars(2);
    a.set_triggers({{3, shared_text("late"), {}}});
    a.set_pause_items({{2}});
    a.set_alt_seconds(7);
    a.set_frame_style(shared_text("a style"));
    sxy_CLIP b = clip_of("b", 1, 9);
    b.set_stars(1);
    b.set_col(colour{1, 0, 0, 1});
    b.set_frame_style(shared_text("b style"));
    b.set_group("group");
    b.set_coll_id(5);
    b.set_alt_counts_down(true);
    b.set_triggers({{1, shared_text("early"), {}}});
    b.set_pause_items({{8}, {1}});
    b.set_inserted_objects(inserted_Objects_Root_25{{{4, 1, "pic", "P"}}});
    sxy_CLIP c = clip_of("c", 2, 3);
    c.set_stars(5);
    c.set_col(colour{0, 1, 0, 1});
    sxy_CLIP_telestration_data_24 drawn;
    drawn.using_telestrated_data = true;
    c.set_telestration(drawn);
    c.set_inserted_objects(inserted_Objects_Root_25{{{2, 1, "pic", "Q"}}});
    const shared_text r("R");
    auto timeline = timeline_of({operation::insert_row{0, row_of("R", "Shot")}, operation::insert_clip{r, c},
                                 operation::insert_clip{r, b}, operation::begin_clip{r, a}});
    change_set touched;
    // One of them still grows and ends with the merge: taken back, it is gone.
    const auto growing = *timeline.find_clip("a");
    const auto merge = plan_clips_Merge(timeline, {"c", "b"}, stamp, ended_clip{growing, {0, 4}});
    ASSERT_TRUE(merge) << merge.message();
    const auto back = apply_edit(timeline, merge.value(), touched);
    ASSERT_TRUE(back) << back.message();
    const auto again = apply_edit(timeline, back.value(), touched);
    ASSERT_TRUE(again) << again.message();
    EXPECT_EQ(timeline.clip_count(), 2U);
    EXPECT_TRUE(timeline.live_clips().empty());
    ASSERT_TRUE(apply_edit(timeline, again.value(), touched));
    const auto place = timeline.find_clip("a");
    ASSERT_TRUE(place && !place->is_live);
    EXPECT_EQ(timeline.clip_count(), 1U);
    const auto text = write_json(write_clip(*place->clip), json_layout::one_line);
    for (const char* part :
         {R"("time_start":0.0,"time_end":9.0)", R"("clip_style":"a style")", R"("color":"1.0,0.0,0.0")",
          R"("stars":5)", R"("alt_seconds":7.0)", R"("clip_group":"group")", R"("coll_id":5.0)",
          R"("trigger_type":"early"},{"trigger_time":3.0)",
          R"([{"seconds":1.0},{"seconds":2.0},{"seconds":8.0}])", R"("pic_UUID":"Q"},{"start_secs":4.0)",
          R"("telestration_secs_end_trimmed":9.0)"})
        EXPECT_NE(text.find(part), std::string::npos) << part << " is not in " << text;
    EXPECT_EQ(text.find("alt_count_down"), std::string::npos) << "of another clip's clock";
}

TEST(clip_operations, merging_clips_that_have_the_same_qualifiers_keeps_all_apart) {
    auto twin = clip_of("b", 1, 2);
    twin.set_qualifiers(*stamped(clip_of("a", 0, 1), {{"late", 9}, {"early", 1}}).qualifiers());
    auto nameless = clip_of("c", 3, 4);
    nameless.set_qualifiers({qualifier_of("", "none")});
    auto timeline = timeline_of(
        {operation::insert_row{0, row_of("R", "Shot")},
         operation::insert_clip{shared_text("R"), stamped(clip_of("a", 0, 1), {{"late", 9}, {"early", 1}})},
         operation::insert_clip{shared_text("R"), twin}, operation::insert_clip{shared_text("R"), nameless}});
    apply_and_check(timeline, plan_clips_Merge(timeline, {"a", "b", "c"}, stamp));
    const auto kept = timeline.find_clip("a")->clip;
    EXPECT_EQ(names_of(*kept), "noneearlyearlylatelate") << "out of order before, in order now";
    std::set<std::string> uuids;
    for (const auto& one : *kept->qualifiers()) uuids.insert(one.uuid());
    EXPECT_EQ(uuids.size(), 5U);
}

TEST(clip_operations, trimming_moves_edges_up_to_the_other_one) {
    struct trim_case {
        const char* name;
        std::vector<std::string> clips;
        std::optional<double> in, out;
        std::vector<double> a;  // empty: refused
    };
    const trim_case cases[] = {
        {"in", {"a"}, 3.0, {}, {3, 10}},
        {"out", {"a"}, {}, 12.0, {0, 12}},
        {"both", {"a"}, 20.0, 25.0, {20, 25}},
        {"earlier", {"a"}, -4.0, {}, {-4, 10}},
        {"in over the end", {"a"}, 11.0, {}, {}},
        {"out over the start", {"a"}, {}, -1.0, {}},
        {"nothing would be left", {"a"}, 10.0, {}, {}},
        {"one of several would be empty", {"a", "c"}, 12.0, {}, {}},
        {"several", {"a", "b"}, 7.0, {}, {7, 10}},
        {"no time", {"a"}, std::nan(""), {}, {}},
        {"not there", {"a", "nobody"}, 3.0, {}, {}},
        {"still growing", {"a", "live"}, 3.0, {}, {}},
    };
    for (const auto& [name, clips, in, out, a] : cases) {
        auto timeline = coded();
        const auto edit = plan_clips_Trim_Mark_in_Mark_Out(timeline, clips, in, out);
        EXPECT_EQ(edit.ok(), !a.empty()) << name;
        if (!edit) {
            EXPECT_NE(edit.message(), "") << name;
            continue;
        }
        apply_and_check(timeline, edit);
        EXPECT_EQ(times_of(timeline, "a"), a) << name;
    }
    const auto timeline = coded();
    EXPECT_TRUE(plan_clips_Trim_Mark_in_Mark_Out(timeline, {"a"}, 0.0, {}).value().operations.empty());
}

TEST(clip_operations, a_trim_tells_the_drawings_over_the_clip) {
    property_dictionary drawings;
    drawings.add("secs_start_original", 1.0);
    property_dictionary set;
    set.add("telestration", drawings);
    auto timeline = timeline_of({operation::insert_row{0, row_of("R", "Shot")},
                                 operation::insert_clip{shared_text("R"), clip_of("a", 1, 9)},
                                 operation::change_clip{"a", set, {}}});
    apply_and_check(timeline, plan_clips_Trim_Mark_in_Mark_Out(timeline, {"a"}, 2.0, {}));
    const auto stored = write_clip(*timeline.find_clip("a")->clip);
    const auto* trimmed = stored.dictionary("telestration");
    ASSERT_TRUE(trimmed);
    EXPECT_EQ(trimmed->number("secs_start_original"), 1.0);
    EXPECT_EQ(trimmed->number("telestration_secs_start_trimmed"), 2.0);
    EXPECT_EQ(trimmed->number("telestration_secs_end_trimmed"), 9.0);
}

TEST(clip_operations, splitting_an_overlap_takes_two_clips_or_finds_the_other) {
    struct split_case {
        const char* name;
        std::vector<std::string> clips;
        std::vector<double> a, b, c;  // b empty: refused
    };
    const split_case cases[] = {
        {"two", {"a", "b"}, {0, 7.45}, {7.55, 15}, {15, 20}},
        {"one", {"a"}, {0, 7.45}, {7.55, 15}, {15, 20}},
        {"clips that touch", {"c", "b"}, {0, 10}, {5, 14.95}, {15.05, 20}},
        {"one that only touches another", {"c"}, {0, 10}, {5, 14.95}, {15.05, 20}},
        {"apart", {"a", "c"}, {}, {}, {}},
        {"three", {"a", "b", "c"}, {}, {}, {}},
        {"none", {}, {}, {}, {}},
        {"alone in its row", {"d"}, {}, {}, {}},
    };
    for (const auto& [name, clips, a, b, c] : cases) {
        auto timeline = coded();
        const auto edit = plan_split_overlap(timeline, clips);
        EXPECT_EQ(edit.ok(), !b.empty()) << name;
        if (!edit) continue;
        apply_and_check(timeline, edit);
        for (const auto& [clip, times] : {std::pair("a", a), std::pair("b", b), std::pair("c", c)}) {
            const auto found = times_of(timeline, clip);
            EXPECT_NEAR(found[0], times[0], 1e-9) << name << " " << clip;
            EXPECT_NEAR(found[1], times[1], 1e-9) << name << " " << clip;
        }
    }
    auto timeline = timeline_of({operation::insert_row{0, row_of("R", "Shot")},
                                 operation::insert_clip{shared_text("R"), clip_of("long", 0, 10)},
                                 operation::insert_clip{shared_text("R"), clip_of("point", 5, 5)}});
    EXPECT_FALSE(plan_split_overlap(timeline, {"long"})) << "the other would end before it starts";
}

TEST(clip_operations, a_note_is_written_changed_and_taken_away) {
    auto timeline = coded();
    apply_and_check(timeline, plan_note(timeline, "b", "new"));
    const auto first = timeline.find_clip("b")->clip->note();
    ASSERT_TRUE(first);
    EXPECT_FALSE(first->clip_notes_uuid.empty());
    EXPECT_TRUE(plan_note(timeline, "b", "new").value().operations.empty());
    apply_and_check(timeline, plan_note(timeline, "b", "newer"));
    EXPECT_EQ(timeline.find_clip("b")->clip->note()->clip_notes_uuid, first->clip_notes_uuid);
    apply_and_check(timeline, plan_note(timeline, "b", ""));
    EXPECT_FALSE(timeline.find_clip("b")->clip->note());
    EXPECT_FALSE(plan_note(timeline, "nobody", "x"));
}

// Every UUID of a timeline, from its stored form.
std::multiset<std::string> uuids_of(const timeline_snapshot& timeline) {
    const std::string text = write_json(write_timeline(timeline), json_layout::one_line);
    static const std::regex stored(
        R"re("(uuid|attr_uuid|uuid_row|uuid_timeline|clip_notes_uuid)":"([^"]*)")re");
    std::multiset<std::string> all;
    for (std::sregex_iterator at(text.begin(), text.end(), stored), end; at != end; ++at)
        all.insert((*at)[2]);
    return all;
}

// The stored form without UUIDs.
std::string without_uuids(const timeline_snapshot& timeline) {
    std::string text = write_json(write_timeline(timeline), json_layout::one_line);
    for (const auto& uuid : uuids_of(timeline)) {
        for (auto at = text.find('"' + uuid + '"'); at != std::string::npos;
             at = text.find('"' + uuid + '"')) {
            text.replace(at, uuid.size() + 2, "-");
        }
    }
    return text;
}

TEST(clip_operations, the_copy_of_a_timeline_has_uuids_of_its_own_and_names_its_own_rows) {
    auto timeline = coded();
    EXPECT_TRUE(duplicate_copy_sxy_data(timeline.snapshot()).live_clips.empty());
    change_set touched;
    ASSERT_TRUE(apply_edit(timeline, {"", "", {operation::finish_clip{"live", 40, 41}}}, touched));
    apply_and_check(timeline, plan_note(timeline, "b", "with an identity"));
    apply_and_check(timeline, plan_compact_rows(timeline, {shared_text("R"), shared_text("S")}, "Both"));
    const auto original = timeline.snapshot();
    const auto copy = duplicate_copy_sxy_data(original);
    const auto old_uuids = uuids_of(original);
    for (const auto& uuid : uuids_of(copy)) EXPECT_EQ(old_uuids.count(uuid), 0U) << uuid;
    EXPECT_EQ(uuids_of(copy).size(), old_uuids.size());
    EXPECT_EQ(without_uuids(copy), without_uuids(original));
    sxy_DATA_root copied(copy);
    const auto expanded = plan_expand_row(copied, copied.rows()[0]->uuid());
    apply_and_check(copied, expanded);
    ASSERT_EQ(copied.rows().size(), 2U);
    EXPECT_EQ(copied.rows()[0]->clips().size(), 4U) << "the clips of the copy know its rows";
    EXPECT_EQ(copied.rows()[1]->clips()[0]->note_text(), "four");
}

TEST(clip_operations, clips_and_rows_are_duplicated_and_a_row_goes_with_tombstones_elsewhere) {
    auto timeline = coded();
    apply_and_check(timeline, plan_duplicate_clips(timeline, {"a", "d"}, 30, stamp));
    EXPECT_EQ(timeline.rows()[0]->clips().size(), 4U);
    const auto copy = timeline.rows()[0]->clips()[3];
    EXPECT_EQ(copy->secs_start(), 30);
    EXPECT_EQ(copy->note_text(), "one");
    EXPECT_NE((*copy->qualifiers())[0].uuid(), "ax");
    EXPECT_NE((*copy->qualifiers())[0].attributes()[0].uuid, "ax-a");
    EXPECT_FALSE(plan_duplicate_clips(timeline, {"live"}, 0, stamp));
    apply_and_check(timeline, plan_duplicate_row(timeline, shared_text("R")));
    ASSERT_EQ(timeline.rows().size(), 3U);
    EXPECT_EQ(timeline.rows()[1]->name(), "Shot copy");
    EXPECT_EQ(timeline.rows()[1]->clips().size(), 4U);
    EXPECT_FALSE(plan_delete_row(timeline, shared_text("R"), stamp)) << "a clip of it still grows";
    apply_and_check(timeline, plan_delete_row(timeline, timeline.rows()[1]->uuid(), stamp));
    apply_and_check(timeline, plan_delete_row(timeline, shared_text("S"), stamp));
    EXPECT_EQ(timeline.rows()[0]->deleted_clips().size(), 6U);
}

}  // namespace
}  // namespace vistels
