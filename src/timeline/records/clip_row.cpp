// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/records/clip_row.h"

#include <algorithm>
#include <tuple>

namespace vistels {

std::vector<clip_row> clips_in_start_order(const std::vector<row_pointer>& rows, const clip_set* only) {
    std::vector<clip_row> all;
    int number = 0;
    for (const auto& row : rows) {
        ++number;
        for (const auto& clip : row->clips()) {
            if (only && !only->contains(*clip)) continue;
            all.push_back({clip, clip->secs_start(), row, number});
        }
    }
    // Stable: the clips stand in the order of the rows, and in a row in its own order.
    std::stable_sort(all.begin(), all.end(), [](const clip_row& a, const clip_row& b) {
        if (a.clip_start_ != b.clip_start_) return a.clip_start_ < b.clip_start_;
        return a.clip_->secs_end() < b.clip_->secs_end();
    });
    return all;
}

}  // namespace vistels
