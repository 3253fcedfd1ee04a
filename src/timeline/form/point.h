// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// A place on a picture.
struct point {
    double x = 0;
    double y = 0;
    bool operator==(const point&) const = default;
};

}  // namespace vistels
