// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>

#include "video/synchronised_playback.h"

#if VISTELS_HAVE_MEDIA

#include "support/held_volume.h"
#include "support/played_cameras.h"

namespace vistels {
namespace {

using namespace vistels::testing;

TEST_F(playback, a_still_picture_is_shown_at_all_times_and_counts_for_nothing_else) {
    picture_pool pool;
    const auto still = pool.make(32, 16);
    std::fill(still->bytes.begin(), still->bytes.end(), std::uint8_t{200});
    ASSERT_TRUE(write_png(*still, folder_ / "board.png"));
    played_.set_vistels(
        {{"still", 0, {{folder_ / "board.png", 0, 0, true}}}, {"a", 1.0, {{folder_ / "long.mp4", 0, 4}}}});
    EXPECT_EQ(played_.first_time(), -1);
    EXPECT_EQ(played_.last_time(), 3);
    for (const double seconds : {-1.0, 0.0, 2.5}) {
        seek(seconds);
        ASSERT_EQ(played_.state("still"), vistel_state::showing) << played_.problem("still").message();
        const auto shown_picture = played_.picture("still");
        EXPECT_EQ(shown_picture->width, 32);
        EXPECT_NEAR(shown_picture->row(8)[4 * 16], 200, 3);
    }
    // Frames are stepped by those of the camera.
    seek(0.5);
    const int before = shown("a");
    step(1);
    EXPECT_EQ(shown("a"), before + 1);
}

TEST_F(playback, a_vistel_goes_while_its_movie_is_still_being_opened) {
    held_volume volume;
    played_.set_vistels({{"a", 0, {{folder_ / "long.mp4", 0, 4}}}, {"b", 0, {}}});
    played_.set_view_size("a", 160, 120);
    played_.seek(1);
    ASSERT_TRUE(wait_for([&] { return volume.holds(); }));
    played_.set_vistels({{"b", 0, {}}});
    EXPECT_TRUE(volume.holds());
    volume.release();
}

TEST_F(playback, plays_on_and_back_to_the_end_and_stops) {
    set_both();
    for (const double rate : {8.0, -8.0}) {
        seek(rate > 0 ? 3 : 2);
        int changes = 0;
        const auto kept = played_.pictures_changed.connect([&] { ++changes; });
        played_.set_rate(rate);
        played_.play();
        EXPECT_TRUE(played_.is_playing());
        EXPECT_TRUE(played_.timer_runs());
        ASSERT_TRUE(wait_for([&] { return !played_.is_playing() && played_.is_settled(); }));
        EXPECT_EQ(played_.collection_time(), rate > 0 ? played_.last_time() : played_.first_time());
        EXPECT_GT(changes, 0);
        // Frames passed over while playing fast are not left in place of the right one.
        EXPECT_EQ(shown("b"), rate > 0 ? 29 : 0);
        ASSERT_TRUE(wait_for([&] { return !played_.timer_runs(); }));
    }
}

TEST_F(playback, one_unreadable_movie_leaves_the_others_alone) {
    put_file(folder_ / "broken.mp4", "this is no movie");
    played_.set_vistels({{"a", 0.0, {{folder_ / "long.mp4", 0, 4}}},
                         {"missing", 0.0, {{folder_ / "missing.mp4", 0, 4}}},
                         {"broken", 0.0, {{folder_ / "broken.mp4", 0, 4}}},
                         {"empty", 0.0, {}}});
    seek(1);
    EXPECT_EQ(shown("a"), 30);
    for (const char* uuid : {"missing", "broken"}) {
        EXPECT_EQ(played_.state(uuid), vistel_state::unreadable);
        EXPECT_NE(played_.problem(uuid).message().find(std::string(uuid) + ".mp4"), std::string::npos);
        EXPECT_EQ(played_.picture(uuid), nullptr);
    }
    EXPECT_EQ(played_.state("empty"), vistel_state::unreadable);
    played_.set_rate(4);
    played_.play();
    ASSERT_TRUE(wait_for([&] { return !played_.is_playing() && played_.is_settled(); }));
    EXPECT_EQ(shown("a"), 119);
}

TEST_F(playback, pictures_come_in_the_size_asked_for) {
    set_both();
    seek(1);
    EXPECT_EQ(played_.picture("a")->width, 160);
    played_.set_view_size("a", 200, 150);
    ASSERT_TRUE(wait_for([&] { return played_.picture("a")->width == 200; }));
    EXPECT_EQ(shown("a"), 30);
}

// The second one is scrolled away; the first is the one that is stepped by.
TEST_F(playback, what_is_out_of_sight_is_not_read) {
    set_both();
    seek(1);
    EXPECT_EQ(shown("b"), 45);
    played_.set_seen("b", false);
    EXPECT_EQ(played_.picture("b"), nullptr);
    EXPECT_TRUE(played_.is_settled());
    seek(2);
    EXPECT_EQ(shown("a"), 60);
    EXPECT_EQ(played_.picture("b"), nullptr);
    played_.set_seen("b", true);
    EXPECT_NE(shown("b"), 45);  // the old one would pass for the one of this time
    ASSERT_TRUE(wait_for([&] { return played_.is_settled(); }));
    EXPECT_EQ(shown("b"), 75);
    played_.set_seen("a", false);
    step(1);
    EXPECT_EQ(shown("a"), 61);
    EXPECT_NEAR(played_.collection_time(), 61 / 30.0, 0.001);
    played_.set_rate(4);
    played_.play();
    EXPECT_EQ(played_.picture("a"), nullptr);
    ASSERT_TRUE(wait_for([&] { return !played_.is_playing() && played_.is_settled(); }));
    EXPECT_EQ(shown("b"), 29);
    EXPECT_EQ(shown("a"), 119);
}

TEST_F(playback, goes_away_in_the_middle_of_work) {
    bool is_gone = false;
    for (int i = 0; i < 20; ++i) {
        is_gone = false;
        {
            synchronised_playback short_lived(loop_);
            short_lived.set_vistels({{"a", 0.0, {{folder_ / "long.mp4", 0, 4}}}});
            short_lived.seek(i * 0.1, [&] { EXPECT_FALSE(is_gone); });
        }
        is_gone = true;
        loop_.run_until([] { return false; }, 0);
    }
}

}  // namespace
}  // namespace vistels

#endif
