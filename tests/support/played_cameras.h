// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <functional>

#include "support/coded_movie.h"
#include "support/temporary_folder.h"
#include "util/plain_run_loop.h"
#include "video/synchronised_playback.h"

namespace vistels::testing {

inline constexpr double wait_seconds = 60;

// Two cameras of 4 seconds; the second one's movie is cut in two with a second between.
class playback : public ::testing::Test {
  protected:
    playback() {
        EXPECT_TRUE(write_small_coded_movie(folder_ / "long.mp4", 120, 20).ok());
        EXPECT_TRUE(write_small_coded_movie(folder_ / "short.mp4", 30, 20).ok());
        played_.set_volume(0);
    }

    void set_both() {
        played_.set_vistels({{"a", 0.0, {{folder_ / "long.mp4", 0, 4}}},
                             {"b", 0.5, {{folder_ / "long.mp4", 0, 4}, {folder_ / "short.mp4", 5, 1}}}});
        for (const char* uuid : {"a", "b"}) played_.set_view_size(uuid, 160, 120);
    }

    bool wait_for(const std::function<bool()>& done) { return loop_.run_until(done, wait_seconds); }

    void seek(double seconds) {
        bool done = false;
        played_.seek(seconds, [&] { done = true; });
        ASSERT_TRUE(wait_for([&] { return done; }));
    }

    void step(int direction) {
        bool done = false;
        played_.step(direction, [&] { done = true; });
        ASSERT_TRUE(wait_for([&] { return done; }));
    }

    // -1: nothing is shown.
    int shown(const char* uuid) const {
        const auto picture = played_.picture(uuid);
        return picture ? read_frame_number(*picture) : -1;
    }

    temporary_folder folder_;
    plain_run_loop loop_;
    synchronised_playback played_{loop_};
};

}  // namespace vistels::testing
