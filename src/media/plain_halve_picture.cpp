// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>

#include "media/halve_picture.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vistels {

namespace {

constexpr int weight_bits = 6;
constexpr int half_weight = 1 << (weight_bits - 1);

std::uint8_t to_byte(int value) {
    return static_cast<std::uint8_t>(std::clamp(value >> weight_bits, 0, 255));
}

#if defined(__SSE2__)
// Means of neighbours, 8 of them, from 16 bytes of each of two rows.
__m128i box_means(const std::uint8_t* upper, const std::uint8_t* lower) {
    const __m128i low_bytes = _mm_set1_epi16(0x00ff);
    const __m128i a = _mm_loadu_si128(reinterpret_cast<const __m128i*>(upper));
    const __m128i b = _mm_loadu_si128(reinterpret_cast<const __m128i*>(lower));
    const __m128i sum = _mm_add_epi16(_mm_add_epi16(_mm_and_si128(a, low_bytes), _mm_srli_epi16(a, 8)),
                                      _mm_add_epi16(_mm_and_si128(b, low_bytes), _mm_srli_epi16(b, 8)));
    return _mm_srli_epi16(_mm_add_epi16(sum, _mm_set1_epi16(2)), 2);
}

__m128i eight_wide(const std::uint8_t* from) {
    return _mm_unpacklo_epi8(_mm_loadl_epi64(reinterpret_cast<const __m128i*>(from)), _mm_setzero_si128());
}

__m128i times(__m128i values, int weight) {
    return _mm_mullo_epi16(values, _mm_set1_epi16(static_cast<short>(weight)));
}

void halve_eight(std::uint8_t* to, const std::uint8_t* upper, const std::uint8_t* lower,
                 const std::uint8_t* cb, const std::uint8_t* cr, const colour_weights& weights) {
    const __m128i middle = _mm_set1_epi16(128);
    const __m128i black = _mm_set1_epi16(static_cast<short>(weights.luma_from));
    const __m128i luma = _mm_add_epi16(times(_mm_sub_epi16(box_means(upper, lower), black), weights.luma),
                                       _mm_set1_epi16(half_weight));
    const __m128i u = _mm_sub_epi16(eight_wide(cb), middle);
    const __m128i v = _mm_sub_epi16(eight_wide(cr), middle);
    // The sums may pass the largest 16 bit number where the picture is beyond white anyway: saturate.
    const __m128i blue = _mm_srai_epi16(_mm_adds_epi16(luma, times(u, weights.blue_from_cb)), weight_bits);
    const __m128i red = _mm_srai_epi16(_mm_adds_epi16(luma, times(v, weights.red_from_cr)), weight_bits);
    const __m128i taken = _mm_add_epi16(times(u, weights.green_from_cb), times(v, weights.green_from_cr));
    const __m128i green = _mm_srai_epi16(_mm_subs_epi16(luma, taken), weight_bits);

    const __m128i blue_green =
        _mm_unpacklo_epi8(_mm_packus_epi16(blue, blue), _mm_packus_epi16(green, green));
    const __m128i red_opaque = _mm_unpacklo_epi8(_mm_packus_epi16(red, red), _mm_set1_epi8(-1));
    auto* out = reinterpret_cast<__m128i*>(to);
    _mm_storeu_si128(out, _mm_unpacklo_epi16(blue_green, red_opaque));
    _mm_storeu_si128(out + 1, _mm_unpackhi_epi16(blue_green, red_opaque));
}
#endif

}  // namespace

colour_weights weights_for(bool bt709, bool full_range) {
    if (full_range)
        return bt709 ? colour_weights{0, 64, 101, 12, 30, 119} : colour_weights{0, 64, 90, 22, 46, 113};
    return bt709 ? colour_weights{16, 75, 115, 14, 34, 135} : colour_weights{16, 75, 102, 25, 52, 129};
}

void halve_row_plainly(std::uint8_t* to, int width, const std::uint8_t* upper_luma,
                       const std::uint8_t* lower_luma, const std::uint8_t* cb, const std::uint8_t* cr,
                       const colour_weights& weights) {
    for (int x = 0; x < width; ++x) {
        const int sum = upper_luma[2 * x] + upper_luma[2 * x + 1] + lower_luma[2 * x] + lower_luma[2 * x + 1];
        const int luma = ((sum + 2) / 4 - weights.luma_from) * weights.luma + half_weight;
        const int u = cb[x] - 128;
        const int v = cr[x] - 128;
        to[4 * x] = to_byte(luma + u * weights.blue_from_cb);
        to[4 * x + 1] = to_byte(luma - (u * weights.green_from_cb + v * weights.green_from_cr));
        to[4 * x + 2] = to_byte(luma + v * weights.red_from_cr);
        to[4 * x + 3] = 255;
    }
}

void halve_row(std::uint8_t* to, int width, const std::uint8_t* upper_luma, const std::uint8_t* lower_luma,
               const std::uint8_t* cb, const std::uint8_t* cr, const colour_weights& weights) {
    int done = 0;
#if defined(__SSE2__)
    for (; done + 8 <= width; done += 8) {
        halve_eight(to + 4 * done, upper_luma + 2 * done, lower_luma + 2 * done, cb + done, cr + done,
                    weights);
    }
#endif
    halve_row_plainly(to + 4 * done, width - done, upper_luma + 2 * done, lower_luma + 2 * done, cb + done,
                      cr + done, weights);
}

}  // namespace vistels
