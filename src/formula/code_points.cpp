// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/code_points.h"

namespace vistels {

namespace {

unsigned byte_at(std::string_view text, std::size_t at) {
    return static_cast<unsigned char>(text[at]);
}

bool is_continuation(std::string_view text, std::size_t at) {
    return at < text.size() && (byte_at(text, at) & 0xC0U) == 0x80U;
}

// The smallest and the largest second byte that may follow `lead`: without overlong forms, halves of pairs of
// UTF-16, and codes above U+10FFFF.
struct byte_range {
    unsigned smallest = 0x80;
    unsigned largest = 0xBF;
};

byte_range second_bytes(unsigned lead) {
    switch (lead) {
        case 0xE0:
            return {0xA0, 0xBF};
        case 0xED:
            return {0x80, 0x9F};
        case 0xF0:
            return {0x90, 0xBF};
        case 0xF4:
            return {0x80, 0x8F};
        default:
            return {};
    }
}

}  // namespace

std::size_t code_point_size(std::string_view text, std::size_t at) {
    const unsigned lead = byte_at(text, at);
    if (lead < 0xC2 || lead > 0xF4) return 1;
    const std::size_t size = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : 2;
    for (std::size_t next = at + 1; next < at + size; ++next) {
        if (!is_continuation(text, next)) return 1;
    }
    const auto allowed = second_bytes(lead);
    const unsigned second = byte_at(text, at + 1);
    return second >= allowed.smallest && second <= allowed.largest ? size : 1;
}

std::size_t count_code_points(std::string_view text) {
    std::size_t count = 0;
    for (std::size_t at = 0; at < text.size(); at += code_point_size(text, at)) ++count;
    return count;
}

std::size_t byte_of_code_point(std::string_view text, std::size_t number) {
    std::size_t at = 0;
    for (; at < text.size() && number > 0; --number) at += code_point_size(text, at);
    return at;
}

}  // namespace vistels
