// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/collection_changes.h"
#include "app/vaults/home_vault.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "app/event/offset_changes.h"
#include "app/event/open_event.h"
#include "app/event/vistel_changes.h"
#include "logger/press_engine.h"
#include "support/stored_event.h"
#include "support/temporary_folder.h"
#include "util/simulated_run_loop.h"
#include "video/synchronised_playback.h"
#include "video/video_coll_LOAD.h"
#include "video/video_coll_Offsets.h"

namespace vistels {
namespace {

namespace fs = std::filesystem;
using testing::temporary_folder;

// An event of the vistels "A" and "B" of 20 seconds, with a clip from 5 to 7 that has a qualifier at 6.
class changes : public ::testing::Test {
  protected:
    changes() {
        testing::put_stored_event(vault, folder, 5.5);
        reopen();
        sxy_ROW row;
        row.set_uuid(shared_text("R"));
        sxy_CLIP clip;
        clip.set_id("C");
        clip.set_secs_start(5);
        clip.set_secs_end(7);
        clip.set_pause_items({{5.5}});
        qual_ITEM qualifier;
        qualifier.set_uuid("Q");
        qualifier.set_time(6);
        clip.set_qualifiers({qualifier});
        const auto applied = event->timeline().apply(
            {"setup", "", {operation::insert_row{0, row}, operation::insert_clip{shared_text("R"), clip}}});
        EXPECT_TRUE(applied) << applied.message();
    }
    void reopen() {
        event.reset();
        auto opened = open_event::open(folder, find_home_places(home.path()), loop);
        EXPECT_TRUE(opened) << opened.message();
        event = opened ? std::move(opened).value() : nullptr;
    }
    void make(const collection_change& change) {
        const auto made = event->changes().make(change);
        EXPECT_TRUE(made) << made.message();
    }
    std::shared_ptr<single_Vistel_CTR> vistel(const char* uuid) {
        return event->collection().find_vistel(uuid);
    }
    // The time of the vistel's own movie at a collection time.
    double movie_time(const char* uuid, double seconds) {
        return movie_time_at(event->collection(), uuid, seconds).value_or(-1);
    }
    clip_pointer clip() { return event->timeline().timeline().find_clip("C")->clip; }
    // Everything that must be back after undo: the records and the timeline's times.
    std::string state() {
        std::string text = std::to_string(clip()->secs_start()) + " " + std::to_string(clip()->secs_end()) +
                           " " + std::to_string(clip()->qualifiers()->front().time()) + " " +
                           std::to_string(clip()->pause_items().front().seconds) + " " +
                           std::to_string(event->playback().collection_time());
        for (const auto& one : event->collection().vistels()) {
            text += "\n" + one->uuid() + " " + one->name() + " " +
                    std::to_string(one->manual_start_offset().value_or(-99)) + " " +
                    std::to_string(one->saved_view_order()) +
                    one->overlay().value_or(vistel_overlay{}).picture +
                    rectangle_text(one->proportion_rect().value_or(rectangle{}));
        }
        return text;
    }
    // What another opening finds in the files.
    video_collection_ROOT saved() { return load_collection(folder).value().collection; }

