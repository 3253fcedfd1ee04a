// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/automatic_presser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <set>

#include "app/event/open_event.h"
#include "app/vaults/home_vault.h"
#include "logger/press_engine.h"
#include "support/stored_event.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "timeline/edits/edit_names.h"
#include "util/simulated_run_loop.h"
#include "video/synchronised_playback.h"

namespace vistels {
namespace {

using testing::clip_of;
using testing::temporary_folder;

constexpr std::uint32_t seed = 3;
constexpr double cycle_seconds = 2;
constexpr double a_moment = 1e-3;
constexpr double auto_up_seconds = 1;

markup_Button_Item button_of(const char* name, button_type type) {
    markup_Button_Item button;
    button.set_uuid(name);
    button.set_name(name);
    button.set_type(type);
    return button;
}

// An event with a code window that has a button of every type, and the analyst's own clip from 2 to 4 on the
// row of one of them.
class pressing : public ::testing::Test {
  protected:
    pressing() {
        testing::put_stored_event(home / "Cup.VVault", folder, 0);
        opened = open();
        opened->set_silenced(true);  // the sound device runs by the machine's clock, which is another here
        auto up_by_itself = button_of("E", button_type::clip);
        up_by_itself.set_auto_up(true);
        up_by_itself.set_auto_up_duration(auto_up_seconds);
        std::vector<markup_Button_Item> buttons = {
            button_of("A", button_type::clip),       button_of("B", button_type::clip),
            button_of("Q", button_type::qualifier),  button_of("X", button_type::attribute),
            button_of("T", button_type::timer_clip), button_of("G", button_type::trigger),
            button_of("N", button_type::none),       up_by_itself};
        for (auto& one : buttons) one.set_allow_overlapping_clips(true);
        opened->logger().set_buttons({buttons.begin(), buttons.end()}, 0);
        EXPECT_TRUE(
            opened->timeline().apply({"clips",
                                      "",
                                      {operation::insert_row{0, testing::row_of("row", "A")},
                                       operation::insert_clip{shared_text("row"), clip_of("own", 2, 4)}}}));
        fired = opened->logger().fired.connect([this](const button_fired& one) {
            if (one.is_down && one.cause == press_cause::presser) pressed.push_back(one.button);
            if (one.made == made_kind::clip) ++clips_made;
        });
    }

    std::unique_ptr<open_event> open() {
        return open_event::open(folder, find_home_places(home.path()), loop).value();
    }
    static test_press_settings on(std::int64_t buttons, bool deletes = false) {
        return {true, buttons, cycle_seconds, deletes, false};
    }
    // The cycles come half way between the moments to which the clock goes.
    void turn_on(automatic_presser& presser, const test_press_settings& settings) {
        presser.set_settings(settings);
        loop.advance(a_moment);
    }
    // To just before the next cycle, and through it; the buttons that it pressed.
    std::vector<std::string> next_cycle() {
        loop.advance(cycle_seconds - 2 * a_moment);
        pressed.clear();
        loop.advance(2 * a_moment);
        return pressed;
    }
    std::size_t down() const { return opened->logger().down_buttons().size(); }
    std::size_t clips() const { return opened->timeline().timeline().clip_count(); }

