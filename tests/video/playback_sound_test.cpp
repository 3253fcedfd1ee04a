// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "video/playback_sound.h"

#if VISTELS_HAVE_MEDIA

#include "support/coded_movie.h"
#include "support/held_volume.h"
#include "support/temporary_folder.h"

namespace vistels {
namespace {

using namespace vistels::testing;

struct set_clock final : clock {
    double seconds() const override { return now; }
    double now = 0;
};

// Plays two movies with sound, one at a time.
class playback_sound_test : public ::testing::Test {
  protected:
    playback_sound_test() {
        movie_writer_settings settings;
        settings.width = 160;
        settings.height = 120;
        settings.preset = "ultrafast";
        settings.threads = 1;
        settings.sound_channels = 2;
        EXPECT_TRUE(write_coded_movie(there_, settings, 150).ok());
        std::filesystem::copy_file(there_, away_);
        sound_->set_volume(0.01);
    }

    void hear(const std::string& path) { sound_->set_parts({{path, 0, 5}}); }
    void update() { sound_->update(1, 1); }
    bool comes_true(const std::function<bool()>& condition) {
        const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
        while (!condition()) {
            if (std::chrono::steady_clock::now() > deadline) return false;
            update();
            std::this_thread::yield();
        }
        return true;
    }
    bool is_heard() const { return sound_->heard_seconds().has_value(); }
    // Long enough for something that hangs to be noticed.
    void let_time_pass() {
        update();
        patience_.now += 2 * answer_watch::closing_seconds;
        update();
    }

    temporary_folder folder_;
    const std::string there_ = folder_ / "there.mp4";
    const std::string away_ = folder_ / "away.mp4";
    set_clock patience_;
    std::unique_ptr<playback_sound> sound_ = std::make_unique<playback_sound>(patience_);
};

// At its opening, or in the middle of it.
TEST_F(playback_sound_test, a_file_that_hangs_is_no_clock_and_silences_no_other) {
    for (const char* const call : {"open movie", "read movie"}) {
        const bool opens = std::string(call) == "open movie";
        sound_ = std::make_unique<playback_sound>(patience_);
        sound_->set_volume(0.01);
        hear(away_);
        ASSERT_TRUE(opens || comes_true([&] { return is_heard(); }));
        held_volume volume(call, away_);
        ASSERT_TRUE(comes_true([&] {
            // What is read ahead may be enough for long: a jump has it read again.
            if (!opens) sound_->restart();
            return volume.holds();
        })) << call;
        let_time_pass();
        // Nobody goes by the time at which it stopped.
        EXPECT_FALSE(is_heard()) << call;
        hear(there_);
        ASSERT_TRUE(comes_true([&] { return is_heard(); })) << call;
        EXPECT_TRUE(volume.holds());
        hear(away_);
        volume.release();
        ASSERT_TRUE(comes_true([&] { return is_heard(); })) << call;
    }
}

TEST_F(playback_sound_test, what_answers_late_is_heard_again) {
    held_volume volume("open movie", away_);
    hear(away_);
    ASSERT_TRUE(comes_true([&] { return volume.holds(); }));
    let_time_pass();
    EXPECT_FALSE(is_heard());
    volume.release();
    ASSERT_TRUE(comes_true([&] { return is_heard(); }));
}

TEST_F(playback_sound_test, who_closes_does_not_wait) {
    held_volume volume("open movie", away_);
    hear(away_);
    ASSERT_TRUE(comes_true([&] { return volume.holds(); }));
    let_time_pass();
    sound_.reset();
    EXPECT_TRUE(volume.holds());
}

}  // namespace
}  // namespace vistels

#endif
