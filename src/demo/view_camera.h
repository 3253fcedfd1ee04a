// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "demo/geometry.h"

namespace vistels::demo {

struct screen_point {
    double x = 0;  // pixels from the left
    double y = 0;  // pixels from the top
};

// A camera that looks from one place at another and sees in perspective.
class view_camera {
  public:
    // `focal` is the distance of the picture plane in pixels: larger sees narrower.
    view_camera(point3 eye, point3 looks_at, double focal, double width, double height);

    // Metres in front of the camera; nothing at less than `nearest` can be projected.
    double depth(point3 place) const { return dot(place - eye_, ahead_); }
    screen_point project(point3 place) const;
    double pixels_per_metre(point3 place) const { return focal_ / depth(place); }
    bool sees(point3 place) const { return depth(place) > nearest; }

    // A flat shape as it is seen, cut off where it comes too near; empty when nothing of it is in front.
    std::vector<screen_point> outline(const std::vector<point3>& corners) const;

    const point3& eye() const { return eye_; }

    static constexpr double nearest = 0.5;

  private:
    point3 eye_;
    point3 ahead_;
    point3 right_;
    point3 up_;
    double focal_;
    double centre_x_;
    double centre_y_;
};

}  // namespace vistels::demo
