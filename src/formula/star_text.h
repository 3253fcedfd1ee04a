// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vistels {

// What a star of a clip's rating is written as.
inline constexpr std::string_view star_character = "\u272D";  // ✭

// True for a text of stars alone; the empty text is none.
inline bool is_star_text(std::string_view text) {
    if (text.empty()) return false;
    while (text.starts_with(star_character)) text.remove_prefix(star_character.size());
    return text.empty();
}

// A rating as it is written; empty for none.
inline std::string star_text(int stars) {
    std::string text;
    for (int star = 0; star < stars; ++star) text += star_character;
    return text;
}

}  // namespace vistels
