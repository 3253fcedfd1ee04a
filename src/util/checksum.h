// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace vistels {

// XXH3, 64 bits: tells torn or changed bytes from whole ones; not meant against forgery. Any thread.
std::uint64_t checksum(std::string_view bytes);

// The number as 16 lower-case hexadecimal digits.
std::string checksum_text(std::uint64_t sum);

}  // namespace vistels
