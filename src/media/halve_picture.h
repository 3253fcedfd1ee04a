// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>

namespace vistels {

// How Y, Cb and Cr become R, G and B, in 1/64ths.
struct colour_weights {
    int luma_from;  // the value of black
    int luma;
    int red_from_cr;
    int green_from_cb;  // taken away
    int green_from_cr;  // taken away
    int blue_from_cb;
};

// Of BT.709 (or BT.601), full range or 16 to 235.
colour_weights weights_for(bool bt709, bool full_range);

// One row of a picture of half the size: `width` pixels of 4 bytes B, G, R, 255, each the mean of 2 by 2 luma
// values with their one pair of chroma values.
void halve_row(std::uint8_t* to, int width, const std::uint8_t* upper_luma, const std::uint8_t* lower_luma,
               const std::uint8_t* cb, const std::uint8_t* cr, const colour_weights& weights);

// The same without the processor's vector instructions.
void halve_row_plainly(std::uint8_t* to, int width, const std::uint8_t* upper_luma,
                       const std::uint8_t* lower_luma, const std::uint8_t* cb, const std::uint8_t* cr,
                       const colour_weights& weights);

}  // namespace vistels
