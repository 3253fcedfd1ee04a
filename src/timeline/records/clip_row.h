// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "timeline/records/clip_set.h"
#include "timeline/records/sxy_DATA_root.h"

namespace vistels {

// A clip with its row, for lists that span rows.
struct clip_row {
    clip_pointer clip_;
    double clip_start_ = 0;  // seconds
    row_pointer row_;
    int row_num_ix1 = 0;  // the row's place in the timeline, from 1
};

// The clips of all rows by start, those that start together by end and then by the place of their row; those
// in `only` alone, when it is given. Any thread.
std::vector<clip_row> clips_in_start_order(const std::vector<row_pointer>& rows,
                                           const clip_set* only = nullptr);

}  // namespace vistels
