// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/checksum.h"

#include <xxhash.h>

namespace vistels {

std::uint64_t checksum(std::string_view bytes) {
    return XXH3_64bits(bytes.data(), bytes.size());
}

std::string checksum_text(std::uint64_t sum) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text(16, '0');
    for (auto at = text.rbegin(); at != text.rend(); ++at, sum >>= 4U) *at = digits[sum & 15U];
    return text;
}

}  // namespace vistels
