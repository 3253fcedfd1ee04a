// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/pause_points.h"

namespace vistels {

std::optional<double> pause_point_between(const std::vector<clip_Pause_Item>& points, double from, double to,
                                          double clip_start, double clip_end) {
    std::optional<double> first;
    for (const auto& point : points) {
        const bool is_passed = point.seconds > from && point.seconds <= to;
        const bool is_within = point.seconds >= clip_start && point.seconds < clip_end;
        if (is_passed && is_within && !(first && *first <= point.seconds)) first = point.seconds;
    }
    return first;
}

}  // namespace vistels
