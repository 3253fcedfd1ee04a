// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <vector>

#include "timeline/records/clip_Pause_Item.h"

namespace vistels {

// The first pause point that playing forwards from one time to another comes to: after `from`, not after
// `to`, and within the clip that begins and ends there. Seconds on the collection's clock.
std::optional<double> pause_point_between(const std::vector<clip_Pause_Item>& points, double from, double to,
                                          double clip_start, double clip_end);

}  // namespace vistels
