// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vaults/home_vault.h"

#include "app/event/dry_run.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "app/event/button_outputs.h"
#include "logger/code_window_change.h"
#include "support/opened_event.h"
#include "support/run_until.h"
#include "support/stored_event.h"
#include "support/temporary_folder.h"
#include "util/safe_write.h"
#include "util/simulated_run_loop.h"
#include "video/synchronised_playback.h"

namespace vistels {
namespace {

namespace fs = std::filesystem;
using testing::clip_button;
using testing::code;
using testing::file_bytes;
using testing::put_file;
using testing::temporary_folder;

// A vault with a collection of two vistels of 20 seconds whose movies hold nothing.
class event : public ::testing::Test {
  protected:
    event() { testing::put_stored_event(vault, folder, 3.5); }

    std::unique_ptr<open_event> open() {
        auto opened = open_event::open(folder, find_home_places(home.path()), loop);
        EXPECT_TRUE(opened) << opened.message();
        return opened ? std::move(opened).value() : nullptr;
    }

    temporary_folder home;
    const std::string vault = home / "Cup.VVault";
    const std::string folder = vault + "/Video Groups/Final";
    simulated_run_loop loop;
};

TEST_F(event, what_is_coded_is_there_after_reopening) {
    std::string button;
    {
        const auto opened = open();
        EXPECT_EQ(opened->playback().collection_time(), 3.5);
        EXPECT_EQ(opened->end_seconds(), 20);
        button = clip_button(*opened).uuid();
        code(*opened, 5, 7);
        EXPECT_EQ(opened->timeline().timeline().clip_count(), 1U);
        EXPECT_TRUE(opened->undo().undo());
        EXPECT_EQ(opened->timeline().timeline().clip_count(), 0U);
        EXPECT_TRUE(opened->undo().redo());
        opened->playback().seek(12.25);
        EXPECT_TRUE(opened->set_offset("A", 2));
    }
    const std::string log = file_bytes(home / "Home Folder.VVault/System/vistels presses.txt");
    EXPECT_NE(log.find(" down at 5\n"), std::string::npos) << log;
    EXPECT_NE(log.find(" up at 7: clip\n"), std::string::npos) << log;
    const auto opened = open();
    EXPECT_EQ(opened->timeline().timeline().clip_count(), 1U);
    EXPECT_EQ(opened->playback().collection_time(), 10.25);  // on its frame of "B"
    EXPECT_EQ(opened->start_seconds(), -2);
    EXPECT_NE(opened->logger().button(button), nullptr);  // the same code window
    EXPECT_EQ(opened->timeline().header().linked_collection, opened->collection().uuid());
}

TEST_F(event, buttons_show_what_their_formulas_count) {
    const auto opened = open();
    const std::string uuid = clip_button(*opened).uuid();
    const auto shows = [&](const std::string& text) {
        return testing::comes_about(loop, [&] { return opened->outputs().text_of(uuid) == text; });
    };
    const button_record counting = changed_button(*opened->logger().buttons().begin(), [](auto& button) {
        button.set_formula({"[RN]\"" + button.name() + "\"", "last time", "count", "", false, {}});
    });
    ASSERT_EQ(counting->uuid(), uuid);
    auto part = plan_button(opened->code_window_file().window(), counting);
    ASSERT_TRUE(part && opened->timeline().make({"Formula", "", {*part}}));
    EXPECT_EQ(opened->outputs().text_of(uuid), "last time") << "before it is counted";
    EXPECT_TRUE(shows("0"));
    code(*opened, 5, 7);
    code(*opened, 8, 9);
    EXPECT_TRUE(shows("2"));
    ASSERT_TRUE(opened->undo().undo());
    EXPECT_TRUE(shows("1"));
    // It goes into the file with the buttons when these are saved, and is no reason to save them.
    const auto saved_output = [&] {
        auto read = load_code_window(opened->code_window_file().folder());
        return read ? read.value().buttons.buttons[0]->formula().output_string : read.message();
    };
    ASSERT_TRUE(opened->save_all());
    EXPECT_EQ(saved_output(), "1");
    code(*opened, 12, 14);
    EXPECT_TRUE(shows("2"));
    EXPECT_FALSE(opened->code_window_file().has_unsaved_edits());
    auto wrong = counting->formula();
    wrong.filter = "[RN](";
    part = plan_button(opened->code_window_file().window(),
                       changed_button(counting, [&](auto& button) { button.set_formula(wrong); }));
    ASSERT_TRUE(part && opened->timeline().make({"Formula", "", {*part}}));
    EXPECT_TRUE(shows(""));
    EXPECT_TRUE(opened->outputs().problem_of(uuid)) << "and why is told";
    EXPECT_EQ(opened->outputs().text_of("no such button"), std::nullopt);
}

// However far the count is when the event closes, or the formulas become others.
TEST_F(event, closes_while_formulas_are_counted) {
    auto opened = open();
    for (int i = 0; i < 20; ++i) code(*opened, i, i + 0.5);
    const button_record counting = changed_button(*opened->logger().buttons().begin(), [](auto& button) {
        button.set_formula({"[RN]\"" + button.name() + "\"", "", "count", "", false, {}});
    });
    for (const char* filter : {"[RN]\"*\"", "[RN]\"x\"|[QN]\"y\"", "[RC]\"*\""}) {
        auto part =
            plan_button(opened->code_window_file().window(), changed_button(counting, [&](auto& button) {
                            auto formula = button.formula();
                            formula.filter = filter;
                            button.set_formula(formula);
                        }));
        ASSERT_TRUE(part && opened->timeline().make({"Formula", "", {*part}}));
    }
    opened.reset();
    loop.advance(1);  // what was counted comes to nobody
}

// A trigger that a press adds to a button is on record like a clip, and is taken back like one.
TEST_F(event, triggers_that_presses_add_to_buttons_outlive_a_kill) {
    const std::string file = path_join(logger_folder_of(folder), button_file_name);
    const auto triggers = [](open_event& opened) { return clip_button(opened).triggers().size(); };
    std::string target;
    std::string source;
    {
        const auto opened = open();
        code_window window = opened->code_window_file().window();
        target = clip_button(*opened).uuid();
        markup_Button_Item trigger;
        trigger.set_uuid(source = "T");
        trigger.set_name("Whistle");
        trigger.set_type(button_type::trigger);
        trigger.set_action_link_to(target);
        window.buttons.buttons.emplace_back(std::move(trigger));
        ASSERT_TRUE(save_button_dict(window.buttons, logger_folder_of(folder)));
    }
    temporary_folder killed;
    {
        const auto opened = open();
        const std::string before = file_bytes(file);
        opened->logger().press(source, 6.25);
        opened->logger().release(source, 6.25);
        EXPECT_EQ(triggers(*opened), 1U);
        EXPECT_EQ(file_bytes(file), before);
        fs::copy(vault, killed / "Cup.VVault", fs::copy_options::recursive);
        EXPECT_TRUE(opened->undo().undo());
        EXPECT_EQ(triggers(*opened), 0U);
        EXPECT_TRUE(opened->undo().redo());
        EXPECT_EQ(triggers(*opened), 1U);
    }
    EXPECT_EQ(triggers(*open()), 1U);  // saved
    fs::remove_all(vault);
    fs::copy(killed / "Cup.VVault", vault, fs::copy_options::recursive);
    {
        const auto opened = open();
        EXPECT_EQ(triggers(*opened), 1U);
        EXPECT_EQ(opened->undo().next_undo()->name, "Whistle");
    }
    EXPECT_NE(file_bytes(file).find("6.25"), std::string::npos);
    EXPECT_EQ(triggers(*open()), 1U);  // and once
    // Where the buttons cannot be read the journal keeps it until they can.
    fs::remove_all(vault);
    fs::copy(killed / "Cup.VVault", vault, fs::copy_options::recursive);
    const std::string whole = file_bytes(file);
    put_file(file, "<plist>");
    {
        const auto opened = open();
        code(*opened, 8, 9);
        EXPECT_FALSE(opened->save_all());
    }
    put_file(file, whole);
    const auto opened = open();
    EXPECT_EQ(triggers(*opened), 1U);
    EXPECT_EQ(opened->timeline().timeline().clip_count(), 1U);
    EXPECT_TRUE(opened->save_all());
}

// Only what the journal holds of the code window is saved before the timeline.
TEST_F(event, where_the_canvas_is_scrolled_to_does_not_keep_the_timeline_from_being_saved) {
    const auto opened = open();
    const std::string logger = logger_folder_of(folder);
    fs::rename(logger, logger + " away");
    put_file(logger, "no folder can be made here");
    auto settings = opened->code_window_file().window().settings;
    settings.scroller_offset_y = 40;
    opened->code_window_file().set_settings(settings);
    code(*opened, 5, 7);
    const auto saved = opened->timeline().save_now();
    EXPECT_TRUE(saved) << saved.message();
    EXPECT_FALSE(opened->save_all()) << "it is not saved yet";
    fs::remove(logger);
    fs::rename(logger + " away", logger);
    EXPECT_TRUE(opened->save_all());
    EXPECT_EQ(load_logger_settings(logger).scroller_offset_y, 40);
}

TEST_F(event, what_was_done_can_be_taken_back_after_closing_and_after_a_kill) {
    const auto clip_count = [](open_event& opened) { return opened.timeline().timeline().clip_count(); };
    {
        const auto opened = open();
        for (const double at : {5.0, 8.0, 11.0}) code(*opened, at, at + 2);
        EXPECT_TRUE(opened->undo().undo());
    }
    temporary_folder killed;
    {
        const auto opened = open();
        EXPECT_EQ(clip_count(*opened), 2U);
        EXPECT_TRUE(opened->undo().redo());
        EXPECT_EQ(clip_count(*opened), 3U);
        EXPECT_TRUE(opened->timeline().save_now());
        code(*opened, 14, 15);
        fs::copy(vault, killed / "Cup.VVault", fs::copy_options::recursive);
    }
    fs::remove_all(vault);
    fs::copy(killed / "Cup.VVault", vault, fs::copy_options::recursive);
    fs::remove(folder + "/chron data writer.plist");
    const auto opened = open();
    EXPECT_EQ(opened->recovered_edits(), 2U);
    for (std::size_t left = 4; left > 0; --left) {
        EXPECT_EQ(clip_count(*opened), left);
        EXPECT_TRUE(opened->undo().can_undo());
        EXPECT_TRUE(opened->undo().undo());
    }
    EXPECT_EQ(clip_count(*opened), 0U);
    EXPECT_FALSE(opened->undo().can_undo());
}

TEST_F(event, the_history_of_another_file_is_not_used) {
    {
        const auto opened = open();
        code(*opened, 5, 7);
    }
    auto bytes = file_bytes(folder + "/chron data.plist");
    put_file(folder + "/chron data.plist", bytes + "\n");
    EXPECT_FALSE(open()->undo().can_undo());
}

TEST_F(event, a_dry_run_tells_what_presses_would_set_off_and_changes_nothing) {
    const auto opened = open();
    code(*opened, 4, 6);
    markup_Button_Item second = clip_button(*opened);
    second.set_uuid("second");
    second.set_name("Corner kick");
    const auto& first = clip_button(*opened);
    dry_run wanted;
    wanted.timeline = opened->timeline().snapshot();
    wanted.buttons = {
        changed_button(opened->logger().buttons()[0],
                       [](auto& one) {
                           one.set_action_links({{"ON_DOWN_SET_DOWN", {}, "second", "", "", {}}});
                       }),
        second};
    const auto steps = read_press_lines(
        " 5  " + first.name() + " down \n\n6.5\t" + first.name() + " up\n7 tab", wanted.buttons);
    ASSERT_TRUE(steps) << steps.message();
    wanted.steps = steps.value();
    const auto outcome = run_dry(wanted, home / "dry");
    ASSERT_TRUE(outcome) << outcome.message();
    std::string told;
    for (const auto& one : outcome.value()) told += fired_text(one) + "\n";
    EXPECT_EQ(told, first.name() + " down at 5\nCorner kick down at 5 (link)\n" + first.name() +
                        " up at 6.5: clip\nCorner kick up at 7 (tab): clip\n");
    EXPECT_EQ(opened->timeline().timeline().clip_count(), 1U);
    EXPECT_TRUE(fs::is_empty(home / "dry"));
    const auto is_wrong = [&](const char* line) { return read_press_lines(line, wanted.buttons).message(); };
    EXPECT_EQ(is_wrong("1 tab\nGoal down"), "Line 2 does not begin with a time in seconds.");
    EXPECT_EQ(is_wrong("1"), "Line 1 does not end with \"down\", \"up\", \"tab\" or \"end\".");
    EXPECT_EQ(is_wrong("1 Corner down"), "Line 1 names a button that is not there: \"Corner\".");
    EXPECT_EQ(is_wrong("2 tab\n1 tab"), "Line 2 comes before the one before it; the times must ascend.");
    EXPECT_EQ(press_lines({second}, 3), "3 Corner kick down\n5 Corner kick up\n");
}

TEST_F(event, closing_releases_what_is_down) {
    {
        const auto opened = open();
        EXPECT_TRUE(opened->logger().press(clip_button(*opened).uuid(), 3.5));
    }
    const auto opened = open();
    EXPECT_EQ(opened->timeline().timeline().clip_count(), 1U);
    EXPECT_TRUE(opened->timeline().timeline().live_clips().empty());
}

TEST_F(event, opening_and_closing_without_a_change_writes_nothing) {
    open();  // links the records and makes the code window
    const auto record = file_bytes(folder + "/video group.plist");
    open();
    EXPECT_EQ(file_bytes(folder + "/video group.plist"), record);
}

TEST_F(event, an_auto_up_comes_without_playing) {
    const auto opened = open();
    auto button = clip_button(*opened);
    button.set_uuid("AUTO");
    button.set_auto_up(true);
    button.set_auto_up_duration(1);
    opened->logger().set_buttons({button}, 0);
    EXPECT_TRUE(opened->logger().press("AUTO", 5));
    loop.advance(0.5);
    EXPECT_TRUE(opened->logger().is_down("AUTO"));
    loop.advance(0.6);
    EXPECT_FALSE(opened->logger().is_down("AUTO"));
    EXPECT_EQ(opened->timeline().timeline().clip_count(), 1U);
}

TEST_F(event, a_second_opening_cannot_write) {
    const auto first = open();
    const auto record = file_bytes(folder + "/video group.plist");
    {
        const auto second = open();
        EXPECT_TRUE(second->timeline().is_read_only());
        EXPECT_FALSE(second->messages().empty());
        second->playback().seek(9);
        EXPECT_FALSE(second->set_offset("A", 4));
        // Nor do triggers press anything, to be on record when it can.
        second->set_silenced(true);
        second->logger().set_buttons(
            {changed_button(second->logger().buttons()[0],
                            [](auto& one) {
                                one.set_triggers({{9.5, shared_text("going down"), {}}});
                            })},
            9);
        second->playback().play();
        loop.advance(1);
        EXPECT_GT(second->playback().collection_time(), 9.5);
        EXPECT_TRUE(second->logger().down_buttons().empty());
        EXPECT_EQ(second->logger().unrecorded(), 0U);
    }
    EXPECT_EQ(file_bytes(folder + "/video group.plist"), record);
    EXPECT_FALSE(first->timeline().is_read_only());
}

}  // namespace
}  // namespace vistels
