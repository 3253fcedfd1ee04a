// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/block_code.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <random>
#include <vector>

namespace vistels {
namespace {

// Only the lowest tenth of a picture is made: the code is there.
int first_row(int height) {
    return height * 9 / 10;
}

struct pixels {
    int width;
    int height;
    std::vector<std::uint8_t> bgra;

    pixels(int w, int h)
        : width(w), height(h), bgra(static_cast<std::size_t>(w) * static_cast<std::size_t>(h) * 4, 120) {}
    std::uint8_t* at(int x, int y) { return bgra.data() + (static_cast<std::ptrdiff_t>(y) * width + x) * 4; }
    std::optional<std::uint32_t> read() const {
        return read_block_code(bgra.data(), width, height, width * 4);
    }
};

pixels coded(std::uint32_t number) {
    pixels made(1280, 720);
    std::mt19937 random(number);
    for (std::uint8_t* byte = made.at(0, first_row(720)); byte != made.at(0, 720); ++byte)
        *byte = static_cast<std::uint8_t>(random() & 0xFF);
    draw_block_code(made.bgra.data(), made.width, made.height, made.width * 4, number);
    return made;
}

// Each new pixel is the mean of four bilinear samples, as a fast scaler makes it.
pixels scaled(pixels from, int width, int height) {
    pixels to(width, height);
    for (int y = first_row(height); y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            for (int part = 0; part < 4; ++part) {
                double sum = 0;
                for (const double dx : {0.25, 0.75})
                    for (const double dy : {0.25, 0.75})
                        sum +=
                            from.at(std::min(from.width - 1, static_cast<int>((x + dx) * from.width / width)),
                                    std::min(from.height - 1,
                                             static_cast<int>((y + dy) * from.height / height)))[part];
                to.at(x, y)[part] = static_cast<std::uint8_t>(sum / 4);
            }
        }
    }
    return to;
}

// What a camera's noise and a coarse compression do: grain, less contrast, and blocks that run into each
// other.
void spoil(pixels& picture, double noise, double contrast) {
    std::mt19937 random(5);
    std::normal_distribution<double> grain(0, noise);
    const pixels before = picture;
    const auto stride = static_cast<std::ptrdiff_t>(picture.width) * 4;
    const auto end = static_cast<std::ptrdiff_t>(picture.bgra.size()) - stride - 4;
    for (std::ptrdiff_t index = stride * (first_row(picture.height) + 1); index < end; ++index) {
        const auto value = [&](std::ptrdiff_t place) { return before.bgra[static_cast<std::size_t>(place)]; };
        const double blurred = (2.0 * value(index) + value(index - 4) + value(index + 4) +
                                value(index - stride) + value(index + stride)) /
                               6;
        picture.bgra[static_cast<std::size_t>(index)] = static_cast<std::uint8_t>(
            std::clamp(128 + (blurred - 128) * contrast + grain(random), 0.0, 255.0));
    }
}

TEST(block_code, survives_scaling_noise_and_loss_of_contrast) {
    struct treatment {
        int width, height;
        double noise, contrast;
    };
    for (const treatment& how :
         {treatment{1280, 720, 0, 1}, treatment{1280, 720, 25, 0.6}, treatment{1920, 1080, 10, 0.9},
          treatment{640, 360, 15, 0.7}, treatment{713, 401, 10, 0.8}, treatment{320, 180, 10, 0.8},
          treatment{300, 170, 6, 0.8}}) {
        for (const std::uint32_t number : {0u, 1799u, 0xAAAAAAu, 0x555555u, 0xFFFFFFu}) {
            pixels picture = scaled(coded(number), how.width, how.height);
            spoil(picture, how.noise, how.contrast);
            EXPECT_EQ(picture.read(), number) << how.width << "x" << how.height << " noise " << how.noise;
        }
    }
}

TEST(block_code, reads_nothing_where_there_is_none) {
    EXPECT_EQ(pixels(1280, 720).read(), std::nullopt);
    EXPECT_EQ(scaled(coded(7), 200, 112).read(), std::nullopt);  // too small to be certain
    pixels noise(640, 360);
    std::mt19937 random(1);
    for (auto& byte : noise.bgra) byte = static_cast<std::uint8_t>(random() & 0xFF);
    EXPECT_EQ(noise.read(), std::nullopt);
}

TEST(block_code, tells_a_single_flipped_cell) {
    for (int row = 0; row < block_code_rows; ++row) {
        for (int column = 1; column + 1 < block_code_columns; ++column) {
            pixels picture = coded(4711);
            for (int y = 0; y < block_code_cell; ++y)
                for (int x = 0; x < block_code_cell; ++x) {
                    std::uint8_t* pixel = picture.at(block_code_left + column * block_code_cell + x,
                                                     block_code_top + row * block_code_cell + y);
                    for (int part = 0; part < 3; ++part)
                        pixel[part] = static_cast<std::uint8_t>(255 - pixel[part]);
                }
            EXPECT_EQ(picture.read(), std::nullopt) << row << ", " << column;
        }
    }
}

}  // namespace
}  // namespace vistels
