// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/records/clip_set.h"

#include <algorithm>

namespace vistels {

// Each time as much again as there is, so that no order of numbers costs more than another.
void clip_set::make_room(std::uint32_t number) {
    const std::uint32_t word = number / 64;
    if (words_.empty()) first_ = word * 64;
    const std::uint32_t first = first_ / 64;
    if (word < first) {
        const auto more = std::min(first, std::max(first - word, static_cast<std::uint32_t>(words_.size())));
        words_.insert(words_.begin(), more, 0);
        first_ = (first - more) * 64;
    } else {
        words_.resize(std::max<std::size_t>(words_.size(), word - first + 1));
    }
}

}  // namespace vistels
