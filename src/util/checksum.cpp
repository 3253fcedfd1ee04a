// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/checksum.h"

#define XXH_STATIC_LINKING_ONLY  // the state's size
#include <xxhash.h>

#include <charconv>

namespace vistels {

std::uint64_t checksum(std::string_view bytes) {
    return XXH3_64bits(bytes.data(), bytes.size());
}

struct checksum_of_parts::state {
    XXH3_state_t parts;
};

checksum_of_parts::checksum_of_parts() : state_(std::make_unique<state>()) {
    XXH3_64bits_reset(&state_->parts);
}

checksum_of_parts::~checksum_of_parts() = default;

void checksum_of_parts::add(std::string_view bytes) {
    XXH3_64bits_update(&state_->parts, bytes.data(), bytes.size());
}

std::uint64_t checksum_of_parts::value() const {
    return XXH3_64bits_digest(&state_->parts);
}

std::string checksum_text(std::uint64_t sum) {
    constexpr std::string_view digits = "0123456789abcdef";
    std::string text(16, '0');
    for (auto at = text.rbegin(); at != text.rend(); ++at, sum >>= 4U) *at = digits[sum & 15U];
    return text;
}

std::optional<std::uint64_t> checksum_from_text(std::string_view text) {
    constexpr int base = 16;
    std::uint64_t sum = 0;
    const auto read = std::from_chars(text.data(), text.data() + text.size(), sum, base);
    if (read.ec != std::errc() || read.ptr != text.data() + text.size()) return std::nullopt;
    return checksum_text(sum) == text ? std::optional(sum) : std::nullopt;
}

}  // namespace vistels
