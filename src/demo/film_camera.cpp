// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/film_camera.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace vistels::demo {

namespace {

constexpr std::array<film_camera, 8> cameras{{
    {"Wide", {0, -60, 33}, {0, 2.6, 0}, 1165, false, 0, true},
    {"Left end", {-47, 0, 11.5}, {-10.5, 0, 0}, 1060, false, -1, false},
    {"Right end", {45, 7, 10.5}, {12, -0.5, 0}, 960, false, 1, false},
    {"Follow", {0, -46, 13}, {0, 0, 0.8}, 1900, true, 0, false},
    {"Far side", {6, 50, 17}, {2, 2, 0}, 1000, false, 0, false},
    {"Close", {-4, -43, 9}, {0, 0, 1}, 2900, true, 0, false},
    {"Corner", {-42, -32, 13}, {-8, -2, 0}, 1150, false, 0, false},
    {"High", {24, -60, 34}, {4, -2, 0}, 1280, false, 0, false},
}};
constexpr std::array<double, 4> first_offsets{0, 0.8, -1.4, 2.3};

// The camera operator sees a little ahead and swings evenly: the mean of where the ball goes round `seconds`.
point followed(const game_record& game, double seconds) {
    constexpr int looks = 8;
    constexpr double step = 0.13;
    point sum;
    double weights = 0;
    for (int look = -looks; look <= looks; ++look) {
        const double weight = std::exp(-0.5 * std::pow(look / 3.5, 2));
        sum = sum + game.ball_at(seconds + look * step).ground() * weight;
        weights += weight;
    }
    return sum * (1 / weights);
}

}  // namespace

view_camera film_camera::view_at(const game_record& game, double seconds) const {
    if (!follows) return {eye, looks_at, focal, film_width, film_height};
    const point ball = followed(game, seconds);
    const point aim{std::clamp(ball.x, -26.0, 26.0), std::clamp(ball.y * 0.85 + 1.2, -14.0, 15.0)};
    // What is farther off is brought nearer by half of the difference.
    const double away = distance(aim, eye.ground());
    const double zoom = std::sqrt(away / 46);
    return {eye, raised(aim, looks_at.z), focal * zoom, film_width, film_height};
}

film_camera film_camera_at(int index) {
    film_camera camera = cameras[static_cast<std::size_t>(index) % cameras.size()];
    const int round = index / static_cast<int>(cameras.size());
    camera.eye.x += 3.0 * round;
    camera.eye.z += 1.5 * round;
    return camera;
}

double film_offset_at(int index) {
    if (index < static_cast<int>(first_offsets.size())) return first_offsets[static_cast<std::size_t>(index)];
    return (index * 37 % 46) / 10.0 - 2.3;
}

}  // namespace vistels::demo
