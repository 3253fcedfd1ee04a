// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "video/synchronised_playback.h"

#if VISTELS_HAVE_MEDIA

#include "support/played_cameras.h"
#include "support/run_until.h"
#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

using namespace vistels::testing;

TEST_F(playback, seeks_are_exact_by_the_offset_rule) {
    set_both();
    EXPECT_EQ(played_.first_time(), -0.5);
    EXPECT_EQ(played_.last_time(), 5.5);
    struct {
        double seconds;
        int a, b;
    } const cases[] = {{1.0, 30, 45},     {0, 0, 15},       {3.98, 119, -1}, {-0.5, -1, 0},  {2.5, 75, 90},
                       {3.4999, 105, -1}, {3.49, 104, 119}, {4.6, 119, 3},   {5.5, 119, 29}, {-99, -1, 0}};
    for (const auto& c : cases) {
        seek(c.seconds);
        EXPECT_EQ(shown("a"), c.a) << c.seconds;
        EXPECT_EQ(shown("b"), c.b) << c.seconds;
    }
    played_.set_lead("b", 0.25);
    seek(1);
    EXPECT_EQ(shown("b"), 37);
}

TEST_F(playback, the_latest_seek_wins) {
    set_both();
    bool first_done = false;
    played_.seek(3.0, [&] { first_done = true; });
    seek(1.0);
    EXPECT_FALSE(first_done);
    EXPECT_EQ(shown("a"), 30);
}

TEST_F(playback, steps_frame_by_frame_over_groups_of_pictures) {
    set_both();
    seek(2.1);
    for (int frame = 62; frame > 15; --frame) {
        step(-1);
        ASSERT_EQ(shown("a"), frame);
        ASSERT_NEAR(played_.collection_time(), frame / 30.0, 0.001);
    }
    for (int frame = 17; frame < 40; ++frame) {
        step(1);
        ASSERT_EQ(shown("a"), frame);
        ASSERT_EQ(shown("b"), frame + 15);
    }
    seek(0);
    step(-1);
    EXPECT_LT(played_.collection_time(), 0);
    EXPECT_EQ(shown("b"), 14);
}

TEST_F(playback, steps_of_several_frames_add_up) {
    set_both();
    seek(1);
    for (const auto& [frames, shown_after] : {std::pair{7, 37}, {-12, 25}, {30, 55}, {-1, 54}, {-999, -1}}) {
        step(frames);
        EXPECT_EQ(shown("a"), shown_after) << frames;
    }
    EXPECT_EQ(played_.collection_time(), played_.first_time());
    seek(1);
    bool done = false;
    played_.step(6);
    played_.step(9, [&] { done = true; });  // while the first are on their way, or after them
    ASSERT_TRUE(wait_for([&] { return done; }));
    EXPECT_EQ(shown("a"), 45);
    // A seek ends them.
    played_.step(50);
    seek(0.5);
    EXPECT_EQ(shown("a"), 15);
    EXPECT_NEAR(played_.collection_time(), 0.5, 1e-9);
}

TEST_F(playback, a_dragging_hand_sees_key_frames_at_once_and_the_very_frame_when_it_rests) {
    simulated_run_loop loop;
    synchronised_playback played(loop);
    played.set_volume(0);
    played.set_vistels({{"a", 0.0, {{folder_ / "long.mp4", 0, 4}}}});
    played.set_view_size("a", 160, 120);
    const auto frame = [&] { return played.picture("a") ? read_frame_number(*played.picture("a")) : -1; };
    // Key frames lie 20 frames apart.
    const std::pair<double, int> ways[] = {{2.3, 60}, {1.2, 20}, {3.9, 100}, {3.4, 100}, {0.1, 0}};
    for (const auto& [seconds, key] : ways) {
        played.scrub(seconds);
        EXPECT_EQ(played.collection_time(), seconds);
        ASSERT_TRUE(comes_about(loop, [&] { return played.is_settled(); }));
        EXPECT_EQ(frame(), key) << seconds;
    }
    played.scrub(2.5);
    ASSERT_TRUE(comes_about(loop, [&] { return played.is_settled() && frame() == 60; }));
    loop.advance(0.2);
    ASSERT_TRUE(comes_about(loop, [&] { return played.is_settled() && frame() == 75; }));
}

TEST_F(playback, a_seek_with_tolerance_takes_what_is_near) {
    struct {
        double seconds, tolerance;
        int frame;  // of the first vistel; key frames are 20 frames apart
    } const cases[] = {{2.3, 1, 60}, {2.3, 0.2, 63}, {1.2, 0.15, 33}, {2.3, 0, 69}};
    for (const auto& c : cases) {
        synchronised_playback fresh(loop_);
        fresh.set_volume(0);
        fresh.set_vistels({{"a", 0.0, {{folder_ / "long.mp4", 0, 4}}}});
        fresh.set_view_size("a", 160, 120);
        int done = 0;
        fresh.seek({c.seconds, c.tolerance, "test"}, [&] { ++done; });
        ASSERT_TRUE(wait_for([&] { return done == 1; }));
        const int frame = read_frame_number(*fresh.picture("a"));
        EXPECT_LE(frame, c.seconds * 30 + 0.01) << c.tolerance;
        EXPECT_GE(frame, (c.seconds - c.tolerance) * 30 - 1.01) << c.tolerance;
        if (c.tolerance == 1 || c.tolerance == 0) {
            EXPECT_EQ(frame, c.frame);
        }
        EXPECT_TRUE(fresh.is_settled());
        // Exactly, when that is asked for.
        fresh.seek(c.seconds, [&] { ++done; });
        ASSERT_TRUE(wait_for([&] { return done == 2; }));
        EXPECT_EQ(read_frame_number(*fresh.picture("a")), static_cast<int>(c.seconds * 30 + 0.01));
    }
}

TEST_F(playback, one_vistel_is_sought_alone_and_comes_back_to_the_clock) {
    set_both();
    seek(1);
    std::vector<int> seen;
    const auto kept = played_.pictures_changed.connect([&] { seen.push_back(shown("b")); });
    bool done = false;
    played_.seek_vistel("b", {2.2, 0, "test"}, [&] { done = true; });
    EXPECT_EQ(played_.seek_source("b"), "test");
    ASSERT_TRUE(wait_for([&] { return done; }));
    EXPECT_EQ(shown("b"), 81);
    EXPECT_EQ(played_.seek_source("b"), "");
    EXPECT_FALSE(played_.is_settled());
    ASSERT_TRUE(wait_for([&] { return played_.is_settled(); }));
    EXPECT_EQ(shown("b"), 45);
    EXPECT_EQ(shown("a"), 30);
    EXPECT_EQ(std::count(seen.begin(), seen.end(), 81), 1);
    // A seek of all takes its place, and is told in turn; what is cancelled is not.
    done = false;
    played_.seek_vistel("b", {3, 0, "test"}, [&] { done = true; });
    seek(0.5);
    EXPECT_EQ(shown("b"), 30);
    played_.seek(2, [&] { done = true; });
    played_.cancel_seeks();
    ASSERT_TRUE(wait_for([&] { return played_.is_settled() && shown("b") == 75; }));
    EXPECT_FALSE(done);
}

}  // namespace
}  // namespace vistels

#endif