    temporary_folder home;
    const std::string folder = home / "Cup.VVault/Video Groups/Final";
    simulated_run_loop loop;
    std::unique_ptr<open_event> opened;
    std::vector<std::string> pressed;
    std::size_t clips_made = 0;
    connection fired;
};

TEST_F(pressing, presses_so_many_of_the_free_buttons_in_each_cycle_until_it_is_turned_off) {
    automatic_presser presser(*opened, loop, seed);
    for (const bool plays : {false, true}) {
        if (plays) opened->playback().play();
        turn_on(presser, on(5));
        std::set<std::string> all;
        for (int cycle = 0; cycle < 40; ++cycle) {
            loop.advance(cycle_seconds - 2 * a_moment);
            const std::size_t free = opened->logger().buttons().size() - down();
            pressed.clear();
            loop.advance(2 * a_moment);
            ASSERT_EQ(pressed.size(), std::min<std::size_t>(5, free)) << "cycle " << cycle;
            all.insert(pressed.begin(), pressed.end());
            const std::set<std::string> once(pressed.begin(), pressed.end());
            ASSERT_EQ(once.size(), pressed.size()) << "each once";
        }
        EXPECT_EQ(all.size(), 8U) << "of every type";
        EXPECT_TRUE(presser.is_pressing());
        EXPECT_GT(down(), 0U);
        test_press_settings off = on(5);
        off.presses_buttons = false;
        presser.set_settings(off);
        EXPECT_FALSE(presser.is_pressing());
        loop.advance(auto_up_seconds + a_moment);
        EXPECT_EQ(down(), 0U) << "what goes up by itself included";
        EXPECT_TRUE(opened->timeline().timeline().live_clips().empty());
        pressed.clear();
        loop.advance(10 * cycle_seconds);
        EXPECT_TRUE(pressed.empty());
    }
    EXPECT_GT(clips_made, 100U);
    EXPECT_EQ(clips(), clips_made + 1);
    EXPECT_EQ(opened->logger().unrecorded(), 0U);
}

// The hand presses a button before the presser does, and one that the presser holds.
TEST_F(pressing, leaves_to_a_hand_what_the_hand_holds) {
    press_engine& engine = opened->logger();
    ASSERT_TRUE(engine.press("A", 0));
    auto presser = std::make_unique<automatic_presser>(*opened, loop, seed);
    turn_on(*presser, on(1000));
    const auto first = next_cycle();
    EXPECT_EQ(first.size(), 7U);
    EXPECT_EQ(std::count(first.begin(), first.end(), "A"), 0);
    ASSERT_TRUE(engine.is_down("B"));
    EXPECT_FALSE(engine.press("B", 0)) << "it is down already";
    for (int cycle = 0; cycle < 20; ++cycle) {
        const auto next = next_cycle();
        EXPECT_EQ(std::count(next.begin(), next.end(), "A") + std::count(next.begin(), next.end(), "B"), 0);
        ASSERT_TRUE(engine.is_down("A") && engine.is_down("B"));
    }
    presser.reset();
    loop.advance(auto_up_seconds + a_moment);
    EXPECT_EQ(down(), 2U);
    EXPECT_TRUE(engine.release("A", 1));
    EXPECT_TRUE(engine.release("B", 1));
}

TEST_F(pressing, deletes_of_its_own_clips_only_where_that_is_asked_and_it_can_be_taken_back) {
    automatic_presser presser(*opened, loop, seed);
    turn_on(presser, on(4));
    for (int cycle = 0; cycle < 30; ++cycle) next_cycle();
    EXPECT_EQ(clips(), clips_made + 1);
    // What somebody else had a part in is not the presser's alone; all that there is by now.
    timeline_edit stars{"Stars", "", {}};
    for (const auto& row : opened->timeline().timeline().rows()) {
        for (const auto& clip : row->clips()) {
            operation::change_clip change{clip->id(), {}, {}};
            change.set.set("stars", 1);
            stars.operations.emplace_back(std::move(change));
        }
    }
    ASSERT_TRUE(opened->timeline().apply(stars));

    std::size_t deleted = 0;
    std::vector<std::string> deleted_last;
    const auto deleting = opened->timeline().edited.connect([&](const timeline_edit& one, const auto&) {
        if (one.name != edit_name::delete_clip && one.name != edit_name::delete_clips) return;
        deleted_last.clear();
        for (const auto& any : one.operations) {
            const auto* removed = std::get_if<operation::remove_clip>(&any);
            if (removed) deleted_last.push_back(removed->clip);
        }
        deleted += deleted_last.size();
    });
    turn_on(presser, on(4, true));
    for (int cycle = 0; cycle < 200; ++cycle) next_cycle();
    EXPECT_GT(deleted, 20U);
    EXPECT_EQ(clips(), clips_made + 1 - deleted);
    const auto has = [&](const std::string& clip) {
        return opened->timeline().timeline().find_clip(clip).has_value();
    };
    for (const auto& any : stars.operations) EXPECT_TRUE(has(std::get<operation::change_clip>(any).clip));

    presser.set_settings({});
    const std::vector<std::string> wanted = deleted_last;
    for (bool is_back = false; !is_back;) {
        ASSERT_TRUE(opened->undo().can_undo());
        is_back = opened->undo().undo_name().starts_with(edit_name::delete_clip);
        ASSERT_TRUE(opened->undo().undo());
    }
    EXPECT_TRUE(std::all_of(wanted.begin(), wanted.end(), has));
}

TEST_F(pressing, presses_nothing_while_the_event_can_only_be_read) {
    fired.disconnect();
    const auto second = open();
    ASSERT_TRUE(second->timeline().is_read_only());
    automatic_presser presser(*second, loop, seed);
    int changes = 0;
    int pressed_there = 0;
    const auto changing = presser.changed.connect([&] { ++changes; });
    const auto telling = second->logger().fired.connect([&](const button_fired&) { ++pressed_there; });
    presser.set_settings(on(3));
    loop.advance(5 * cycle_seconds);
    EXPECT_FALSE(presser.is_pressing());
    EXPECT_EQ(pressed_there + changes, 0);
    opened.reset();
    second->prepare_to_write(false);
    ASSERT_TRUE(second->write_prepared());
    EXPECT_TRUE(presser.is_pressing());
    EXPECT_EQ(changes, 1);
    loop.advance(cycle_seconds + a_moment);
    EXPECT_GE(pressed_there, 3);
}

}  // namespace
}  // namespace vistels
