// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/row_compaction.h"

#include <gtest/gtest.h>

#include "support/timeline_builder.h"
#include "timeline/edits/clip_operations.h"

namespace vistels {
namespace {

using testing::clip_of;
using testing::row_of;
using testing::state_text;

sxy_CLIP clip_in(const std::string& uuid, double start, const std::string& row, const std::string& category) {
    auto clip = clip_of(uuid, start, start + 1);
    clip.set_row_uuid_in_clip(shared_text(row));
    clip.set_row_category_in_clip(shared_text(category));
    return clip;
}

// Five rows, A to E, which differ in everything; in each a clip made on it, one that says nothing of where it
// was made, and one that was made on another row.
sxy_DATA_root coded() {
    sxy_DATA_root timeline;
    timeline_edit edit;
    double start = 0;
    int number = 0;
    for (const std::string uuid : {"A", "B", "C", "D", "E"}) {
        auto row = row_of(uuid, "row " + uuid);
        ++number;
        row.set_category("of " + uuid);
        row.set_col(colour{number / 10.0, 0, 0, 1});
        row.set_sort_number(10 - number);
        row.set_height(20 + number);
        row.set_is_timer_row(number % 2 == 0);
        row.set_deleted_clips({{"gone from " + uuid, "me", 5}});
        row = row_with(row,
                       [&] {
                           property_dictionary set;
                           set.add("sort_number_(for_row_Compactor_or_Expander)", number);
                           return set;
                       }(),
                       {});
        edit.operations.emplace_back(operation::insert_row{99, row});
        const shared_text at(uuid);
        edit.operations.emplace_back(
            operation::insert_clip{at, clip_in(uuid + "1", ++start, uuid, "of " + uuid)});
        edit.operations.emplace_back(operation::insert_clip{at, clip_of(uuid + "2", ++start, start)});
        edit.operations.emplace_back(operation::insert_clip{at, clip_in(uuid + "3", ++start, "A", "of A")});
    }
    change_set touched;
    EXPECT_TRUE(apply_edit(timeline, edit, touched));
    return timeline;
}

std::vector<shared_text> uuids(const std::vector<std::string>& texts) {
    return {texts.begin(), texts.end()};
}

void apply(sxy_DATA_root& timeline, const result<timeline_edit>& edit) {
    ASSERT_TRUE(edit) << edit.message();
    // What is put on record must do the same.
    const auto recorded = read_edit(write_edit(edit.value()));
    ASSERT_TRUE(recorded) << recorded.message();
    change_set touched;
    const auto applied = apply_edit(timeline, recorded.value(), touched);
    ASSERT_TRUE(applied) << applied.message();
}

// Written to a file and read again.
sxy_DATA_root stored_and_read(sxy_DATA_root& timeline) {
    return sxy_DATA_root(read_timeline(write_timeline(timeline.snapshot())).content);
}

TEST(row_compaction, there_and_back_leaves_the_timeline_equal) {
    const std::vector<std::vector<std::string>> choices = {
        {"A", "B"}, {"E", "A", "C"}, {"B", "D"}, {"D", "E"}, {"A", "B", "C", "D", "E"}};
    for (const auto& chosen : choices) {
        auto timeline = coded();
        const auto before = state_text(timeline);
        apply(timeline, plan_compact_rows(timeline, uuids(chosen), "Master"));
        ASSERT_EQ(timeline.rows().size(), 6 - chosen.size());
        EXPECT_EQ(timeline.clip_count(), 15U);
        const auto master = timeline.row_named("Master");
        ASSERT_TRUE(master);
        const auto stored = write_row_values(*master, 0);
        for (const char* key :
             {"uncompacted_row_categories", "uncompacted_row_colors", "uncompacted_row_Permanent_uuids",
              "uncompacted_sort_number", "uncompacted_sort_number_Compactor_Expander"}) {
            ASSERT_TRUE(stored.array(key)) << key;
            EXPECT_EQ(stored.array(key)->size(), chosen.size()) << key;
        }
        EXPECT_EQ(master->deleted_clips().size(), chosen.size());
        apply(timeline, plan_expand_row(timeline, master->uuid()));
        EXPECT_EQ(state_text(timeline), before);
    }
}

TEST(row_compaction, a_master_row_may_be_merged_again_and_comes_back_from_a_file) {
    auto timeline = coded();
    const auto before = [&] {
        // Tombstones expire when a file is read: there are none to compare.
        for (const char* row : {"A", "B", "C", "D", "E"}) {
            change_set touched;
            EXPECT_TRUE(apply_edit(
                timeline,
                {"", "", {operation::change_row{shared_text(row), {}, {property_value("deleted clips")}}}},
                touched));
        }
        return state_text(timeline);
    }();
    apply(timeline, plan_compact_rows(timeline, uuids({"B", "D"}), "Inner"));
    apply(timeline,
          plan_compact_rows(
              timeline, {shared_text("A"), timeline.row_named("Inner")->uuid(), shared_text("E")}, "Outer"));
    auto read = stored_and_read(timeline);
    apply(read, plan_expand_row(read, read.row_named("Outer")->uuid()));
    apply(read, plan_expand_row(read, read.row_named("Inner")->uuid()));
    EXPECT_EQ(state_text(read), before);
}

TEST(row_compaction, what_changed_meanwhile_keeps_every_clip) {
    auto timeline = coded();
    apply(timeline, plan_compact_rows(timeline, uuids({"B", "C"}), ""));
    const auto master = timeline.rows()[1]->uuid();
    EXPECT_EQ(timeline.rows()[1]->name(), "row B");
    // Coded on the master, moved to it, deleted from it; B has come back by itself and E is gone.
    change_set touched;
    ASSERT_TRUE(
        apply_edit(timeline,
                   {"",
                    "",
                    {operation::insert_clip{master, clip_in("new", 50, master.str(), "")},
                     operation::insert_clip{master, clip_in("new of C", 51, "elsewhere", "of C")},
                     operation::move_clip{"E1", master}, operation::insert_row{0, row_of("B", "again")}}},
                   touched));
    apply(timeline, {plan_delete_clips(timeline, {"C2"}, "me", 9)});
    apply(timeline, {plan_delete_row(timeline, shared_text("E"), {"me", 9})});
    const auto clips = timeline.clip_count();
    apply(timeline, plan_expand_row(timeline, master));
    EXPECT_EQ(timeline.clip_count(), clips);
    EXPECT_EQ(timeline.row(shared_text("B"))->name(), "again");
    EXPECT_EQ(timeline.find_clip("B2")->row.str(), "B");
    EXPECT_EQ(timeline.find_clip("C3")->row.str(), "C");
    EXPECT_EQ(timeline.find_clip("new of C")->row.str(), "C");
    for (const char* clip : {"new", "E1"}) EXPECT_EQ(timeline.find_clip(clip)->row.str(), "B") << clip;
}

TEST(row_compaction, refuses_what_it_cannot_do) {
    auto timeline = coded();
    change_set touched;
    EXPECT_FALSE(plan_compact_rows(timeline, uuids({"A", "A"}), ""));
    EXPECT_FALSE(plan_compact_rows(timeline, uuids({"A", "nobody"}), ""));
    EXPECT_FALSE(plan_expand_row(timeline, shared_text("A")));
    EXPECT_FALSE(is_compacted(*timeline.rows()[0]));
    ASSERT_TRUE(apply_edit(
        timeline, {"", "", {operation::begin_clip{shared_text("A"), clip_of("L", 90, 90)}}}, touched));
    EXPECT_FALSE(plan_compact_rows(timeline, uuids({"A", "B"}), ""));
}

TEST(row_compaction, arrays_of_other_programs_count_as_far_as_all_reach) {
    struct array_case {
        const char* name;
        const char* arrays;
        std::vector<std::string> rows;  // "uuid/category/sort number/compactor's"; empty: refused
    };
    const array_case cases[] = {
        {"equal",
         R"("uncompacted_row_categories":["x","y"],"uncompacted_row_colors":["1.0,0.0,0.0",""],)"
         R"("uncompacted_row_Permanent_uuids":["U","V"],"uncompacted_sort_number":[4,0],)"
         R"("uncompacted_sort_number_Compactor_Expander":[1,2])",
         {"U/x/4/1", "V/y/0/2"}},
        {"in another order",
         R"("uncompacted_row_categories":["x","y"],"uncompacted_row_colors":["1.0,0.0,0.0",""],)"
         R"("uncompacted_row_Permanent_uuids":["U","V"],"uncompacted_sort_number":[4,0],)"
         R"("uncompacted_sort_number_Compactor_Expander":[2,1])",
         {"V/y/0/1", "U/x/4/2"}},
        {"one is shorter",
         R"("uncompacted_row_categories":["x","y"],"uncompacted_row_colors":["1.0,0.0,0.0",""],)"
         R"("uncompacted_row_Permanent_uuids":["U","V","W"],"uncompacted_sort_number":[4],)"
         R"("uncompacted_sort_number_Compactor_Expander":[1,2])",
         {"U/x/4/1"}},
        {"wrong types",
         R"("uncompacted_row_categories":[7,"y"],"uncompacted_row_colors":[1,2],)"
         R"("uncompacted_row_Permanent_uuids":["U","U"],"uncompacted_sort_number":["4",{}],)"
         R"("uncompacted_sort_number_Compactor_Expander":[-5,[]])",
         {"U//0/0", "?/y/0/0"}},
        {"one is missing",
         R"("uncompacted_row_categories":["x"],"uncompacted_row_colors":[""],)"
         R"("uncompacted_row_Permanent_uuids":["U"],"uncompacted_sort_number":[4])",
         {}},
        {"empty",
         R"("uncompacted_row_categories":[],"uncompacted_row_colors":[],"uncompacted_row_Permanent_uuids":[],)"
         R"("uncompacted_sort_number":[],"uncompacted_sort_number_Compactor_Expander":[])",
         {}},
    };
    for (const auto& [name, arrays, rows] : cases) {
        const auto document = read_json(
            R"({"rows":[{"uuid_row":"top"},{"uuid_row":"M","row_name":"Shot",)" + std::string(arrays) +
                R"(,"clips":[{"uuid":"1","str":1,"end":2,"row_uuid_in_clip":"V"},)"
                R"({"uuid":"2","str":3,"end":4,"row_category":"y"},{"uuid":"3","str":5,"end":6}]}]})",
            name);
        ASSERT_TRUE(document) << document.message();
        sxy_DATA_root timeline(read_timeline(*document.value().dictionary()).content);
        const auto edit = plan_expand_row(timeline, shared_text("M"));
        EXPECT_EQ(edit.ok(), !rows.empty()) << name;
        EXPECT_EQ(is_compacted(*timeline.row(shared_text("M"))), edit.ok()) << name;
        if (!edit) continue;
        apply(timeline, edit);
        EXPECT_EQ(timeline.clip_count(), 3U) << name;
        ASSERT_EQ(timeline.rows().size(), rows.size() + 1) << name;
        for (std::size_t index = 0; index < rows.size(); ++index) {
            const auto& row = *timeline.rows()[index + 1];
            const auto stored = write_row_values(row, 0);
            const bool any = rows[index].starts_with("?");
            EXPECT_EQ(
                (any ? "?" : row.uuid().str()) + "/" + row.category() + "/" +
                    std::to_string(row.sort_number()) + "/" +
                    std::to_string(stored.integer("sort_number_(for_row_Compactor_or_Expander)").value_or(0)),
                rows[index])
                << name;
            EXPECT_EQ(row.name(), "Shot") << name;
        }
        if (rows.size() == 2) {
            EXPECT_EQ(timeline.rows()[2]->clips().size(), name == std::string("equal") ? 2U : 1U) << name;
        }
    }
}

}  // namespace
}  // namespace vistels
