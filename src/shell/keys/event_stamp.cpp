// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/keys/event_stamp.h"

namespace vistels {

namespace {

constexpr std::uint32_t longest_delay_milliseconds = 1000;

}  // namespace

double event_seconds(std::uint64_t stamp_milliseconds, double now_seconds) {
    if (stamp_milliseconds == 0) return now_seconds;
    const auto now = static_cast<std::uint32_t>(static_cast<std::uint64_t>(now_seconds * 1000));
    const std::uint32_t age = now - static_cast<std::uint32_t>(stamp_milliseconds);
    if (age > longest_delay_milliseconds) return now_seconds;
    return now_seconds - age / 1000.0;
}

}  // namespace vistels
