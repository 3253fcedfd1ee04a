// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/sanitized.h"
#include "timeline/edits/timeline_edit.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <set>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "support/timeline_builder.h"
#include "timeline/files/sxy_Save_Load.h"

namespace vistels {
namespace {

using testing::clip_of;
using testing::qualifier_of;
using testing::random_edits;
using testing::row_of;
using testing::state_text;
using testing::timeline_of;

TEST(edit, a_random_history_is_taken_back_exactly) {
    for (unsigned seed = 1; seed <= 20; ++seed) {
        sxy_DATA_root timeline;
        random_edits next(seed, false);
        std::vector<timeline_edit> inverse;
        std::vector<std::string> states{state_text(timeline)};
        for (int n = 0; n < 200; ++n) {
            change_set touched;
            const auto edit = next.make(timeline);
            auto back = apply_edit(timeline, edit, touched);
            if (!back) {
                EXPECT_EQ(state_text(timeline), states.back()) << "a refused edit changed something";
                continue;
            }
            // What is put on record must do the same as what was done.
            const auto stored = read_edit(write_edit(edit));
            ASSERT_TRUE(stored) << stored.message();
            EXPECT_EQ(write_edit(stored.value()), write_edit(edit));
            inverse.push_back(std::move(back).value());
            states.push_back(state_text(timeline));
        }
        ASSERT_GT(inverse.size(), 40U);
        while (!inverse.empty()) {
            change_set touched;
            states.pop_back();
            const auto again = apply_edit(timeline, inverse.back(), touched);
            ASSERT_TRUE(again) << again.message();
            inverse.pop_back();
            ASSERT_EQ(state_text(timeline), states.back());
        }
    }
}

TEST(edit, one_refused_amid_growing_clips_leaves_them_growing) {
    sxy_DATA_root timeline;
    random_edits next(5);
    int refused = 0;
    constexpr int edits = testing::is_sanitized ? 800 : 2000;
    for (int n = 0; n < edits; ++n) {
        const auto before = state_text(timeline);
        change_set touched;
        if (apply_edit(timeline, next.make(timeline), touched)) continue;
        ++refused;
        ASSERT_EQ(state_text(timeline), before);
    }
    EXPECT_GT(refused, edits / 20);
}

TEST(edit, a_stamp_is_put_on_the_clips_that_an_edit_changes) {
    const shared_text r("R");
    const shared_text s("S");
    const auto change = [](const char* clip, const char* key, property_value value,
                           property_array unset = {}) {
        operation::change_clip made{clip, {}, std::move(unset)};
        made.set.add(key, std::move(value));
        return made;
    };
    property_dictionary height;
    height.add("height", 9.0);
    auto dated = clip_of("n", 1, 2);
    dated.set_edit_info({5.0, shared_text("them"), {}});
    const auto insert = operation::insert_qualifier{"a", 0, qualifier_of("new", "Goal")};
    const struct {
        const char* name;
        std::vector<operation::any> operations;
        const char* clip;
        std::optional<double> seconds;
        const char* author;
    } cases[] = {
        {"values", {change("a", "stars", 3)}, "a", 9.0, "me"},
        {"a qualifier comes", {insert}, "a", 9.0, "me"},
        {"a qualifier goes", {operation::remove_qualifier{"a", "old"}}, "a", 9.0, "me"},
        {"another row", {operation::move_clip{"a", s}}, "a", 9.0, "me"},
        {"all at once", {insert, operation::move_clip{"a", s}, change("a", "stars", 3)}, "a", 9.0, "me"},
        {"another clip", {change("b", "stars", 3)}, "a", 5.0, "them"},
        {"one that had none", {change("b", "stars", 3)}, "b", 9.0, "me"},
        {"both are named", {change("a", "edit_seconds", 7.0, {"author"})}, "a", 7.0, ""},
        {"one is named", {change("a", "edit clip author", "her")}, "a", 9.0, "her"},
        {"a row", {operation::change_row{r, height, {}}}, "a", 5.0, "them"},
        {"a growing clip", {change("live", "stars", 3)}, "live", {}, ""},
        {"one that came",
         {operation::insert_clip{r, clip_of("n", 1, 2)}, change("n", "stars", 3)},
         "n",
         9.0,
         "me"},
        {"one that came and says when it was edited", {operation::insert_clip{r, dated}}, "n", 5.0, "them"},
        {"one that ended",
         {operation::finish_clip{"live", 1, 2}, change("live", "stars", 3)},
         "live",
         9.0,
         "me"},
        {"one that begins", {operation::begin_clip{r, clip_of("n", 7, 7)}}, "n", 9.0, "me"},
    };
    for (const auto& one : cases) {
        auto a = clip_of("a", 1, 2);
        a.set_edit_info({5.0, shared_text("them"), {}});
        a.set_qualifiers({qualifier_of("old", "Goal")});
        auto timeline = timeline_of(
            {operation::insert_row{0, row_of("R", "Shot")}, operation::insert_row{1, row_of("S", "Pass")},
             operation::insert_clip{r, a}, operation::insert_clip{r, clip_of("b", 3, 4)},
             operation::begin_clip{r, clip_of("live", 5, 5)}});
        change_set touched;
        const auto before = state_text(timeline);
        const bool ends = std::holds_alternative<operation::finish_clip>(one.operations.front());
        const timeline_edit edit{"Edit", "", one.operations, edit_stamp{"me", 9}};
        const auto back = apply_edit(timeline, edit, touched);
        ASSERT_TRUE(back) << one.name;
        const auto info = timeline.find_clip(one.clip)->clip->edit_info();
        EXPECT_EQ(info.edit_seconds, one.seconds) << one.name;
        EXPECT_EQ(info.author.str(), one.author) << one.name;
        const auto after = state_text(timeline);
        // Taken back, done again and taken back again, also by a document that stamps what names no stamp.
        std::vector<timeline_edit> backs{back.value()};
        for (int step = 0; step < 3 && !ends; ++step) {
            backs.back().is_complete = false;
            complete_edit(backs.back(), {"undoing", 100.0 + step});
            const auto next = apply_edit(timeline, backs.back(), touched);
            ASSERT_TRUE(next) << one.name;
            backs.push_back(next.value());
            EXPECT_EQ(state_text(timeline), step == 1 ? after : before) << one.name;
        }
    }
}

TEST(edit, a_refused_edit_leaves_the_timeline_equal) {
    const shared_text row("R");
    auto timeline = timeline_of({operation::insert_row{0, row_of("R", "Shot")},
                                 operation::insert_clip{row, clip_of("1", 1, 2)},
                                 operation::insert_clip{row, clip_of("2", 3, 4)}});
    change_set touched;
    const auto before = state_text(timeline);
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
        EXPECT_EQ(state_text(timeline), before);
    }
}

TEST(edit, deleting_leaves_a_tombstone_and_undo_takes_it_away) {
    const shared_text row("R");
    auto timeline = timeline_of({operation::insert_row{0, row_of("R", "Shot")},
                                 operation::insert_clip{row, clip_of("1", 1, 2)},
                                 operation::insert_clip{row, clip_of("2", 3, 4)}});
    change_set touched;
    const auto before = state_text(timeline);
    const auto back =
        apply_edit(timeline, plan_delete_clips(timeline, {"1", "2", "nobody"}, "me", 1e9), touched);
    ASSERT_TRUE(back) << back.message();
    EXPECT_EQ(timeline.clip_count(), 0U);
    ASSERT_EQ(timeline.rows()[0]->deleted_clips().size(), 2U);
    EXPECT_EQ(timeline.rows()[0]->deleted_clips()[1].deleted_clip_ID, "2");
    ASSERT_TRUE(apply_edit(timeline, back.value(), touched));
    EXPECT_EQ(state_text(timeline), before);
}

TEST(edit, of_thousands_of_clips_touches_each_once_and_is_taken_back) {
    constexpr int count = 5000;
    sxy_DATA_root timeline;
    const shared_text rows[] = {shared_text("R"), shared_text("S")};
    timeline_edit import{"Import", "", {}};
    for (const auto& row : rows)
        import.operations.emplace_back(operation::insert_row{9, row_of(row.str(), "")});
    for (int n = 0; n < count; ++n) {
        const std::string uuid = std::to_string(n);
        import.operations.emplace_back(operation::insert_clip{rows[n % 2], clip_of(uuid, n * 7919 % 100, n)});
        if (n % 3 == 0) import.operations.emplace_back(operation::move_clip{uuid, rows[(n + 1) % 2]});
    }
    const auto before = state_text(timeline);
    change_set touched;
    const auto back = apply_edit(timeline, import, touched);
    ASSERT_TRUE(back) << back.message();
    EXPECT_EQ(timeline.clip_count(), static_cast<std::size_t>(count));
    EXPECT_EQ(touched.clips.size(), static_cast<std::size_t>(count));
    EXPECT_EQ(touched.rows.size(), 2U);
    const auto after = state_text(timeline);
    const auto snapshot = timeline.snapshot();

    import.operations.emplace_back(operation::remove_clip{"nobody"});
    const auto forth = apply_edit(timeline, back.value(), touched);
    ASSERT_TRUE(forth) << forth.message();
    EXPECT_EQ(state_text(timeline), before);
    EXPECT_FALSE(apply_edit(timeline, import, touched)) << "the last operation cannot be done";
    EXPECT_EQ(state_text(timeline), before);
    ASSERT_TRUE(apply_edit(timeline, forth.value(), touched));
    EXPECT_EQ(state_text(timeline), after);
    EXPECT_EQ(state_text(sxy_DATA_root(snapshot)), after) << "the snapshot has kept it";
}

TEST(timeline, finds_rows_where_they_are_after_they_were_moved) {
    sxy_DATA_root timeline;
    std::vector<std::string> order;
    for (int n = 0; n < 9; ++n) {
        order.push_back("row " + std::to_string(n));
        ASSERT_TRUE(timeline.insert_row(n, row_of(order.back(), order.back())));
        ASSERT_TRUE(timeline.insert_clip(shared_text(order.back()), clip_of("in " + order.back(), 1, 2)));
    }
    const auto move = [&](std::size_t from, std::size_t to) {
        const auto moved = order[from];
        order.erase(order.begin() + static_cast<std::ptrdiff_t>(from));
        order.insert(order.begin() + static_cast<std::ptrdiff_t>(to), moved);
        ASSERT_TRUE(timeline.move_row(shared_text(moved), to));
    };
    move(0, 8);
    move(7, 2);
    move(3, 3);
    ASSERT_TRUE(timeline.remove_clip("in " + order[4]));
    ASSERT_TRUE(timeline.remove_row(shared_text(order[4])));
    order.erase(order.begin() + 4);
    ASSERT_TRUE(timeline.insert_row(1, row_of("new", "new")));
    order.insert(order.begin() + 1, "new");
    ASSERT_EQ(timeline.rows().size(), order.size());
    for (std::size_t index = 0; index < order.size(); ++index) {
        EXPECT_EQ(timeline.rows()[index]->name(), order[index]);
        EXPECT_EQ(timeline.row_index(shared_text(order[index])), index);
        if (order[index] == "new") continue;
        EXPECT_EQ(timeline.find_clip("in " + order[index])->row.str(), order[index]);
    }
}

TEST(timeline, gives_loaded_clips_that_share_an_identity_one_each) {
    timeline_snapshot loaded;
    for (int n = 0; n < 2; ++n) {
        auto row = std::make_shared<sxy_ROW>(row_of("R", ""));
        std::vector<clip_pointer> clips;
        for (const auto& [id, start, end] : {std::tuple("", 8, 9), {"", 9, 3}, {"1", 4, 2}, {"1", 5, 6}}) {
            clips.push_back(std::make_shared<sxy_CLIP>(clip_of(id, start, end)));
        }
        row->clips().assign(std::move(clips));
        loaded.rows.push_back(std::move(row));
    }
    const sxy_DATA_root timeline(loaded);
    EXPECT_EQ(timeline.clip_count(), 8U);
    EXPECT_FALSE(timeline.rows()[0]->uuid() == timeline.rows()[1]->uuid());
    std::set<std::string> uuids;
    for (const auto& row : timeline.rows()) {
        std::vector<double> starts;
        for (const auto& clip : row->clips()) {
            const auto found = timeline.find_clip(clip->id());
            ASSERT_TRUE(found);
            EXPECT_EQ(found->clip, clip);
            EXPECT_EQ(found->row, row->uuid());
            uuids.insert(clip->id());
            starts.push_back(clip->secs_start());
        }
        EXPECT_EQ(starts, (std::vector<double>{2, 3, 5, 8}));
    }
    EXPECT_EQ(uuids.size(), 8U);
    EXPECT_FALSE(uuids.contains(""));
    EXPECT_EQ(timeline.find_clip("1")->clip->secs_start(), 2) << "the first keeps its identity";
    EXPECT_EQ(loaded.rows[0]->clips()[0]->secs_start(), 4) << "what was loaded is not changed";
}

TEST(timeline, refuses_times_that_are_not_finite) {
    sxy_DATA_root timeline;
    ASSERT_TRUE(timeline.insert_row(0, row_of("R", "Shot")));
    const double never = std::numeric_limits<double>::infinity();
    const double nothing = std::numeric_limits<double>::quiet_NaN();
    for (const auto& [start, end] : {std::pair(nothing, 1.0), {1.0, nothing}, {-never, 1.0}, {1.0, never}}) {
        EXPECT_FALSE(timeline.insert_clip(shared_text("R"), clip_of("1", start, end)));
        EXPECT_FALSE(timeline.insert_live_clip(shared_text("R"), clip_of("1", start, end)));
    }
    EXPECT_EQ(timeline.clip_count(), 0U);
}

}  // namespace
}  // namespace vistels
