// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "demo/block_code.h"
#include "demo/film_camera.h"
#include "demo/frame_painter.h"
#include "demo/stroke_letters.h"

namespace vistels::demo {
namespace {

constexpr int angles = 8;

TEST(view_camera, sees_what_is_in_front_and_cuts_what_is_not) {
    const view_camera camera({0, -10, 2}, {0, 0, 2}, 1000, 1280, 720);
    const screen_point centre = camera.project({0, 5, 2});
    EXPECT_NEAR(centre.x, 640, 1e-9);
    EXPECT_NEAR(centre.y, 360, 1e-9);
    EXPECT_GT(camera.project({1, 0, 2}).x, centre.x);  // x is to the right
    EXPECT_LT(camera.project({0, 0, 3}).y, centre.y);  // z is up
    EXPECT_NEAR(camera.pixels_per_metre({0, 0, 2}), 100, 1e-9);
    EXPECT_TRUE(camera.outline({{-1, -20, 0}, {1, -20, 0}, {1, -30, 0}}).empty());
    // A floor that reaches behind the camera is cut, and what is left lies below the horizon.
    const auto floor = camera.outline({{-50, -50, 0}, {50, -50, 0}, {50, 50, 0}, {-50, 50, 0}});
    ASSERT_GE(floor.size(), 4u);
    for (const screen_point& corner : floor) {
        EXPECT_TRUE(std::isfinite(corner.x));
        EXPECT_GT(corner.y, 360);
    }
}

TEST(film_camera, offsets_are_whole_frames_and_the_following_cameras_keep_the_ball_in_view) {
    const game_record game = simulate_game(240, 62);
    for (int index = 0; index < 16; ++index) {
        const double frames = film_offset_at(index) * film_frame_rate;
        EXPECT_NEAR(frames, std::round(frames), 1e-6) << index;
        EXPECT_LE(film_offset_at(index), film_offset_at(3)) << index;
        const film_camera camera = film_camera_at(index);
        if (!camera.follows) continue;
        int seen = 0;
        int looks = 0;
        for (double now = 0; now < 60; now += 0.25, ++looks) {
            const screen_point ball = camera.view_at(game, now).project(game.ball_at(now));
            seen += ball.x > 0 && ball.x < film_width && ball.y > 0 && ball.y < film_height;
        }
        EXPECT_GE(seen, looks * 97 / 100) << camera.name;
    }
}

// The mean of a small square, as blue minus red.
double blueness(const std::uint8_t* pixels, int stride, screen_point middle) {
    double sum = 0;
    for (int dy = -2; dy <= 2; ++dy) {
        for (int dx = -2; dx <= 2; ++dx) {
            const std::uint8_t* pixel =
                pixels + (std::lround(middle.y) + dy) * stride + (std::lround(middle.x) + dx) * 4;
            sum += pixel[0] - pixel[2];
        }
    }
    return sum / 25;
}

TEST(frame_painter, every_angle_shows_the_players_where_they_are) {
    const game_record game = simulate_game(240, 30);
    constexpr double now = 22;
    const game_state state = game.state_at(now);
    for (int index = 0; index < angles; ++index) {
        const film_camera camera = film_camera_at(index);
        const view_camera view = camera.view_at(game, now);
        frame_painter painter(game, camera, 1);
        const std::uint8_t* pixels = painter.paint(now, 815);
        EXPECT_EQ(read_block_code(pixels, film_width, film_height, painter.stride()), 815u) << camera.name;
        int in_view = 0;
        int blue = 0;
        for (int player = 1; player < players_a_side; ++player) {  // the keeper wears another shirt
            const screen_point chest =
                view.project(raised(state.players[static_cast<std::size_t>(player)].place, 1.6));
            if (chest.x < 20 || chest.x > film_width - 20 || chest.y < 80 || chest.y > film_height - 80)
                continue;
            ++in_view;
            blue += blueness(pixels, painter.stride(), chest) > 40;
        }
        EXPECT_GE(blue, in_view - 2) << camera.name;  // one may be hidden behind another
        EXPECT_GE(in_view, 2) << camera.name;
        const std::vector<std::uint8_t> before(pixels, pixels + painter.stride() * 100);
        const std::uint8_t* again = painter.paint(now, 815);
        EXPECT_FALSE(std::equal(before.begin(), before.end(), again)) << camera.name << ": no grain";
    }
}

TEST(stroke_letters, digits_take_the_same_width_and_all_letters_are_drawn) {
    for (char letter = 'A'; letter <= 'Z'; ++letter)
        EXPECT_FALSE(text_strokes(std::string(1, letter), 6).empty()) << letter;
    for (char digit = '0'; digit <= '9'; ++digit) {
        const std::string text{digit, '0'};
        EXPECT_DOUBLE_EQ(text_width(text, 12), text_width("80", 12));
        for (const auto& line : text_strokes(text, 12))
            for (const point& corner : line) {
                EXPECT_TRUE(corner.y >= 0 && corner.y <= 12) << digit;
                EXPECT_TRUE(corner.x >= 0 && corner.x <= text_width(text, 12)) << digit;
            }
    }
    EXPECT_TRUE(text_strokes("  ", 12).empty());
}

}  // namespace
}  // namespace vistels::demo
