// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>

namespace vistels {

// A number drawn into a picture as dark and bright blocks, so that a program can tell which frame a picture
// is after it was compressed, scaled and painted. It stands in the lower right corner, two rows of cells on a
// dark ground:
//
//     bright, bits 31 to 16 (the number's upper sixteen), dark
//     dark,   bits 15 to 0,                               bright
//
// The four cells at the ends are the reference for bright and dark. The upper 24 bits are the number, the
// lower 8 its checksum. Sizes are pixels of a picture of 1280 x 720; in others the code scales with the
// picture. In the demo's movies the number is the frame's place on its vistel's own time line: movie time in
// seconds times 30, rounded, counted through gaps between movie parts.
inline constexpr int block_code_picture_width = 1280;
inline constexpr int block_code_picture_height = 720;
inline constexpr int block_code_cell = 16;
inline constexpr int block_code_columns = 18;
inline constexpr int block_code_rows = 2;
inline constexpr int block_code_margin = 6;  // dark ground round the cells
inline constexpr int block_code_left =
    block_code_picture_width - block_code_columns * block_code_cell - block_code_margin - 8;
inline constexpr int block_code_top =
    block_code_picture_height - block_code_rows * block_code_cell - block_code_margin - 8;
inline constexpr std::uint32_t block_code_greatest = 0xFFFFFF;

// Draws `number` (its lower 24 bits) into pixels of 4 bytes B, G, R, A, rows `stride` bytes apart.
void draw_block_code(std::uint8_t* bgra, int width, int height, int stride, std::uint32_t number);

// The number in a picture whose corner shows a block code; nothing when there is none, it cannot be read for
// certain, or the picture is less than 240 pixels wide or 135 high.
std::optional<std::uint32_t> read_block_code(const std::uint8_t* bgra, int width, int height, int stride);

}  // namespace vistels
