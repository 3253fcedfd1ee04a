// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "timeline/form/point.h"

namespace vistels {

// A marker on the time ruler. Part of its timeline, whose lock guards it.
struct sXY_data_TAG {
    double secs_tag = 0;  // on the collection's clock
    std::optional<point> xy_tag;

    bool operator==(const sXY_data_TAG&) const = default;
};

}  // namespace vistels
