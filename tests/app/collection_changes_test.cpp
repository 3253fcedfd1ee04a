// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/collection_changes.h"
#include "app/vaults/home_vault.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <sstream>

#include "app/event/offset_changes.h"
#include "app/event/timeline_links.h"
#include "app/event/vistel_changes.h"
#include "document/journal_lines.h"
#include "logger/code_window_change.h"
#include "logger/press_engine.h"
#include "support/opened_event.h"
#include "support/run_until.h"
#include "support/stored_collection.h"
#include "support/stored_event.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "timeline/files/timeline_form.h"
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
        sxy_CLIP clip = testing::clip_of("C", 5, 7);
        clip.set_pause_items({{5.5}});
        qual_ITEM qualifier = testing::qualifier_of("Q", "");
        qualifier.set_time(6);
        clip.set_qualifiers({qualifier});
        const auto applied = event->timeline().apply({"setup",
                                                      "",
                                                      {operation::insert_row{0, testing::row_of("R", "")},
                                                       operation::insert_clip{shared_text("R"), clip}}});
        EXPECT_TRUE(applied) << applied.message();
    }
    void reopen() {
        event.reset();
        auto opened = open_event::open(folder, find_home_places(home.path()), loop);
        EXPECT_TRUE(opened) << opened.message();
        event = opened ? std::move(opened).value() : nullptr;
    }
    // The vault is as it would be if the program died now, and nobody has it open.
    void be_killed() {
        fs::copy(vault, killed / "Cup.VVault", fs::copy_options::recursive);
        put_back_as_killed();
    }
    void put_back_as_killed() {
        event.reset();
        fs::remove_all(vault);
        fs::copy(killed / "Cup.VVault", vault, fs::copy_options::recursive);
        fs::remove(folder + "/chron data writer.plist");
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
    video_collection_ROOT saved() {
        EXPECT_TRUE(event->save_all());
        return load_collection(folder).value().collection;
    }

    temporary_folder home;
    const temporary_folder killed;
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
    event->changes().end();
    EXPECT_NEAR(*saved().find_vistel("A")->manual_start_offset(), 10, 1e-9);
    EXPECT_NEAR(clip()->secs_start(), -5, 1e-9);
    EXPECT_EQ(event->undo().history().undo.back().parts->size(), 2U);
    const std::string dragged = state();
    event->changes().begin("Vistel Offset");
    for (int step = 1; step <= 5; ++step) make(plan_offset_nudge("A", -1));
    EXPECT_TRUE(event->changes().cancel());
    EXPECT_EQ(state(), dragged);
    EXPECT_TRUE(event->undo().undo());
    EXPECT_EQ(state(), before);
}

// They lie on the collection's clock as clips do.
TEST_F(changes, triggers_of_buttons_move_with_the_clips) {
    const auto trigger = [this] { return event->logger().buttons()[0]->triggers().at(0).trigger_Time; };
    const button_record with_trigger = changed_button(event->logger().buttons()[0], [](auto& button) {
        button.set_triggers({{10, shared_text("going down"), {}}});
    });
    auto part = plan_button(event->code_window_file().window(), with_trigger);
    ASSERT_TRUE(part && event->timeline().make({"Trigger", "", {*part}}));
    const double clip_before = clip()->secs_start();
    EXPECT_TRUE(event->set_offset("A", 4));
    const double moved = clip()->secs_start() - clip_before;
    ASSERT_NE(moved, 0);
    EXPECT_NEAR(trigger(), 10 + moved, 1e-9);
    be_killed();
    reopen();
    EXPECT_NEAR(trigger(), 10 + moved, 1e-9);
    EXPECT_TRUE(event->undo().undo());
    EXPECT_NEAR(trigger(), 10, 1e-9);
}

