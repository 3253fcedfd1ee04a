// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/ground_drawing.h"

#include <array>
#include <cmath>
#include <string_view>
#include <vector>

#include "demo/geometry.h"
#include "demo/seeded_random.h"

namespace vistels::demo {

namespace {

constexpr double line_width = 0.14;
constexpr double grass_margin = 3.4;
constexpr double board_away = 2.6;  // from the lines
constexpr double board_height = 1.0;
constexpr int stripes = 12;
constexpr paint white = 0xEDEFEA;

// A place on one side of the ground: `along` the side, `out` from the pitch, z up.
struct side_of_ground {
    point origin;
    point along;
    point out;
    double half;  // of the pitch along this side
    point3 at(double a, double o, double z) const { return raised(origin + along * a + out * o, z); }
};

constexpr std::array<side_of_ground, 4> sides{{{{0, half_width}, {1, 0}, {0, 1}, half_length},
                                               {{-half_length, 0}, {0, 1}, {-1, 0}, half_width},
                                               {{half_length, 0}, {0, -1}, {1, 0}, half_width},
                                               {{0, -half_width}, {-1, 0}, {0, -1}, half_length}}};

// From behind a stand's front nothing of it is drawn: it would hide the game.
bool is_in_front(const view_camera& camera, const side_of_ground& side, double out) {
    const point way = camera.eye().ground() - side.origin;
    return way.x * side.out.x + way.y * side.out.y < out;
}

void fill_flat(canvas& picture, const view_camera& camera, paint colour, const std::vector<point3>& corners) {
    picture.set(colour);
    picture.add(camera.outline(corners));
    picture.fill();
}

std::vector<point3> flat_box(double x0, double y0, double x1, double y1) {
    return {{x0, y0, 0}, {x1, y0, 0}, {x1, y1, 0}, {x0, y1, 0}};
}

// A painted line through places on the ground, as wide as paint is.
void add_line(canvas& picture, const view_camera& camera, const std::vector<point>& through) {
    for (std::size_t index = 0; index + 1 < through.size(); ++index) {
        const point way = with_length(through[index + 1] - through[index], line_width / 2);
        const point across{-way.y, way.x};
        const point a = through[index] - way;
        const point b = through[index + 1] + way;
        picture.add(camera.outline(
            {raised(a + across, 0), raised(b + across, 0), raised(b - across, 0), raised(a - across, 0)}));
    }
}

std::vector<point> arc(point centre, double radius, double from, double to) {
    const int parts = std::max(6, static_cast<int>(std::abs(to - from) * 10));
    std::vector<point> through;
    for (int index = 0; index <= parts; ++index) {
        const double angle = from + (to - from) * index / parts;
        through.push_back(centre + point{std::cos(angle), std::sin(angle)} * radius);
    }
    return through;
}

void draw_lines(canvas& picture, const view_camera& camera) {
    const auto box = [](double x0, double y0, double x1, double y1) {
        return std::vector<point>{{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}, {x0, y0}};
    };
    picture.set(white);
    add_line(picture, camera, box(-half_length, -half_width, half_length, half_width));
    add_line(picture, camera, {{0, -half_width}, {0, half_width}});
    add_line(picture, camera, arc({}, circle_radius, 0, 2 * pi));
    add_line(picture, camera, arc({}, 0.12, 0, 2 * pi));
    for (const double side : {-1.0, 1.0}) {
        const double goal = side * half_length;
        add_line(picture, camera, box(goal, -box_half_width, goal - side * box_depth, box_half_width));
        add_line(picture, camera, box(goal, -5.5, goal - side * 3.5, 5.5));
        add_line(picture, camera, arc({goal - side * 6.5, 0}, 0.1, 0, 2 * pi));
        for (const double across : {-1.0, 1.0}) {
            const double first = side > 0 ? pi : 0;
            const double turn = (side > 0 ? -1 : 1) * across * -pi / 2;
            add_line(picture, camera, arc({goal, across * half_width}, 1, first, first + turn));
        }
    }
    picture.fill();
}

void draw_pitch(canvas& picture, const view_camera& camera) {
    fill_flat(picture, camera, 0x3B4148, flat_box(-160, -160, 160, 160));
    const double x = half_length + grass_margin;
    const double y = half_width + grass_margin;
    fill_flat(picture, camera, 0x357F3A, flat_box(-x, -y, x, y));
    const double wide = 2 * half_length / stripes;
    for (int stripe = 0; stripe < stripes; ++stripe) {
        const double left = -half_length + stripe * wide;
        fill_flat(picture, camera, stripe % 2 == 0 ? 0x3E9645 : 0x48A54E,
                  flat_box(left, -half_width - 1.2, left + wide, half_width + 1.2));
    }
    draw_lines(picture, camera);
}

void draw_words(canvas& picture, const view_camera& camera, const side_of_ground& side,
                std::string_view words, double middle, paint ink) {
    const double height = board_height * 0.5;
    const double width = text_width(words, height);
    const point3 probe = side.at(middle, board_away, board_height / 2);
    if (!camera.sees(probe)) return;
    for (const auto& line : text_strokes(words, height)) {
        bool is_down = false;
        for (const point& pen : line) {
            const point3 place = side.at(middle - width / 2 + pen.x, board_away, board_height * 0.25 + pen.y);
            if (!camera.sees(place)) break;
            const screen_point seen = camera.project(place);
            if (is_down)
                cairo_line_to(picture.context(), seen.x, seen.y);
            else
                cairo_move_to(picture.context(), seen.x, seen.y);
            is_down = true;
        }
    }
    picture.set(ink);
    picture.stroke(std::max(0.8, camera.pixels_per_metre(probe) * 0.085));
}

void draw_boards(canvas& picture, const view_camera& camera, const side_of_ground& side) {
    struct board {
        paint ground;
        paint ink;
        std::string_view words;
    };
    static constexpr std::array<board, 6> boards{{{0x2F5FD0, 0xF0F2F5, "HARBOUR"},
                                                  {0xE59A12, 0x16181B, "FAIR PLAY"},
                                                  {0xE8EAEC, 0x1B2E5C, "NORTHGATE"},
                                                  {0xA93A0A, 0xF0F2F5, "EVERY CLIP COUNTS"},
                                                  {0x1E2328, 0xE3D543, "TIDE WATER"},
                                                  {0xD9CB3F, 0x16181B, "PLAY ON"}}};
    const double reach = side.half + board_away - 0.3;
    const int count = side.half > 25 ? 8 : 5;
    const double wide = 2 * reach / count;
    const bool from_behind = !is_in_front(camera, side, board_away);
    for (int index = 0; index < count; ++index) {
        const board& one = boards[static_cast<std::size_t>((index + (side.half > 25 ? 0 : 2)) % 6)];
        const double left = -reach + index * wide;
        fill_flat(picture, camera, from_behind ? 0x2A2F35 : one.ground,
                  {side.at(left, board_away, 0), side.at(left + wide, board_away, 0),
                   side.at(left + wide, board_away, board_height), side.at(left, board_away, board_height)});
        if (!from_behind) draw_words(picture, camera, side, one.words, left + wide / 2, one.ink);
    }
}

// Rows of people on a slope: one box each, all of one shirt colour filled together.
void draw_crowd(canvas& picture, const view_camera& camera, const side_of_ground& side, std::uint64_t seed) {
    constexpr std::array<paint, 9> shirts{0x2C4FA8, 0x3F66C4, 0xC9CDD3, 0x6A7078, 0x8C3B22,
                                          0x39424C, 0xB88A2A, 0x4C6B57, 0x7F8790};
    constexpr int rows = 13;
    const double reach = side.half + 6;
    std::array<std::vector<screen_point>, shirts.size() + 1> seats;  // lower middle of each; last: heads
    std::array<std::vector<double>, shirts.size() + 1> sizes;
    seeded_random random(seed);
    for (int row = 0; row < rows; ++row) {
        for (double along = -reach; along < reach; along += 0.72) {
            const auto shirt = random.below(shirts.size());
            const double shift = random.between(-0.16, 0.16);
            if (random.chance(0.16)) continue;
            const point3 place =
                side.at(along + shift + (row % 2) * 0.36, 6.3 + row * 1.0, 1.35 + row * 0.62);
            if (camera.depth(place) < 4) continue;
            const screen_point seen = camera.project(place);
            if (seen.x < -20 || seen.y < -20 || seen.x > picture.width() + 20 ||
                seen.y > picture.height() + 20)
                continue;
            const double scale = camera.pixels_per_metre(place);
            seats[shirt].push_back(seen);
            sizes[shirt].push_back(scale);
            seats.back().push_back({seen.x, seen.y - 0.6 * scale});
            sizes.back().push_back(scale * 0.55);
        }
    }
    const auto whole = [](double length) { return static_cast<int>(std::lround(length)); };
    (void)picture.pixels();
    for (std::size_t group = 0; group < seats.size(); ++group) {
        for (std::size_t index = 0; index < seats[group].size(); ++index) {
            const double scale = sizes[group][index];
            const screen_point& seat = seats[group][index];
            picture.put_box(whole(seat.x - 0.25 * scale), whole(seat.y - 0.6 * scale),
                            std::max(1, whole(0.5 * scale)), std::max(1, whole(0.6 * scale)),
                            group < shirts.size() ? shirts[group] : 0xC09A7C);
        }
    }
    picture.written();
}

void draw_stand(canvas& picture, const view_camera& camera, const side_of_ground& side, std::uint64_t seed) {
    if (!is_in_front(camera, side, 5)) return;
    const double reach = side.half + 7;
    const auto slope = [&](double low, double high) {
        return std::vector<point3>{
            side.at(-reach, 5.5 + low, 1.2 + low * 0.62), side.at(reach, 5.5 + low, 1.2 + low * 0.62),
            side.at(reach, 5.5 + high, 1.2 + high * 0.62), side.at(-reach, 5.5 + high, 1.2 + high * 0.62)};
    };
    fill_flat(picture, camera, 0x596169,
              {side.at(-reach, 5.5, 0), side.at(reach, 5.5, 0), side.at(reach, 5.5, 1.2),
               side.at(-reach, 5.5, 1.2)});
    fill_flat(picture, camera, 0x2B3138, slope(0, 14));
    draw_crowd(picture, camera, side, seed);
    fill_flat(picture, camera, 0x1C2126,
              {side.at(-reach, 19.5, 9.9), side.at(reach, 19.5, 9.9), side.at(reach, 19.5, 14),
               side.at(-reach, 19.5, 14)});
    fill_flat(picture, camera, 0x454D56,
              {side.at(-reach, 19.5, 14), side.at(reach, 19.5, 14), side.at(reach, 14, 15),
               side.at(-reach, 14, 15)});
}

void add_segment(canvas& picture, const view_camera& camera, point3 a, point3 b) {
    if (!camera.sees(a) || !camera.sees(b)) return;
    const screen_point from = camera.project(a);
    const screen_point to = camera.project(b);
    cairo_move_to(picture.context(), from.x, from.y);
    cairo_line_to(picture.context(), to.x, to.y);
}

}  // namespace

void draw_goal(canvas& picture, const view_camera& camera, int side) {
    const double line = side * half_length;
    const double back = line + side * goal_depth;
    const double top = line + side * 0.5;
    const double half = goal_half_width;
    const point3 middle{line, 0, 1};
    if (!camera.sees(middle)) return;
    const double scale = camera.pixels_per_metre(middle);
    constexpr int meshes = 12;
    for (int index = 0; index <= meshes; ++index) {
        const double share = static_cast<double>(index) / meshes;
        const double y = -half + 2 * half * share;
        add_segment(picture, camera, {top, y, goal_height}, {back, y, 0});
        add_segment(picture, camera, {line, y, goal_height}, {top, y, goal_height});
        const double x = top + (back - top) * share;
        const double z = goal_height * (1 - share);
        if (index % 2 == 0) {
            add_segment(picture, camera, {x, -half, z}, {x, half, z});
            for (const double post : {-half, half}) {
                add_segment(picture, camera, {line, post, z}, {x, post, z});
                add_segment(picture, camera, {line + (back - line) * share, post, 0},
                            {line + (top - line) * share, post, goal_height});
            }
        }
    }
    picture.set(0xE9ECEF, 0.42);
    picture.stroke(std::max(0.7, 0.03 * scale));
    add_segment(picture, camera, {line, -half, 0}, {line, -half, goal_height});
    add_segment(picture, camera, {line, -half, goal_height}, {line, half, goal_height});
    add_segment(picture, camera, {line, half, goal_height}, {line, half, 0});
    picture.set(0xF0F2F2);
    picture.stroke(std::max(2.0, 0.14 * scale));
}

void draw_ground(canvas& picture, const view_camera& camera, std::uint64_t seed) {
    picture.set(0x151B24);
    picture.add_box(0, 0, picture.width(), picture.height());
    picture.fill();
    draw_pitch(picture, camera);
    for (std::size_t index = 0; index < sides.size(); ++index)
        draw_stand(picture, camera, sides[index], seed + index);
    for (const side_of_ground& side : sides) draw_boards(picture, camera, side);
    draw_goal(picture, camera, -1);
    draw_goal(picture, camera, 1);
}

}  // namespace vistels::demo
