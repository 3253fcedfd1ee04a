// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string_view>

namespace vistels {

// The bytes of the character that begins at byte `at` (which is within the text), 1 to 4. A byte that belongs
// to no well formed UTF-8 sequence is a character of its own. Any thread.
std::size_t code_point_size(std::string_view text, std::size_t at);

// How many characters the text has.
std::size_t count_code_points(std::string_view text);

// The byte at which the character with this number begins; the text's size when it has no more characters.
std::size_t byte_of_code_point(std::string_view text, std::size_t number);

}  // namespace vistels
