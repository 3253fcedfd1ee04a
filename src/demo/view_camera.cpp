// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/view_camera.h"

#include <cstddef>

namespace vistels::demo {

namespace {

point3 cross_product(point3 a, point3 b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

point3 unit(point3 a) {
    return a * (1 / length(a));
}

}  // namespace

view_camera::view_camera(point3 eye, point3 looks_at, double focal, double width, double height)
    : eye_(eye),
      ahead_(unit(looks_at - eye)),
      right_(unit(cross_product(ahead_, {0, 0, 1}))),
      up_(cross_product(right_, ahead_)),
      focal_(focal),
      centre_x_(width / 2),
      centre_y_(height / 2) {}

screen_point view_camera::project(point3 place) const {
    const point3 way = place - eye_;
    const double scale = focal_ / dot(way, ahead_);
    return {centre_x_ + dot(way, right_) * scale, centre_y_ - dot(way, up_) * scale};
}

std::vector<screen_point> view_camera::outline(const std::vector<point3>& corners) const {
    std::vector<screen_point> seen;
    for (std::size_t index = 0; index < corners.size(); ++index) {
        const point3& a = corners[index];
        const point3& b = corners[(index + 1) % corners.size()];
        const double depth_a = depth(a);
        const double depth_b = depth(b);
        if (depth_a >= nearest) seen.push_back(project(a));
        if ((depth_a >= nearest) != (depth_b >= nearest))
            seen.push_back(project(a + (b - a) * ((nearest - depth_a) / (depth_b - depth_a))));
    }
    if (seen.size() < 3) seen.clear();
    return seen;
}

}  // namespace vistels::demo
