// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>

namespace vistels::demo {

inline constexpr double pi = 3.14159265358979323846;

// A place or a direction on the ground, in metres. The pitch's middle is the origin; x runs along the pitch
// from the left goal to the right one, y across it, away from the main stand's camera.
struct point {
    double x = 0;
    double y = 0;
};

inline point operator+(point a, point b) {
    return {a.x + b.x, a.y + b.y};
}
inline point operator-(point a, point b) {
    return {a.x - b.x, a.y - b.y};
}
inline point operator*(point a, double factor) {
    return {a.x * factor, a.y * factor};
}
inline double length(point a) {
    return std::hypot(a.x, a.y);
}
inline double distance(point a, point b) {
    return length(a - b);
}
// `a` made `size` long; nothing stays nothing.
inline point with_length(point a, double size) {
    const double now = length(a);
    return now > 1e-9 ? a * (size / now) : point{};
}
inline point at_most(point a, double size) {
    return length(a) > size ? with_length(a, size) : a;
}
inline point between(point a, point b, double share) {
    return a + (b - a) * share;
}

// A place in the air, z metres above the ground.
struct point3 {
    double x = 0;
    double y = 0;
    double z = 0;
    point ground() const { return {x, y}; }
};

inline point3 operator+(point3 a, point3 b) {
    return {a.x + b.x, a.y + b.y, a.z + b.z};
}
inline point3 operator-(point3 a, point3 b) {
    return {a.x - b.x, a.y - b.y, a.z - b.z};
}
inline point3 operator*(point3 a, double factor) {
    return {a.x * factor, a.y * factor, a.z * factor};
}
inline double dot(point3 a, point3 b) {
    return a.x * b.x + a.y * b.y + a.z * b.z;
}
inline double length(point3 a) {
    return std::sqrt(dot(a, a));
}
inline point3 raised(point a, double z) {
    return {a.x, a.y, z};
}

// The pitch, in metres.
inline constexpr double half_length = 30;
inline constexpr double half_width = 19;
inline constexpr double goal_half_width = 2.75;
inline constexpr double goal_height = 2.2;
inline constexpr double goal_depth = 1.6;
inline constexpr double box_depth = 9;
inline constexpr double box_half_width = 11;
inline constexpr double circle_radius = 5;
inline constexpr double ball_radius = 0.11;

}  // namespace vistels::demo
