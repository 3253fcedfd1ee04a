// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/event_player.h"

#include <gtest/gtest.h>

#include "app/event/open_event.h"
#include "app/settings/settings.h"
#include "app/settings/step_settings.h"
#include "app/vaults/home_vault.h"
#include "logger/press_engine.h"
#include "support/stored_event.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "util/simulated_run_loop.h"
#include "video/synchronised_playback.h"

namespace vistels {
namespace {

using testing::clip_of;
using testing::temporary_folder;

constexpr double a_tick = 1.0 / 60 + 1e-6;

// An event of 20 seconds with the clips "early" from 2 to 4 and "late" from 10 to 13.
class player : public ::testing::Test {
  protected:
    player() {
        testing::put_stored_event(home / "Cup.VVault", folder, 0);
        opened = open_event::open(folder, find_home_places(home.path()), loop).value();
        operated.set_event(opened.get());
        // The sound device runs by the machine's clock, which is another here.
        operated.set_muted(true);
        timeline_edit edit{"clips", "", {operation::insert_row{0, testing::row_of("row", "Shot")}}};
        for (const auto& clip : {clip_of("early", 2, 4), clip_of("late", 10, 13)}) {
            edit.operations.push_back(operation::insert_clip{shared_text("row"), clip});
        }
        EXPECT_TRUE(opened->timeline().apply(edit));
    }
    ~player() override { operated.set_event(nullptr); }

    void select(const std::vector<std::string>& clips) {
        opened->view().selection().select(clips);
        operated.follow_selection();
    }
    double now() const { return opened->playback().collection_time(); }
    bool plays() const { return opened->playback().is_playing(); }

