// SPDX-License-Identifier: GPL-3.0-or-later
// Movies that are not those on record: they are shown as they are, and told.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <filesystem>

#include "video/synchronised_playback.h"

#if VISTELS_HAVE_MEDIA

#include "support/coded_movie.h"
#include "support/temporary_folder.h"
#include "util/plain_run_loop.h"
#include "video/collection_failures.h"

namespace vistels {
namespace {

using namespace vistels::testing;

constexpr double wait_seconds = 60;

TEST(changed_movies, are_told_and_play_as_they_are) {
    const temporary_folder folder;
    const std::string movie = folder / "two seconds.mp4";
    movie_writer_settings settings;
    settings.width = 320;
    settings.height = 240;
    settings.preset = "ultrafast";
    settings.threads = 1;
    settings.sound_channels = 2;
    ASSERT_TRUE(write_coded_movie(movie, settings, 60).ok());
    const struct {
        double recorded;
        bool differs;
    } cases[] = {
        {2, false}, {0, false}, {2 + 1.0 / 30, false}, {2.05, false}, {1.95, false}, {34, true}, {1, true},
    };
    for (const auto& one : cases) {
        plain_run_loop loop;
        synchronised_playback played(loop);
        played.set_volume(0);
        played.set_vistels({{"right", 0, {{movie, 0, 2}}}, {"other", 0, {{movie, 0, one.recorded}}}});
        for (const char* uuid : {"right", "other"}) played.set_view_size(uuid, 160, 120);
        for (const double seconds : {0.5, 1.9, 20.0}) {
            bool done = false;
            played.seek(seconds, [&] { done = true; });
            ASSERT_TRUE(loop.run_until([&] { return done; }, wait_seconds)) << seconds;
            const double at = std::min(seconds, played.last_time());
            for (const char* uuid : {"right", "other"}) {
                EXPECT_EQ(played.state(uuid), vistel_state::showing);
                EXPECT_EQ(read_frame_number(*played.picture(uuid)),
                          std::min(59L, static_cast<long>(std::floor(at * 30 + 0.01))));
            }
            EXPECT_FALSE(played.difference_from_record("right"));
            EXPECT_EQ(bool(played.difference_from_record("other")), one.differs) << one.recorded;
        }
        if (one.recorded == 34) {
            EXPECT_EQ(played.difference_from_record("other").message(), "changed: 2.0 s, on record 34.0 s");
        }
    }
}

// A copy of a vault has other times; a movie that takes another one's place is opened anew, and told.
TEST(changed_movies, are_told_when_they_are_changed_while_they_are_shown) {
    const temporary_folder folder;
    const std::string movie = folder / "movie.mp4";
    ASSERT_TRUE(write_small_coded_movie(folder / "long.mp4", 90, 20).ok());
    ASSERT_TRUE(write_small_coded_movie(folder / "short.mp4", 30, 20).ok());
    std::filesystem::copy_file(folder / "long.mp4", movie);
    std::filesystem::last_write_time(
        movie, std::filesystem::file_time_type::clock::now() - std::chrono::hours(24 * 365));
    plain_run_loop loop;
    synchronised_playback played(loop);
    played.set_volume(0);
    played.set_vistels({{"whole", 0, {{folder / "long.mp4", 0, 3}}}, {"changed", 0, {{movie, 0, 3}}}});
    bool done = false;
    played.seek(0.5, [&] { done = true; });
    ASSERT_TRUE(loop.run_until([&] { return done; }, wait_seconds));
    EXPECT_FALSE(played.difference_from_record("changed"));
    int told = 0;
    const connection heard = played.pictures_changed.connect([&] { ++told; });
    std::filesystem::rename(folder / "short.mp4", movie);
    played.set_rate(0.1);
    played.play();
    ASSERT_TRUE(loop.run_until([&] { return bool(played.difference_from_record("changed")); }, wait_seconds));
    EXPECT_GT(told, 0);
    EXPECT_FALSE(played.difference_from_record("whole"));
    EXPECT_TRUE(played.is_playing());
    ASSERT_TRUE(
        loop.run_until([&] { return played.state("changed") == vistel_state::showing; }, wait_seconds));
}

}  // namespace
}  // namespace vistels

#endif
