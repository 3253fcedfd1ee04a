// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/sxy_Clip_Blocks_ROOT.h"

#include <algorithm>

namespace vistels {

sxy_Clip_Blocks_ROOT::sxy_Clip_Blocks_ROOT(std::vector<sxy_clip_BLOCK_item> blocks) {
    std::stable_sort(blocks.begin(), blocks.end(),
                     [](const auto& a, const auto& b) { return a.block_secs_start < b.block_secs_start; });
    for (auto& block : blocks) {
        if (!blocks_.empty()) {
            block.block_secs_start = std::max(block.block_secs_start, blocks_.back().block_secs_end);
        }
        if (block.block_secs_end > block.block_secs_start) blocks_.push_back(block);
    }
}

sxy_Clip_Blocks_ROOT sxy_Clip_Blocks_ROOT::keeping(std::vector<clip_span> spans, double end) {
    std::sort(spans.begin(), spans.end(), [](const auto& a, const auto& b) { return a.start < b.start; });
    std::vector<sxy_clip_BLOCK_item> blocks;
    double at = 0;
    const auto leave_out_until = [&](double until) {
        if (until > at) blocks.push_back({at, until, true, until - at});
        at = std::max(at, until);
    };
    for (const auto& span : spans) {
        const double last = std::min(span.end, end);
        if (last <= std::max(span.start, at)) continue;
        leave_out_until(span.start);
        blocks.push_back({at, last, false, 0});
        at = last;
    }
    leave_out_until(end);
    return sxy_Clip_Blocks_ROOT(std::move(blocks));
}

double sxy_Clip_Blocks_ROOT::moved_back(double seconds) const {
    double back = 0;
    for (const auto& block : blocks_) {
        if (seconds < block.block_secs_start) break;
        if (seconds >= block.block_secs_end) {
            back += block.suck_back_seconds;
        } else if (block.excluded_block) {
            return block.block_secs_end - back - block.suck_back_seconds;
        }
    }
    return seconds - back;
}

bool sxy_Clip_Blocks_ROOT::is_excluded(double seconds) const {
    return std::any_of(blocks_.begin(), blocks_.end(), [&](const auto& block) {
        return block.excluded_block && seconds >= block.block_secs_start && seconds < block.block_secs_end;
    });
}

}  // namespace vistels
