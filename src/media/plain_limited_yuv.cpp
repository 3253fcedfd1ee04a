// SPDX-License-Identifier: GPL-3.0-or-later
#include <cstddef>

#include "media/limited_yuv.h"

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace vistels {

namespace {

// In 1/256, rounded so that grey has no colour and white is 235.
struct shares {
    short blue;
    short green;
    short red;
};
constexpr shares luma{16, 157, 47};
constexpr shares blueness{112, -86, -26};
constexpr shares redness{-10, -102, 112};
constexpr int black = 16 * 256 + 128;
// Of four pixels together.
constexpr int no_colour = 4 * (128 * 256 + 128);
constexpr int luma_shift = 8;
constexpr int colour_shift = luma_shift + 2;

std::uint8_t weighed(int blue, int green, int red, const shares& by, int offset, int shift) {
    return static_cast<std::uint8_t>((blue * by.blue + green * by.green + red * by.red + offset) >> shift);
}

#if defined(__SSE2__)
__m128i spread(const shares& by) {
    return _mm_setr_epi16(by.blue, by.green, by.red, 0, by.blue, by.green, by.red, 0);
}

// Of 4 pixels, two in each of `a` and `b` as 16 bit numbers: 4 values of 32 bits.
__m128i weighed(__m128i a, __m128i b, __m128i by, int offset, int shift) {
    const __m128 first = _mm_castsi128_ps(_mm_madd_epi16(a, by));
    const __m128 second = _mm_castsi128_ps(_mm_madd_epi16(b, by));
    const __m128i blue_green = _mm_castps_si128(_mm_shuffle_ps(first, second, _MM_SHUFFLE(2, 0, 2, 0)));
    const __m128i red = _mm_castps_si128(_mm_shuffle_ps(first, second, _MM_SHUFFLE(3, 1, 3, 1)));
    return _mm_srai_epi32(_mm_add_epi32(_mm_add_epi32(blue_green, red), _mm_set1_epi32(offset)), shift);
}

__m128i load(const std::uint8_t* from) {
    return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

__m128i low(__m128i bytes) {
    return _mm_unpacklo_epi8(bytes, _mm_setzero_si128());
}

__m128i high(__m128i bytes) {
    return _mm_unpackhi_epi8(bytes, _mm_setzero_si128());
}

__m128i luma_of_four(const std::uint8_t* bgra) {
    const __m128i pixels = load(bgra);
    return weighed(low(pixels), high(pixels), spread(luma), black, luma_shift);
}

// The sums of 2 by 2 pixels, two of them, of 4 pixels in each of two rows.
__m128i box_sums(const std::uint8_t* upper, const std::uint8_t* lower) {
    const __m128i above = load(upper);
    const __m128i below = load(lower);
    const __m128i left = _mm_add_epi16(low(above), low(below));
    const __m128i right = _mm_add_epi16(high(above), high(below));
    return _mm_add_epi16(_mm_unpacklo_epi64(left, right), _mm_unpackhi_epi64(left, right));
}

__m128i packed(__m128i a, __m128i b) {
    const __m128i words = _mm_packs_epi32(a, b);
    return _mm_packus_epi16(words, words);
}
#endif

void write_luma(const std::uint8_t* bgra, std::uint8_t* to, int width) {
    int x = 0;
#if defined(__SSE2__)
    for (; x + 8 <= width; x += 8)
        _mm_storel_epi64(reinterpret_cast<__m128i*>(to + x),
                         packed(luma_of_four(bgra + 4 * x), luma_of_four(bgra + 4 * x + 16)));
#endif
    for (; x < width; ++x)
        to[x] = weighed(bgra[4 * x], bgra[4 * x + 1], bgra[4 * x + 2], luma, black, luma_shift);
}

void write_colour(const std::uint8_t* upper, const std::uint8_t* lower, std::uint8_t* cb, std::uint8_t* cr,
                  int width) {
    int x = 0;
#if defined(__SSE2__)
    for (; x + 8 <= width; x += 8) {
        const std::uint8_t* above = upper + 8 * x;
        const std::uint8_t* below = lower + 8 * x;
        const __m128i sums[4] = {box_sums(above, below), box_sums(above + 16, below + 16),
                                 box_sums(above + 32, below + 32), box_sums(above + 48, below + 48)};
        const auto eight = [&sums](const shares& by) {
            return packed(weighed(sums[0], sums[1], spread(by), no_colour, colour_shift),
                          weighed(sums[2], sums[3], spread(by), no_colour, colour_shift));
        };
        _mm_storel_epi64(reinterpret_cast<__m128i*>(cb + x), eight(blueness));
        _mm_storel_epi64(reinterpret_cast<__m128i*>(cr + x), eight(redness));
    }
#endif
    for (; x < width; ++x) {
        const std::uint8_t* above = upper + 8 * x;
        const std::uint8_t* below = lower + 8 * x;
        const int blue = above[0] + above[4] + below[0] + below[4];
        const int green = above[1] + above[5] + below[1] + below[5];
        const int red = above[2] + above[6] + below[2] + below[6];
        cb[x] = weighed(blue, green, red, blueness, no_colour, colour_shift);
        cr[x] = weighed(blue, green, red, redness, no_colour, colour_shift);
    }
}

}  // namespace

void to_limited_yuv(const std::uint8_t* bgra, int stride, int width, int height, const yuv_planes& to) {
    for (std::ptrdiff_t y = 0; y < height; y += 2) {
        const std::uint8_t* upper = bgra + y * stride;
        const std::uint8_t* lower = upper + stride;
        write_luma(upper, to.y + y * to.y_stride, width);
        write_luma(lower, to.y + (y + 1) * to.y_stride, width);
        write_colour(upper, lower, to.cb + y / 2 * to.cb_stride, to.cr + y / 2 * to.cr_stride, width / 2);
    }
}

}  // namespace vistels
