// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

namespace vistels {

// Text looked at eight bytes at a time, on any processor.

inline constexpr std::size_t text_word_bytes = sizeof(std::uint64_t);
inline constexpr std::uint64_t text_word_ones = 0x0101010101010101;
inline constexpr std::uint64_t text_word_tops = 0x8080808080808080;

// The eight bytes from `text` on, the first one lowest.
inline std::uint64_t text_word(const char* text) {
    std::uint64_t word;
    std::memcpy(&word, text, sizeof word);
    if constexpr (std::endian::native == std::endian::big) word = __builtin_bswap64(word);
    return word;
}

// The top bit of the lowest byte that is a control character, '&', '<' or '>'; higher ones mean nothing. 0
// when there is none.
constexpr std::uint64_t markup_in(std::uint64_t word) {
    const auto equal_to = [word](char byte, std::uint64_t ignored_bit) {
        const auto differing = (word | text_word_ones * ignored_bit) ^
                               text_word_ones * (static_cast<unsigned char>(byte) | ignored_bit);
        return (differing - text_word_ones) & ~differing;
    };
    const std::uint64_t control = (word - text_word_ones * 0x20) & ~word;
    return (control | equal_to('&', 0) | equal_to('<', '<' ^ '>')) & text_word_tops;
}

// The place of the lowest marked byte.
constexpr std::size_t first_marked(std::uint64_t marks) {
    return static_cast<std::size_t>(std::countr_zero(marks)) / 8;
}

}  // namespace vistels
