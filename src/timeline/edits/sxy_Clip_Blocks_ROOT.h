// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "timeline/edits/sxy_Adjust_Clip_Overlaps.h"

namespace vistels {

// A block of the timeline, used where space is saved or clips are cut. All in seconds on the collection's
// clock.
struct sxy_clip_BLOCK_item {
    double block_secs_start = 0;
    double block_secs_end = 0;
    bool excluded_block = false;   // this stretch is left out
    double suck_back_seconds = 0;  // how far what comes after the block moves back to close the gap

    bool operator==(const sxy_clip_BLOCK_item&) const = default;
};

// The blocks of a timeline in ascending order; they do not overlap. A value.
class sxy_Clip_Blocks_ROOT {
  public:
    sxy_Clip_Blocks_ROOT() = default;
    // Puts the blocks in order of their starts. Of blocks that overlap the later one begins where the earlier
    // one ends, and is dropped when nothing of it is left.
    explicit sxy_Clip_Blocks_ROOT(std::vector<sxy_clip_BLOCK_item> blocks);
    // Blocks from 0 to `end` that leave out all but the spans, and close every gap.
    static sxy_Clip_Blocks_ROOT keeping(std::vector<clip_span> spans, double end);

    const std::vector<sxy_clip_BLOCK_item>& blocks() const { return blocks_; }

    // Where a time is once the blocks have moved back what comes after them. A time within an excluded block
    // is where that block's end comes to be.
    double moved_back(double seconds) const;
    // Whether the time lies within an excluded block; its end does not.
    bool is_excluded(double seconds) const;

  private:
    std::vector<sxy_clip_BLOCK_item> blocks_;
};

}  // namespace vistels
