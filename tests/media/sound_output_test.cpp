// SPDX-License-Identifier: GPL-3.0-or-later
#include "media/sound_output.h"

#include <gtest/gtest.h>

#include <vector>

#include "media/sound_reader.h"

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

}  // namespace
}  // namespace vistels