    temporary_folder home;
    const std::string vault = home / "Cup.VVault";
    const std::string folder = vault + "/Video Groups/Final";
    simulated_run_loop loop;
    std::unique_ptr<open_event> event;
};

TEST_F(changes, an_offset_moves_the_clips_so_that_they_stay_on_their_frames) {
    // Steps of largest offsets 0 -> 4 -> 1.5 -> 0 (all below 0), by changes of either vistel.
    const struct {
        const char* vistel;
        double offset;
        const char* other;
    } steps[] = {{"A", 4, "B"}, {"B", -3, "A"}, {"A", 1.5, "B"}, {"A", -2, "B"}};
    for (const auto& step : steps) {
        const double start = movie_time(step.other, clip()->secs_start());
        const double stamped = movie_time(step.other, clip()->qualifiers()->front().time());
        const double pause = movie_time(step.other, clip()->pause_items().front().seconds);
        const double playhead = movie_time(step.other, event->playback().collection_time());
        EXPECT_TRUE(event->set_offset(step.vistel, step.offset));
        EXPECT_EQ(vistel(step.vistel)->manual_start_offset(), step.offset);
        EXPECT_NEAR(movie_time(step.other, clip()->secs_start()), start, 1e-9) << step.offset;
        EXPECT_NEAR(movie_time(step.other, clip()->qualifiers()->front().time()), stamped, 1e-9);
        EXPECT_NEAR(movie_time(step.other, clip()->pause_items().front().seconds), pause, 1e-9);
        EXPECT_NEAR(movie_time(step.other, event->playback().collection_time()), playhead, 1e-9);
        EXPECT_EQ(saved().find_vistel(step.vistel)->manual_start_offset(), step.offset);
    }
}

TEST_F(changes, every_kind_is_taken_back_and_done_again_and_outlives_closing) {
    const collection_change frame{
        "Move Vistel", "B", [](video_collection_ROOT& copy) -> result<void> {
            copy.find_vistel("B")->set_proportion_rect(rectangle{0.1, 0.2, 0.5, 0.5});
            copy.find_vistel("A")->set_saved_view_order(7);
            return {};
        }};
    const collection_change all[] = {
        plan_offset("A", 3),
        plan_offset_nudge("B", 0.04),
        frame,
        plan_name("A", "Main"),
        plan_sound_vistel("B"),
        plan_overlay("A", vistel_overlay{"crest.png"}),
        plan_place("A", 9),
        plan_same_moment({"A", 7}, {"B", 9.5}),
        plan_removal("A"),
    };
    std::vector<std::string> states{state()};
    for (const auto& change : all) {
        make(change);
        EXPECT_EQ(event->undo().undo_name(), change.name);
        states.push_back(state());
        loop.advance(2);
        if (change.name == "Vistel Name") reopen();
    }
    EXPECT_EQ(vistel("A"), nullptr);
    EXPECT_NEAR(*vistel("B")->manual_start_offset(), 3 + 7 - 9.5, 1e-9);
    EXPECT_TRUE(fs::exists(vault + "/Single Videos/A/part 001.mp4"));
    reopen();
    for (std::size_t at = std::size(all); at-- > 0;) {
        ASSERT_TRUE(event->undo().undo());
        EXPECT_EQ(state(), states[at]) << all[at].name;
    }
    EXPECT_TRUE(event->collection().vistel_for_sound().empty());
    EXPECT_EQ(saved().find_vistel("A")->parts().parts.size(), 1U);
    for (std::size_t at = 0; at < std::size(all); ++at) {
        ASSERT_TRUE(event->undo().redo());
        EXPECT_EQ(state(), states[at + 1]) << all[at].name;
    }
    EXPECT_EQ(event->collection().vistel_for_sound(), "B");
}

TEST_F(changes, a_drag_is_one_step_saved_once_and_can_be_cancelled) {
    const std::string before = state();
    const auto record = testing::file_bytes(folder + "/video group.plist");
    event->changes().begin("Vistel Offset");
    for (int step = 1; step <= 200; ++step) make(plan_offset_nudge("A", 0.05));
    EXPECT_EQ(testing::file_bytes(folder + "/video group.plist"), record);
    EXPECT_TRUE(event->changes().end());
    EXPECT_NEAR(*saved().find_vistel("A")->manual_start_offset(), 10, 1e-9);
    EXPECT_NEAR(clip()->secs_start(), -5, 1e-9);
    EXPECT_EQ(event->undo().history().undo.back().operations->size(), 2U);
    const std::string dragged = state();
    event->changes().begin("Vistel Offset");
    for (int step = 1; step <= 5; ++step) make(plan_offset_nudge("A", -1));
    EXPECT_TRUE(event->changes().cancel());
    EXPECT_EQ(state(), dragged);
    EXPECT_TRUE(event->undo().undo());
    EXPECT_EQ(state(), before);
}

// The collection's file is the older one: the program died between the journal and the save of the last
// change, of both, or of none. The playhead comes back on its frame.
TEST_F(changes, a_kill_before_the_collection_is_saved_leaves_both_in_step) {
    ASSERT_TRUE(event->save_all());
    temporary_folder killed;
    std::vector<std::string> records{testing::file_bytes(folder + "/video group.plist")};
    EXPECT_TRUE(event->set_offset("A", 4));
    records.push_back(testing::file_bytes(folder + "/video group.plist"));
    make(plan_removal("B"));
    records.push_back(testing::file_bytes(folder + "/video group.plist"));
    const std::string wanted = state();
    fs::copy(vault, killed / "Cup.VVault", fs::copy_options::recursive);
    for (const auto& record : records) {
        event.reset();
        fs::remove_all(vault);
        fs::copy(killed / "Cup.VVault", vault, fs::copy_options::recursive);
        fs::remove(folder + "/chron data writer.plist");
        testing::put_file(folder + "/video group.plist", record);
        reopen();
        EXPECT_EQ(state(), wanted);
    }
    EXPECT_EQ(vistel("B"), nullptr);
    EXPECT_EQ(vistel("A")->manual_start_offset(), 4);
    EXPECT_EQ(clip()->secs_start(), 1);
    EXPECT_EQ(saved().vistels().size(), 1U);
    EXPECT_TRUE(event->undo().undo());
    EXPECT_TRUE(event->undo().undo());
    EXPECT_EQ(clip()->secs_start(), 5);
    EXPECT_EQ(event->collection().vistels().size(), 2U);
}

TEST_F(changes, what_grows_moves_along) {
    const auto& buttons = event->logger().buttons();
    const auto button = std::find_if(buttons.begin(), buttons.end(), [](const auto& one) {
                            return one.is(button_type::clip);
                        })->uuid();
    event->playback().seek(10);
    EXPECT_TRUE(event->logger().press(button, 10));
    EXPECT_TRUE(event->set_offset("A", 4));
    const auto growing = event->timeline().timeline().live_clips();
    ASSERT_EQ(growing.size(), 1U);
    EXPECT_EQ(growing.front().clip->secs_start(), 6);
    EXPECT_EQ(event->playback().collection_time(), 6);
    EXPECT_TRUE(event->logger().release(button, 8));
    const auto made = event->timeline().timeline().find_clip(growing.front().clip->id());
    EXPECT_NEAR(movie_time("B", made->clip->secs_end()), 12, 1);
    EXPECT_NEAR(movie_time("B", made->clip->secs_start()), 10, 5.01);  // and "secs in"
}

TEST_F(changes, a_refused_change_changes_nothing) {
    const std::string before = state();
    EXPECT_FALSE(event->changes().make(plan_offset("nobody", 3)));
    EXPECT_FALSE(event->changes().make(plan_offset("A", 1e12)));
    // A part of an edit that cannot be done refuses the rest.
    auto change = plan_offset("A", 3);
    change.operations.emplace_back(operation::remove_clip{"nobody"});
    EXPECT_FALSE(event->changes().make(change));
    EXPECT_EQ(state(), before);
    // So does the collection's part refuse the timeline's.
    property_dictionary nobody;
    nobody.add("order", property_array{"X"});
    EXPECT_FALSE(event->timeline().apply(
        {"no", "", {operation::shift_times{3}, operation::change_beside{nobody, nobody}}}));
    EXPECT_EQ(state(), before);
    EXPECT_EQ(saved().find_vistel("A")->manual_start_offset(), std::nullopt);
}

TEST_F(changes, nothing_below_the_first_movie_can_be_sought_or_coded) {
    EXPECT_TRUE(event->set_offset("B", -6));
    EXPECT_EQ(event->start_seconds(), -6);
    event->playback().seek(-100);
    EXPECT_EQ(event->playback().collection_time(), -6);
    const auto& buttons = event->logger().buttons();
    const auto button = std::find_if(buttons.begin(), buttons.end(), [](const auto& one) {
                            return one.is(button_type::clip);
                        })->uuid();
    EXPECT_TRUE(event->logger().press(button, -4));
    EXPECT_TRUE(event->logger().release(button, -3.5));
    event->playback().seek(-4.5);
    reopen();
    EXPECT_EQ(event->playback().collection_time(), -4.5);
    std::size_t below = 0;
    for (const auto& row : event->timeline().timeline().rows()) {
        for (const auto& one : row->clips()) below += one->secs_start() < 0 && one->secs_start() >= -6;
    }
    EXPECT_EQ(below, 1U);
}

}  // namespace
}  // namespace vistels
