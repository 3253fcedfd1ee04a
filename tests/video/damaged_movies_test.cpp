// SPDX-License-Identifier: GPL-3.0-or-later
// Copies of a movie with bytes flipped or cut off beside a whole one: whatever they show, nothing crashes or
// hangs, and the whole one plays.
#include <gtest/gtest.h>

#include <cmath>

#include "support/failure_runs.h"
#include "video/synchronised_playback.h"

#if VISTELS_HAVE_MEDIA

#include "media/sound_reader.h"
#include "support/coded_movie.h"
#include "util/plain_run_loop.h"

namespace vistels {
namespace {

using namespace vistels::testing;

constexpr double wait_seconds = 60;

// Headers and tables are few bytes of a movie: every other flip is among those of its first or last part.
std::string damaged(const std::string& whole, failure_run& run) {
    std::string made = whole;
    const std::size_t flips = 1 + run.below(60);
    for (std::size_t i = 0; i < flips; ++i) {
        const std::size_t edge = std::min<std::size_t>(whole.size(), 3000);
        const std::size_t at = i % 2 == 0   ? run.below(whole.size())
                               : i % 4 == 1 ? run.below(edge)
                                            : whole.size() - 1 - run.below(edge);
        made[at] = static_cast<char>(run.below(256));
    }
    if (run.below(3) == 0) made.resize(1 + run.below(made.size()));
    return made;
}

TEST(damaged_movies, never_crash_or_hang_playback) {
    const temporary_folder folder;
    movie_writer_settings settings;
    settings.width = 320;
    settings.height = 240;
    settings.gop_frames = 20;
    settings.preset = "ultrafast";
    settings.threads = 1;
    settings.sound_channels = 2;
    ASSERT_TRUE(write_coded_movie(folder / "whole.mp4", settings, 60).ok());
    const std::string whole = read_file(folder / "whole.mp4").value();
    failure_run run("damaged movies", 12, 300);
    while (run.next()) {
        put_file(folder / "damaged.mp4", damaged(whole, run));
        plain_run_loop loop;
        synchronised_playback played(loop);
        played.set_volume(0);
        played.set_vistels(
            {{"whole", 0, {{folder / "whole.mp4", 0, 2}}}, {"damaged", 0, {{folder / "damaged.mp4", 0, 2}}}});
        for (const char* uuid : {"whole", "damaged"}) played.set_view_size(uuid, 160, 120);
        for (const double seconds : {1.5, 0.2}) {
            bool done = false;
            played.seek(seconds, [&] { done = true; });
            ASSERT_TRUE(loop.run_until([&] { return done; }, wait_seconds));
            EXPECT_EQ(read_frame_number(*played.picture("whole")), std::lround(seconds * 30));
        }
        for (const double rate : {8.0, -8.0}) {
            played.set_rate(rate);
            played.play();
            ASSERT_TRUE(
                loop.run_until([&] { return !played.is_playing() && played.is_settled(); }, wait_seconds));
            EXPECT_EQ(read_frame_number(*played.picture("whole")), rate > 0 ? 59 : 0);
        }
        const auto sound = sound_reader::open(folder / "damaged.mp4");
        std::vector<float> samples(static_cast<std::size_t>(sound_samples_per_second * sound_channels));
        for (const double seconds : {1.0, 0.0, 1.5}) {
            if (sound.ok()) (void)sound.value()->read(seconds, samples.data(), sound_samples_per_second);
        }
    }
}

}  // namespace
}  // namespace vistels

#endif
