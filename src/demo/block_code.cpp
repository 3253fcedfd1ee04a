// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/block_code.h"

#include <array>
#include <cmath>
#include <cstddef>

namespace vistels {

namespace {

constexpr std::uint8_t dark = 20;
constexpr std::uint8_t bright = 230;
constexpr double least_contrast = 60;
constexpr int least_width = 240;
constexpr int least_height = 135;
constexpr double outermost = 0.28;  // of a cell, left out at each side: it may hold a neighbour's light

struct pixel_box {
    int left;
    int top;
    int right;
    int bottom;
};

// CRC-8 with the polynomial x^8 + x^2 + x + 1, begun with all ones so that an all-dark code is not valid.
std::uint32_t checksum(std::uint32_t number) {
    std::uint32_t sum = 0xFF;
    for (int shift = 16; shift >= 0; shift -= 8) {
        sum ^= (number >> shift) & 0xFF;
        for (int bit = 0; bit < 8; ++bit) sum = (sum & 0x80) ? ((sum << 1) ^ 0x07) & 0xFF : sum << 1;
    }
    return sum;
}

bool cell_is_bright(std::uint32_t code, int row, int column) {
    if (column == 0) return row == 0;
    if (column == block_code_columns - 1) return row == 1;
    return (code >> (31 - (row * 16 + column - 1))) & 1;
}

// The part of a picture of that size which `x`, `y` and the sides name in pixels of the reference size.
pixel_box scaled_box(double x, double y, double box_width, double box_height, int width, int height) {
    const double across = static_cast<double>(width) / block_code_picture_width;
    const double down = static_cast<double>(height) / block_code_picture_height;
    pixel_box box{static_cast<int>(std::lround(x * across)), static_cast<int>(std::lround(y * down)),
                  static_cast<int>(std::lround((x + box_width) * across)),
                  static_cast<int>(std::lround((y + box_height) * down))};
    if (box.right <= box.left) box.right = box.left + 1;
    if (box.bottom <= box.top) box.bottom = box.top + 1;
    return box;
}

void fill(std::uint8_t* bgra, int stride, const pixel_box& box, std::uint8_t value) {
    for (int y = box.top; y < box.bottom; ++y) {
        std::uint8_t* pixel = bgra + static_cast<std::ptrdiff_t>(y) * stride + box.left * 4;
        for (int x = box.left; x < box.right; ++x, pixel += 4) {
            pixel[0] = pixel[1] = pixel[2] = value;
            pixel[3] = 255;
        }
    }
}

double mean_brightness(const std::uint8_t* bgra, int stride, const pixel_box& box) {
    double sum = 0;
    for (int y = box.top; y < box.bottom; ++y) {
        const std::uint8_t* pixel = bgra + static_cast<std::ptrdiff_t>(y) * stride + box.left * 4;
        for (int x = box.left; x < box.right; ++x, pixel += 4)
            sum += 0.114 * pixel[0] + 0.587 * pixel[1] + 0.299 * pixel[2];
    }
    return sum / ((box.right - box.left) * (box.bottom - box.top));
}

}  // namespace

void draw_block_code(std::uint8_t* bgra, int width, int height, int stride, std::uint32_t number) {
    number &= block_code_greatest;
    const std::uint32_t code = number << 8 | checksum(number);
    const double ground_width = block_code_columns * block_code_cell + 2 * block_code_margin;
    const double ground_height = block_code_rows * block_code_cell + 2 * block_code_margin;
    fill(bgra, stride,
         scaled_box(block_code_left - block_code_margin, block_code_top - block_code_margin, ground_width,
                    ground_height, width, height),
         dark);
    for (int row = 0; row < block_code_rows; ++row)
        for (int column = 0; column < block_code_columns; ++column)
            if (cell_is_bright(code, row, column))
                fill(bgra, stride,
                     scaled_box(block_code_left + column * block_code_cell,
                                block_code_top + row * block_code_cell, block_code_cell, block_code_cell,
                                width, height),
                     bright);
}

std::optional<std::uint32_t> read_block_code(const std::uint8_t* bgra, int width, int height, int stride) {
    if (width < least_width || height < least_height) return std::nullopt;
    std::array<std::array<double, block_code_columns>, block_code_rows> light{};
    constexpr double inner = block_code_cell * (1 - 2 * outermost);
    for (int row = 0; row < block_code_rows; ++row)
        for (int column = 0; column < block_code_columns; ++column)
            light[static_cast<std::size_t>(row)][static_cast<std::size_t>(column)] =
                mean_brightness(bgra, stride,
                                scaled_box(block_code_left + (column + outermost) * block_code_cell,
                                           block_code_top + (row + outermost) * block_code_cell, inner, inner,
                                           width, height));
    const double low = (light[0].back() + light[1].front()) / 2;
    const double high = (light[0].front() + light[1].back()) / 2;
    if (high - low < least_contrast) return std::nullopt;
    std::uint32_t code = 0;
    for (const auto& row : light)
        for (std::size_t column = 1; column + 1 < row.size(); ++column)
            code = code << 1 | (row[column] > (low + high) / 2 ? 1u : 0u);
    const std::uint32_t number = code >> 8;
    if (checksum(number) != (code & 0xFF)) return std::nullopt;
    return number;
}

}  // namespace vistels
