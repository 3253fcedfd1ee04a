// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// For the sources of this folder only: painted pictures into what an encoder takes.

#include <cstdint>

namespace vistels {

// The three planes of a 4:2:0 picture; strides are bytes from one row to the next.
struct yuv_planes {
    std::uint8_t* y;
    std::uint8_t* cb;
    std::uint8_t* cr;
    int y_stride;
    int cb_stride;
    int cr_stride;
};

// Turns a picture of 4 bytes B, G, R, unused into 4:2:0 of BT.709 in limited range, each value to within 1; a
// colour sample is that of the mean of its four pixels. Both sides are even.
void to_limited_yuv(const std::uint8_t* bgra, int stride, int width, int height, const yuv_planes& to);

}  // namespace vistels