// The collection's file is the older one: the program died between the journal and the save of the last
// change, of both, or of none. The playhead comes back on its frame.
TEST_F(changes, a_kill_before_the_collection_is_saved_leaves_both_in_step) {
    ASSERT_TRUE(event->save_all());
    auto& collection = event->collection_file();
    std::vector<std::string> records{testing::file_bytes(folder + "/video group.plist")};
    EXPECT_TRUE(event->set_offset("A", 4));
    EXPECT_TRUE(collection.save_now());
    records.push_back(testing::file_bytes(folder + "/video group.plist"));
    make(plan_removal("B"));
    EXPECT_TRUE(collection.save_now());
    records.push_back(testing::file_bytes(folder + "/video group.plist"));
    const std::string wanted = state();
    be_killed();
    for (const auto& record : records) {
        put_back_as_killed();
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

// Ctrl+S: what was changed and where the playhead stands is saved while the loop runs on, and told once both
// are.
TEST_F(changes, saving_soon_saves_both_and_tells) {
    make(plan_offset("A", 4));
    event->playback().seek(9);
    std::vector<std::string> told;
    const auto telling =
        event->save_ended.connect([&](const failure& problem) { told.push_back(problem.message()); });
    event->save_soon();
    EXPECT_TRUE(event->has_unsaved_edits());
    ASSERT_TRUE(testing::comes_about(loop, [&] { return !event->has_unsaved_edits(); }));
    EXPECT_EQ(told, (std::vector<std::string>{"", ""}));
    const auto found = load_collection(folder).value().collection;
    EXPECT_EQ(found.find_vistel("A")->manual_start_offset(), 4);
    EXPECT_EQ(found.movie_time(), 9);
    EXPECT_EQ(load_timeline_header(folder).cursor_seconds, 9);
    // The volume alone, which is no edit.
    event->set_volume(0.25);
    EXPECT_TRUE(event->keep_volumes());
    ASSERT_TRUE(testing::comes_about(loop, [&] { return told.size() == 3; }));
    EXPECT_EQ(load_collection(folder).value().collection.volume(), 0.25);
}

// The command line changes a timeline without its collection: what the journal alone held of that is not
// lost.
TEST_F(changes, a_timeline_changed_on_its_own_after_a_kill_stays_in_step) {
    ASSERT_TRUE(event->save_all());
    EXPECT_TRUE(event->set_offset("A", 4));
    const std::string wanted = state();
    be_killed();
    {
        // One that knows nothing of collections leaves them to the journal.
        auto timeline = timeline_document::open(folder, loop);
        ASSERT_TRUE(timeline);
        EXPECT_FALSE(timeline.value()->save_now());
    }
    {
        auto timeline = open_linked_timeline(folder, find_home_places(home.path()), loop);
        ASSERT_TRUE(timeline) << timeline.message();
        EXPECT_TRUE(timeline.value()->save_now());
    }
    reopen();
    EXPECT_EQ(event->recovered_edits(), 0U);
    EXPECT_EQ(state(), wanted);
}

TEST_F(changes, who_takes_over_has_what_was_on_record_alone) {
    auto second = open_event::open(folder, find_home_places(home.path()), loop);
    ASSERT_TRUE(second);
    ASSERT_TRUE(second.value()->timeline().is_read_only());
    EXPECT_TRUE(event->set_offset("A", 4));
    second.value()->prepare_to_write(true);
    ASSERT_TRUE(second.value()->write_prepared());
    EXPECT_EQ(second.value()->collection().find_vistel("A")->manual_start_offset(), 4);
    EXPECT_EQ(second.value()->timeline().timeline().find_clip("C")->clip->secs_start(), 1);
    // The one that lost it writes neither file any more.
    EXPECT_FALSE(event->set_offset("A", 9));
    event.reset();
    EXPECT_TRUE(second.value()->save_all());
    EXPECT_EQ(load_collection(folder).value().collection.find_vistel("A")->manual_start_offset(), 4);
}

// As journals and undo histories held it before edits named their documents.
property_dictionary older_form(property_dictionary edit) {
    property_array all;
    for (const auto& value : edit.array("documents") ? *edit.array("documents") : property_array()) {
        property_dictionary one = *value.dictionary();
        one.remove("kind");
        one.remove("uuid");
        one.add("do", "change beside");
        all.emplace_back(std::move(one));
    }
    edit.remove("documents");
    for (const auto& value : *edit.array("operations")) all.push_back(value);
    edit.set("operations", std::move(all));
    return edit;
}

TEST_F(changes, the_older_form_on_record_is_taken_up) {
    ASSERT_TRUE(event->save_all());
    make(plan_offset("A", 4));
    make(plan_removal("B"));
    const std::string wanted = state();
    be_killed();
    std::size_t edits = 0;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (segment_number(entry.path().filename().string(), timeline_form) == 0) continue;
        std::istringstream lines(testing::file_bytes(entry.path().string()));
        std::string rewritten;
        for (std::string line; std::getline(lines, line);) {
            std::uint64_t sum = 0;
            property_dictionary document = *read_line(line, sum).dictionary();
            if (const auto* edit = document.dictionary("edit")) {
                ++edits;
                document.set("edit", older_form(*edit));
            }
            rewritten += line_of(document);
        }
        EXPECT_EQ(rewritten.find("documents"), std::string::npos);
        testing::put_file(entry.path().string(), rewritten);
    }
    EXPECT_EQ(edits, 2U);
    reopen();
    EXPECT_EQ(state(), wanted);
    // The same for the history, which goes with the file.
    auto history = write_undo_history(event->undo().history());
    property_array steps;
    for (const auto& step : *history.array("undo")) steps.emplace_back(older_form(*step.dictionary()));
    history.set("undo", std::move(steps));
    event->undo().restore(read_undo_history(history));
    EXPECT_TRUE(event->undo().undo());
    EXPECT_TRUE(event->undo().undo());
    EXPECT_EQ(clip()->secs_start(), 5);
    EXPECT_EQ(event->collection().vistels().size(), 2U);
    EXPECT_TRUE(event->undo().redo());
    EXPECT_TRUE(event->undo().redo());
    EXPECT_EQ(state(), wanted);
}

TEST_F(changes, what_grows_moves_along) {
    const auto button = testing::clip_button(*event).uuid();
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
    collection_edit nobody;
    nobody.order = {"X"};
    timeline_edit both{"no", "", {operation::shift_times{3}}};
    both.others = {collection_part(event->collection(), nobody, nobody)};
    EXPECT_FALSE(event->timeline().apply(both));
    // And one of another collection, or of a document that is not open, is not made to this one.
    const auto other = collection_part(video_collection_ROOT(), {}, {});
    for (const document_id& id :
         {document_id{document_kind::collection, "X"}, document_id{document_kind::composer, ""}}) {
        both.others = {{id, other.change, other.back}};
        EXPECT_FALSE(event->timeline().apply(both));
    }
    EXPECT_EQ(state(), before);
    EXPECT_EQ(saved().find_vistel("A")->manual_start_offset(), std::nullopt);
}

// A document that no timeline keeps: undo needs no more of it than of any.
TEST(collection_alone, is_changed_and_taken_back) {
    const testing::stored_collection stored;
    simulated_run_loop loop;
    collection_document document(stored.folder(), loop);
    document.take_up(stored.load());
    undo_stack undo(document, loop);
    const auto rename = [&](const char* name) {
        auto copy = detached_copy(document.record());
        copy.vistels().front()->set_name(name);
        auto part = collection_part(document.record(), difference(document.record(), copy),
                                    difference(copy, document.record()));
        EXPECT_TRUE(document.make({"Name", "A", {part}}));
    };
    for (const char* name : {"one", "two", "three"}) rename(name);  // soon after each other: one step
    loop.advance(5);
    EXPECT_TRUE(document.save_now());
    EXPECT_EQ(stored.load().collection.vistels().front()->name(), "three");
    rename("four");
    EXPECT_TRUE(undo.undo());
    EXPECT_EQ(document.record().vistels().front()->name(), "three");
    EXPECT_TRUE(undo.undo());
    EXPECT_EQ(document.record().vistels().front()->name(), "");
    EXPECT_FALSE(undo.can_undo());
    EXPECT_TRUE(undo.redo());
    EXPECT_TRUE(undo.redo());
    EXPECT_EQ(document.record().vistels().front()->name(), "four");
}

TEST_F(changes, nothing_below_the_first_movie_can_be_sought_or_coded) {
    EXPECT_TRUE(event->set_offset("B", -6));
    EXPECT_EQ(event->start_seconds(), -6);
    event->playback().seek(-100);
    EXPECT_EQ(event->playback().collection_time(), -6);
    testing::code(*event, -4, -3.5);
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
