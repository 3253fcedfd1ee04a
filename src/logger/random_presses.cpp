// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/random_presses.h"

#include <algorithm>
#include <limits>
#include <utility>

namespace vistels {

std::vector<std::string> random_presses::begin_cycle(std::vector<std::string> up, std::size_t count,
                                                     double now, double cycle_seconds) {
    count = std::min(count, up.size());
    for (std::size_t n = 0; n < count; ++n) {
        std::swap(up[n], up[n + below(up.size() - n)]);
        std::erase_if(lasting_, [&](const lasting_press& one) { return one.button == up[n]; });
        // The cube root of 8 is 2: half of them are below one cycle.
        const double share = static_cast<double>(random_()) / 4294967296.0;
        const double end = now + most_cycles * share * share * share * cycle_seconds;
        const auto later = std::upper_bound(lasting_.begin(), lasting_.end(), end,
                                            [](double at, const auto& one) { return at < one.end; });
        lasting_.insert(later, {up[n], end});
    }
    up.resize(count);
    return up;
}

std::optional<double> random_presses::next_end() const {
    return lasting_.empty() ? std::nullopt : std::optional(lasting_.front().end);
}

std::vector<std::string> random_presses::take_ended(double now) {
    std::vector<std::string> ended;
    auto first_to_last = lasting_.begin();
    for (; first_to_last != lasting_.end() && first_to_last->end <= now; ++first_to_last) {
        ended.push_back(std::move(first_to_last->button));
    }
    lasting_.erase(lasting_.begin(), first_to_last);
    return ended;
}

std::vector<std::string> random_presses::take_all() {
    return take_ended(std::numeric_limits<double>::infinity());
}

}  // namespace vistels
