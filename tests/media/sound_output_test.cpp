// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound_output.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "media/sound_reader.h"
#include "media/sound_speed.h"

namespace vistels {
namespace {

// With a device or without one: who starts the program in a terminal reads nothing of how it was looked for.
TEST(sound_output, opens_and_takes_sound_without_a_word) {
    ::testing::internal::CaptureStderr();
    {
        const auto opened = sound_output::open();
        ASSERT_TRUE(opened.ok()) << opened.message();
        sound_output& output = *opened.value();
        output.set_volume(0);
        const std::size_t frames = sound_samples_per_second / 10;
        EXPECT_TRUE(output.add(std::vector<float>(frames * sound_channels).data(), frames).ok());
        EXPECT_DOUBLE_EQ(output.added_seconds(), 0.1);
    }
    EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
}

// A tone of 1000 Hz, two seconds of it: how long it becomes, and how high.
TEST(sound_speed, changes_how_long_sound_lasts_and_its_pitch_when_that_is_wanted) {
    constexpr double hertz = 1000;
    constexpr std::size_t frames = 2 * sound_samples_per_second;
    constexpr std::size_t piece = 1920;
    std::vector<float> tone(frames * sound_channels);
    for (std::size_t i = 0; i < frames; ++i) {
        const double turn = 6.283185307179586 * hertz * static_cast<double>(i) / sound_samples_per_second;
        tone[i * 2] = tone[i * 2 + 1] = static_cast<float>(0.5 * std::sin(turn));
    }
    for (const bool keeps_pitch : {false, true}) {
        for (const double rate : {0.25, 0.4, 0.5, 2.0, 3.0, 4.0}) {
            const auto opened = sound_speed::open(rate, keeps_pitch);
            ASSERT_TRUE(opened.ok()) << opened.message();
            std::vector<float> made(frames * sound_channels * 5);
            std::size_t taken = 0;
            for (std::size_t at = 0; at + piece <= frames; at += piece) {
                ASSERT_TRUE(opened.value()->add(tone.data() + at * sound_channels, piece).ok());
                taken += opened.value()->take(made.data() + taken * sound_channels, piece * 5);
            }
            EXPECT_NEAR(static_cast<double>(taken) / sound_samples_per_second, 2 / rate, 0.2 / rate) << rate;
            // Away from the beginning, where filters begin.
            int rises = 0;
            const std::size_t from = taken / 4;
            for (std::size_t i = from + 1; i < taken; ++i) rises += made[2 * i - 2] < 0 && made[2 * i] >= 0;
            const double heard = rises / (static_cast<double>(taken - from) / sound_samples_per_second);
            EXPECT_NEAR(heard / hertz, keeps_pitch ? 1 : rate, keeps_pitch ? 0.03 : 0.01 * rate)
                << rate << " " << keeps_pitch;
        }
    }
}

}  // namespace
}  // namespace vistels
