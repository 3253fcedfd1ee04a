// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "timeline/records/sxy_DATA_root.h"

namespace vistels {

// The clock of timer clips. It begins at the clip's offset and runs on, or down, while the clip does; one
// that adds up goes on from the clips of its row that started before it. Seconds; all times are those of the
// collection's clock. Any thread.

// What the clock of a clip of the row shows at a time within the clip; before it as at its start, behind it
// as at its end. A growing clip has no end.
double timer_seconds(const sxy_ROW& row, const sxy_CLIP& clip, bool is_growing, double at);

// What the clock of a timer row shows: that of the clip that grows there, else of the one that holds the time
// and started last, else of the one that ended last before it; nothing when there is none.
std::optional<double> timer_row_seconds(const sxy_DATA_root& timeline, const sxy_ROW& row, double at);

}  // namespace vistels
