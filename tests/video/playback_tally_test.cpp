// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/playback_tally.h"

#include <gtest/gtest.h>

#if VISTELS_HAVE_MEDIA

#include "support/coded_movie.h"
#include "support/run_until.h"
#include "support/temporary_folder.h"
#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

using namespace vistels::testing;

TEST(playback_tally, takes_nothing_that_a_jump_passes_over_for_dropped) {
    const temporary_folder folder;
    const std::string movie = folder / "movie.mp4";
    ASSERT_TRUE(write_small_coded_movie(movie, 240, 30).ok());
    const std::vector<playback_vistel> vistels{{"a", 0, {{movie, 0, 8}}}};
    simulated_run_loop loop;
    synchronised_playback played(loop);
    played.set_volume(0);
    played.set_vistels(vistels);
    played.set_view_size("a", 160, 120);
    const auto settles = [&] { return comes_about(loop, [&] { return played.is_settled(); }); };
    ASSERT_TRUE(settles());
    playback_tally tally(vistels, played);
    for (const double to : {6.5, 1.2}) {
        played.scrub(to);
        ASSERT_TRUE(settles());
        loop.advance(0.2);  // the hand rests
        ASSERT_TRUE(settles());
    }
    played.seek(0);
    ASSERT_TRUE(settles());
    const auto run = [&](double seconds) {
        for (int tick = 0; tick < seconds * 60; ++tick) {
            loop.advance(1.0 / 60);
            EXPECT_TRUE(settles());
        }
    };
    played.play();
    run(1);
    const auto before = tally.health().front();
    EXPECT_GE(before.frames, 30);
    played.seek(4);
    run(0.05);
    EXPECT_EQ(before.dropped + tally.health().front().dropped, 0);
    EXPECT_GT(tally.health().front().frames, before.frames);
}

}  // namespace
}  // namespace vistels

#endif
