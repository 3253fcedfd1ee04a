// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/captions.h"

#include <array>
#include <cmath>
#include <cstdio>
#include <string>

#include "demo/film_camera.h"
#include "demo/squads.h"

namespace vistels::demo {

namespace {

constexpr double text_height = 21;
constexpr double box_height = 42;
constexpr double padding = 13;
constexpr double pen = 3.6;

// Returns the box's width.
double draw_box(canvas& picture, double x, double y, const std::string& text, paint ground, double alpha,
                paint ink) {
    const double width = text_width(text, text_height) + 2 * padding;
    picture.set(ground, alpha);
    picture.add_box(x, y, width, box_height);
    picture.fill();
    picture.set(ink);
    picture.add_text(text, x + padding, y + (box_height + text_height) / 2, text_height);
    picture.stroke(pen);
    return width;
}

}  // namespace

std::string burnt_in_time(double seconds) {
    const long long frames = std::llround(seconds * film_frame_rate);
    const long long count = std::llabs(frames);
    const long long whole = count / film_frame_rate;
    std::array<char, 48> text{};
    std::snprintf(text.data(), text.size(), "%s%lld:%02lld:%02lld.%02lld", frames < 0 ? "-" : "",
                  whole / 3600, whole / 60 % 60, whole % 60, count % film_frame_rate);
    return text.data();
}

void draw_burnt_in_time(canvas& picture, double seconds) {
    const std::string text = burnt_in_time(seconds);
    const double width = text_width(text, text_height) + 2 * padding;
    draw_box(picture, picture.width() - width - 24, 24, text, 0x0D0F12, 0.66, 0xF2F4F6);
}

void draw_score(canvas& picture, const game_state& game) {
    const auto name = [](std::size_t team) { return std::string(squads[team].short_name); };
    const int whole = static_cast<int>(game.clock);
    std::array<char, 32> clock{};
    std::snprintf(clock.data(), clock.size(), "%d:%02d", whole / 60, whole % 60);
    double x = 24;
    x += draw_box(picture, x, 24, name(0) + " " + std::to_string(game.score[0]), 0x2A5BDB, 1, 0xFFFFFF);
    x += draw_box(picture, x, 24, std::to_string(game.score[1]) + " " + name(1), 0xEEF0F2, 1, 0x15181C);
    draw_box(picture, x, 24, clock.data(), 0x15191E, 1, 0xF2F4F6);
}

}  // namespace vistels::demo