    temporary_folder home;
    const std::string folder = home / "Cup.VVault/Video Groups/Final";
    simulated_run_loop loop;
    std::unique_ptr<open_event> opened;
    event_player operated;
};

TEST_F(player, a_jump_while_playing_passes_no_triggers_on_its_way) {
    markup_Button_Item button;
    button.set_uuid("goal");
    button.set_type(button_type::clip);
    button.set_triggers({{8, shared_text("going down"), {}}, {12, shared_text("going up"), {}}});
    opened->logger().set_buttons({button}, 0);
    std::string fired;
    const connection told =
        opened->logger().fired.connect([&](const button_fired& one) { fired += one.is_down ? '+' : '-'; });
    operated.play_or_pause();
    loop.advance(1);
    operated.seek(opened->end_seconds());
    loop.advance(1);
    EXPECT_EQ(fired, "");
    operated.seek(7);
    operated.play_or_pause();
    loop.advance(2);
    EXPECT_EQ(fired, "+");
    operated.seek(20);
    EXPECT_EQ(fired, "+-") << "the jump ends the clip";
    // Dragged while it plays, over triggers and up to the end, where it stops playing.
    for (const double last : {13.0, 20.0}) {
        fired.clear();
        operated.seek(5);
        opened->playback().play();
        for (const double to : {7.0, 9.0, last}) {
            operated.scrub(to);
            loop.advance(1.5);
        }
        operated.seek(7.5);
        EXPECT_EQ(fired, "") << last;
        opened->playback().play();
        loop.advance(1);
        EXPECT_EQ(fired, "+") << last;
        opened->playback().pause();
        opened->logger().release_all(now());
    }
}

// Whatever the rate, each once and in their order, at their own times.
TEST_F(player, triggers_are_passed_at_every_rate) {
    std::vector<markup_Button_Item> buttons;
    const struct {
        const char* uuid;
        std::vector<trigger_event_ITEM> triggers;
    } with[] = {
        {"goal", {{2, shared_text("going down"), {}}, {2.02, shared_text("going up"), {}}}},
        {"pass", {{2.01, shared_text("going down"), {}}, {2.4, shared_text("going up"), {}}}},
    };
    for (const auto& one : with) {
        buttons.emplace_back().set_uuid(one.uuid);
        buttons.back().set_type(button_type::clip);
        buttons.back().set_triggers(one.triggers);
    }
    opened->logger().set_buttons({buttons[0], buttons[1]}, 0);
    std::string fired;
    const connection told = opened->logger().fired.connect([&](const button_fired& one) {
        fired += one.button + (one.is_down ? "+" : "-") + std::to_string(std::lround(one.at * 100)) + " ";
    });
    for (const double rate : {0.1, 0.25, 1.0, 64.0}) {
        fired.clear();
        operated.seek(1.9);
        operated.set_rate(rate);
        opened->playback().play();
        loop.advance(0.6 / rate + 0.1);
        operated.pause();
        EXPECT_EQ(fired, "goal+200 pass+201 goal-202 pass-240 ") << rate;
    }
}

// Whether a button that went down at 5 is down after it, with the end of its clip when it is not.
TEST_F(player, a_jump_ends_what_is_coded_and_a_step_does_not) {
    const auto& all = opened->logger().buttons();
    const button_record first =
        *std::find_if(all.begin(), all.end(), [](const auto& one) { return one->is(button_type::clip); });
    opened->logger().set_buttons({changed_button(first,
                                                 [](auto& button) {
                                                     button.set_secs_in(2);
                                                     button.set_secs_out(0);
                                                     button.set_name("A");
                                                 })},
                                 0);
    const std::string button = first->uuid();
    const struct {
        const char* what;
        std::function<void()> act;
        bool stays_down;
    } cases[] = {
        {"step", [&] { operated.step(1); }, true},
        {"step back", [&] { operated.step(-2); }, true},
        {"pause", [&] { operated.pause(); }, true},
        {"back within the clip", [&] { operated.seek(5.5); }, true},
        {"out of it", [&] { operated.seek(2.9); }, false},
        {"on", [&] { operated.jump(1); }, false},
        {"to the end", [&] { operated.to_end(); }, false},
        {"a clip is played", [&] { operated.play_clip("late"); }, false},
        {"a pane seeks", [&] { operated.commands().seek(12); }, false},
        {"dragged out and back",
         [&] {
             for (const double to : {3.0, 12.0, 5.5}) {
                 operated.commands().scrub(to);
                 loop.advance(0.3);  // the hand rests
             }
             operated.commands().seek(5.5);
         },
         true},
        {"dragged back and out",
         [&] {
             for (const double to : {5.5, 3.0}) operated.scrub(to);
             operated.seek(2.9);
         },
         false},
        {"something else is pressed while it is dragged out",
         [&] {
             operated.scrub(2.9);
             EXPECT_TRUE(opened->logger().is_down(button));
             opened->logger().press("nobody", 2.9);
         },
         false},
    };
    for (const auto& one : cases) {
        opened->playback().seek(6);
        ASSERT_TRUE(opened->logger().press(button, 5)) << one.what;
        one.act();
        EXPECT_EQ(opened->logger().is_down(button), one.stays_down) << one.what;
        opened->logger().release_all(7);
        const auto row = opened->timeline().timeline().row_named("A");
        EXPECT_EQ(row->clips()[row->clips().size() - 1]->secs_end(), one.stays_down ? 7 : 6) << one.what;
        operated.pause();
        const auto clip = row->clips()[row->clips().size() - 1]->id();
        ASSERT_TRUE(opened->timeline().apply({"Delete", "", {operation::remove_clip{clip}}}));
    }
    // The loop turns within what is coded.
    select({"late"});
    operated.set_looping(true);
    opened->playback().seek(12);
    opened->playback().play();
    ASSERT_TRUE(opened->logger().press(button, 11));
    loop.advance(1.5);
    EXPECT_FALSE(opened->logger().is_down(button));
    const auto row = opened->timeline().timeline().row_named("A");
    EXPECT_NEAR(row->clips()[0]->secs_end(), 13, a_tick);
}

TEST_F(player, a_clip_is_played_from_its_start_to_its_end) {
    operated.set_rate(-2);
    operated.play_clip("late");
    EXPECT_DOUBLE_EQ(now(), 10);
    EXPECT_EQ(opened->playback().rate(), 1);
    loop.advance(2.95);
    EXPECT_TRUE(plays());
    loop.advance(1);
    EXPECT_FALSE(plays());
    EXPECT_NEAR(now(), 13, a_tick);

    // Whoever takes over plays on beyond the end.
    for (const bool by_seek : {true, false}) {
        operated.play_clip("late");
        loop.advance(1);
        if (by_seek) operated.seek(12);
        operated.shuttle(1);
        loop.advance(3);
        EXPECT_TRUE(plays());
        EXPECT_GT(now(), 14);
        operated.pause();
        EXPECT_EQ(opened->playback().rate(), 1);
    }
    // A part of it, and how far it is.
    EXPECT_EQ(operated.clip_fraction(), std::nullopt);
    operated.play_clip("late", 0.5);
    EXPECT_DOUBLE_EQ(now(), 11.5);
    loop.advance(0.75);
    EXPECT_NEAR(*operated.clip_fraction(), 0.75, 0.01);
    loop.advance(2);
    EXPECT_NEAR(now(), 13, a_tick);
    EXPECT_EQ(operated.clip_fraction(), std::nullopt);
    // With a lead-in, and a halt at each pause point.
    step_settings steps;
    steps.lead_in_seconds = 1.5;
    ASSERT_TRUE(save_step_settings(find_home_places(home.path()), steps));
    auto halting = clip_of("halting", 6, 9);
    halting.set_pause_items({{7, false}, {8, false}});
    ASSERT_TRUE(
        opened->timeline().apply({"clip", "", {operation::insert_clip{shared_text("row"), halting}}}));
    operated.play_clip("halting");
    EXPECT_DOUBLE_EQ(now(), 4.5);
    for (const double halt : {7.0, 8.0, 9.0}) {
        loop.advance(4);
        EXPECT_FALSE(plays());
        EXPECT_NEAR(now(), halt, halt == 9 ? a_tick : 1e-9);
        operated.play_or_pause();
        EXPECT_TRUE(plays());
    }
    loop.advance(1);
    EXPECT_TRUE(plays());  // it was over
    operated.pause();
    ASSERT_TRUE(save_step_settings(find_home_places(home.path()), {}));
    select({"early", "late"});
    operated.play_clip();
    EXPECT_DOUBLE_EQ(now(), 2);
    operated.seek(7);
    operated.play_clip("gone");
    EXPECT_DOUBLE_EQ(now(), 7);
}

TEST_F(player, a_loop_goes_round_the_one_selected_clip_or_the_event) {
    struct {
        std::vector<std::string> selected;
        double rate;
        double from;
        double seconds;
        double ends_at;
    } const cases[] = {
        {{"early"}, 1, 3, 2.5, 3.5},   // 3 to 4, then from 2
        {{"early"}, -1, 3, 2.5, 2.5},  // 3 to 2, then from 4
        {{"early", "late"}, 1, 19, 3, 2}, {{}, 1, 19, 3, 2}, {{"late"}, 0.5, 12, 3, 10.5},
    };
    operated.set_looping(true);
    for (const auto& one : cases) {
        select(one.selected);
        operated.seek(one.from);
        operated.set_rate(one.rate);
        opened->playback().play();
        loop.advance(one.seconds);
        EXPECT_TRUE(plays());
        EXPECT_NEAR(now(), one.ends_at, 3 * a_tick) << one.from << " at " << one.rate;
        operated.pause();
    }
    // A clip with its lead-in each time, and with its halts.
    step_settings steps;
    steps.lead_in_seconds = 1;
    ASSERT_TRUE(save_step_settings(find_home_places(home.path()), steps));
    auto halting = clip_of("halting", 6, 8);
    halting.set_pause_items({{7, false}});
    ASSERT_TRUE(
        opened->timeline().apply({"clip", "", {operation::insert_clip{shared_text("row"), halting}}}));
    select({"halting"});
    operated.play_clip();
    for (int round = 0; round < 2; ++round) {
        EXPECT_NEAR(now(), 5, 2 * a_tick);
        loop.advance(5);
        EXPECT_FALSE(plays());
        EXPECT_DOUBLE_EQ(now(), 7);
        operated.play_or_pause();
        loop.advance(1 + a_tick);
        EXPECT_TRUE(plays());
    }
    operated.pause();
    ASSERT_TRUE(save_step_settings(find_home_places(home.path()), {}));
    // Turned on and off in the middle, and not while clips are played one after another.
    select({"early"});
    operated.set_looping(false);
    operated.seek(3);
    operated.play_or_pause();
    loop.advance(2);
    EXPECT_NEAR(now(), 5, a_tick);
    operated.set_plays_list(true);
    operated.set_looping(true);
    loop.advance(1);
    EXPECT_NEAR(now(), 6, a_tick);
    operated.set_plays_list(false);
    loop.advance(0.5);
    EXPECT_NEAR(now(), 2.5, 2 * a_tick);
}

TEST_F(player, rates_and_places_stay_within_the_event) {
    operated.seek(5);
    opened->playback().set_top_speed(-3);
    for (const double rate : {1.0, 2.0, 4.0, 8.0, 16.0}) {
        operated.shuttle(1);
        EXPECT_EQ(opened->playback().rate(), rate);
    }
    for (const double rate : {-1.0, -2.0, -3.0, -3.0}) {
        operated.shuttle(-1);
        EXPECT_EQ(opened->playback().rate(), rate);
    }
    for (const double rate : {-0.5, -0.25, -0.1, -0.1}) {
        operated.play_slower(-1);
        EXPECT_EQ(opened->playback().rate(), rate);
    }
    operated.shuttle(1);
    operated.shuttle(-1);
    EXPECT_EQ(opened->playback().rate(), -1);
    operated.play_or_pause();
    EXPECT_FALSE(plays());
    operated.play_or_pause();
    EXPECT_EQ(opened->playback().rate(), 1);  // playing is forwards
    operated.seek(1e9);
    EXPECT_DOUBLE_EQ(now(), 20);
    operated.pause();
    operated.play_or_pause();  // at the end it begins anew
    EXPECT_DOUBLE_EQ(now(), 0);
    operated.pause();
    operated.jump(5);
    EXPECT_DOUBLE_EQ(now(), 5);
    operated.to_end();
    EXPECT_DOUBLE_EQ(now(), 20);
    operated.to_start();
    operated.jump(-3);
    EXPECT_DOUBLE_EQ(now(), 0);
}

TEST_F(player, what_is_heard_is_the_product_of_both_volumes) {
    operated.set_volume(0.5);
    operated.set_application_volume(0.4);
    EXPECT_DOUBLE_EQ(opened->playback().volume(), 0.2);
    operated.set_muted(true);
    EXPECT_EQ(opened->playback().volume(), 0);
    operated.change_volume(1);  // which unmutes
    EXPECT_FALSE(operated.is_muted());
    EXPECT_DOUBLE_EQ(operated.volume(), 0.6);
    operated.set_heard(false);
    EXPECT_EQ(opened->playback().volume(), 0);
    operated.set_heard(true);
    EXPECT_DOUBLE_EQ(opened->playback().volume(), 0.24);
    operated.change_volume(7);
    EXPECT_EQ(operated.volume(), 1);
    EXPECT_TRUE(operated.keep_volumes());
    EXPECT_DOUBLE_EQ(load_application_volume(find_home_places(home.path())), 0.4);

    // What a person chose for the window holds for its next event.
    operated.set_muted(true);
    operated.set_event(nullptr);
    operated.set_volume(0.1);
    opened.reset();
    opened = open_event::open(folder, find_home_places(home.path()), loop).value();
    operated.set_event(opened.get());
    EXPECT_EQ(opened->playback().volume(), 0);
    EXPECT_EQ(operated.volume(), 1);
}

TEST_F(player, each_vistel_is_enlarged_in_turn) {
    std::vector<std::string> seen;
    const auto kept = operated.enlarged_changed.connect([&] { seen.push_back(opened->enlarged()); });
    for (int i = 0; i < 4; ++i) operated.enlarge_next();
    EXPECT_EQ(seen, (std::vector<std::string>{"A", "B", "", "A"}));
}

}  // namespace
}  // namespace vistels
