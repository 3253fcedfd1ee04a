// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/event_reach.h"

#include <gtest/gtest.h>

#include "app/event/open_event.h"
#include "app/vaults/home_vault.h"
#include "support/stored_event.h"
#include "support/stored_timeline.h"
#include "support/temporary_folder.h"
#include "util/simulated_run_loop.h"
#include "video/synchronised_playback.h"

namespace vistels {
namespace {

using testing::clip_of;

struct event_reach_of : public ::testing::Test {
    void open(const std::string& folder) {
        opened = open_event::open(folder, find_home_places(home.path()), loop).value();
        // The sound device runs by the machine's clock, which is another here.
        opened->set_silenced(true);
        reach = std::make_unique<event_reach>(*opened);
        changed = reach->changed.connect([this] { ++told; });
    }
    void insert(const char* row, double start, double end) {
        const std::string clip = "clip " + std::to_string(start);
        ASSERT_TRUE(opened->timeline().apply(
            {"made", "", {operation::insert_clip{shared_text(row), clip_of(clip.c_str(), start, end)}}}));
    }

    testing::temporary_folder home;
    simulated_run_loop loop;
    std::unique_ptr<open_event> opened;
    std::unique_ptr<event_reach> reach;
    connection changed;
    int told = 0;
};

TEST_F(event_reach_of, a_clock_without_pictures_is_as_long_as_what_was_coded_or_as_it_has_run) {
    open(testing::put_stored_timeline(home / "Cup.VVault/Timelines/Away game"));
    EXPECT_EQ(reach->end(), 60) << "whole minutes, beyond the last clip";
    EXPECT_EQ(reach->pictures_end(), 60);
    insert("r", 50, 59);
    EXPECT_EQ(told, 0) << "nothing moves while there is room";
    insert("r", 61, 62);
    EXPECT_EQ(reach->end(), 120);
    EXPECT_EQ(told, 1);
    opened->playback().seek(119.5);
    told = 0;
    opened->playback().play();
    EXPECT_EQ(reach->end(), 120);
    loop.advance(2);
    EXPECT_EQ(reach->end(), 180);
    opened->playback().seek(200);  // on by hand, while it stands still as well
    opened->playback().pause();
    opened->playback().seek(250);
    EXPECT_EQ(reach->end(), 300);
    opened->playback().seek(10);
    EXPECT_EQ(reach->end(), 300) << "it does not come back under the hand";
}

TEST_F(event_reach_of, pictures_and_later_clips_make_the_end) {
    testing::put_stored_event(home / "Cup.VVault", home / "Cup.VVault/Video Groups/Final", 0);
    open(home / "Cup.VVault/Video Groups/Final");
    EXPECT_EQ(reach->start(), 0);
    EXPECT_EQ(reach->end(), 20);
    ASSERT_TRUE(
        opened->timeline().apply({"row", "", {operation::insert_row{0, testing::row_of("r", "Shot")}}}));
    insert("r", 25, 31);
    opened->playback().play();
    EXPECT_EQ(reach->end(), 31);
    EXPECT_EQ(reach->pictures_end(), 20);
}

}  // namespace
}  // namespace vistels
