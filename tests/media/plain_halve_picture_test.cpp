// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "media/halve_picture.h"

namespace vistels {
namespace {

TEST(halve_picture, vector_instructions_give_what_plain_code_gives) {
    std::mt19937 random(1);
    for (const bool bt709 : {false, true}) {
        for (const bool full : {false, true}) {
            for (int width = 1; width < 40; ++width) {
                const auto size = static_cast<std::size_t>(width);
                std::vector<std::uint8_t> in(size * 6);
                // Extremes as often as anything between, since that is where sums overflow.
                for (auto& value : in) {
                    const auto kind = random() % 3;
                    value = static_cast<std::uint8_t>(kind == 0 ? 0 : kind == 1 ? 255 : random());
                }
                std::vector<std::uint8_t> fast(size * 4);
                std::vector<std::uint8_t> plain(size * 4);
                const auto weights = weights_for(bt709, full);
                const auto* lower = in.data() + 2 * size;
                const auto* cb = in.data() + 4 * size;
                halve_row(fast.data(), width, in.data(), lower, cb, cb + size, weights);
                halve_row_plainly(plain.data(), width, in.data(), lower, cb, cb + size, weights);
                ASSERT_EQ(fast, plain) << width;
            }
        }
    }
}

TEST(halve_picture, colours_are_right) {
    struct {
        bool full;
        std::uint8_t y, cb, cr;
        int blue, green, red;
    } const cases[] = {{false, 16, 128, 128, 0, 0, 0},       {false, 235, 128, 128, 255, 255, 255},
                       {true, 128, 128, 128, 128, 128, 128}, {false, 63, 102, 240, 0, 0, 255},
                       {false, 173, 42, 26, 0, 255, 0},      {false, 32, 240, 118, 255, 0, 0}};
    for (const auto& c : cases) {
        const std::vector<std::uint8_t> luma(2, c.y);
        std::uint8_t pixel[4];
        halve_row(pixel, 1, luma.data(), luma.data(), &c.cb, &c.cr, weights_for(true, c.full));
        EXPECT_NEAR(pixel[0], c.blue, 4);
        EXPECT_NEAR(pixel[1], c.green, 4);
        EXPECT_NEAR(pixel[2], c.red, 4);
        EXPECT_EQ(pixel[3], 255);
    }
}

}  // namespace
}  // namespace vistels
