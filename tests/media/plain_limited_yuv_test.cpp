// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

#include "media/limited_yuv.h"

namespace vistels {
namespace {

struct colour {
    double red, green, blue;
};

// As the standard has it, in limited range.
double luma_of(const colour& c) {
    return 16 + 219 * (0.2126 * c.red + 0.7152 * c.green + 0.0722 * c.blue) / 255;
}
double cb_of(const colour& c) {
    return 128 + 224 * (c.blue - (luma_of(c) - 16) * 255 / 219) / 255 / 1.8556;
}
double cr_of(const colour& c) {
    return 128 + 224 * (c.red - (luma_of(c) - 16) * 255 / 219) / 255 / 1.5748;
}

TEST(limited_yuv, is_within_one_of_what_the_standard_says) {
    constexpr int width = 38;
    constexpr int height = 20;
    constexpr int stride = width * 4 + 12;
    std::mt19937 random(1);
    std::vector<std::uint8_t> bgra(static_cast<std::size_t>(stride) * height);
    // Extremes as often as anything between, since that is where sums overflow.
    for (auto& value : bgra) {
        const auto kind = random() % 3;
        value = static_cast<std::uint8_t>(kind == 0 ? 0 : kind == 1 ? 255 : random());
    }
    std::vector<std::uint8_t> y(width * height), cb(20 * 10), cr(21 * 10);
    to_limited_yuv(bgra.data(), stride, width, height, {y.data(), cb.data(), cr.data(), width, 20, 21});
    const auto pixel = [&](int column, int row) {
        const std::uint8_t* at = bgra.data() + row * stride + column * 4;
        return colour{double(at[2]), double(at[1]), double(at[0])};
    };
    for (int row = 0; row < height; ++row)
        for (int column = 0; column < width; ++column)
            EXPECT_NEAR(y[static_cast<std::size_t>(row * width + column)], luma_of(pixel(column, row)), 1);
    for (int row = 0; row < height / 2; ++row) {
        for (int column = 0; column < width / 2; ++column) {
            colour mean{};
            for (const auto& [x, dy] : {std::pair(0, 0), {1, 0}, {0, 1}, {1, 1}}) {
                const colour one = pixel(2 * column + x, 2 * row + dy);
                mean = {mean.red + one.red / 4, mean.green + one.green / 4, mean.blue + one.blue / 4};
            }
            EXPECT_NEAR(cb[static_cast<std::size_t>(row * 20 + column)], cb_of(mean), 1.2);
            EXPECT_NEAR(cr[static_cast<std::size_t>(row * 21 + column)], cr_of(mean), 1.2);
        }
    }
}

}  // namespace
}  // namespace vistels
