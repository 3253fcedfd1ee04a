// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/figure_drawing.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <string>
#include <vector>

#include "demo/geometry.h"
#include "demo/squads.h"

namespace vistels::demo {

namespace {

// People and ball are drawn larger than life, so that they can be told apart in a small picture.
constexpr double figure_scale = 1.35;
constexpr double drawn_ball_radius = 0.24;
constexpr double body_height = 1.8;
constexpr point shadow_way{0.55, 0.62};  // metres of shadow for each metre of height

struct kit {
    paint shirt;
    paint shorts;
    paint number;
    paint socks;
};
constexpr std::array<kit, 2> kits{
    {{0x2A5BDB, 0x17306E, 0xF2F4F6, 0x2A5BDB}, {0xEEF0F2, 0x1E2228, 0x15181C, 0xE2E5E8}}};
constexpr std::array<kit, 2> keeper_kits{
    {{0xF0A020, 0x2A2118, 0x16181B, 0xF0A020}, {0xB057D8, 0x2A1836, 0xF2F4F6, 0xB057D8}}};
constexpr std::array<paint, 4> skins{0xE0B089, 0x8A5A3A, 0xC68E63, 0x5E3C28};
constexpr std::array<paint, 4> hairs{0x2B1D14, 0x15110E, 0x6B4A25, 0x1A1512};

const kit& kit_of(int player) {
    const auto team = static_cast<std::size_t>(team_of(player));
    return place_of(player) == keeper ? keeper_kits[team] : kits[team];
}

void add_ground_ellipse(canvas& picture, const view_camera& camera, point centre, point axis, double width) {
    const point across = with_length({-axis.y, axis.x}, width);
    std::vector<point3> corners;
    constexpr int parts = 14;
    for (int index = 0; index < parts; ++index) {
        const double angle = 2 * pi * index / parts;
        corners.push_back(raised(centre + axis * std::cos(angle) + across * std::sin(angle), 0));
    }
    picture.add(camera.outline(corners));
}

void add_shadows(canvas& picture, const view_camera& camera, const game_state& game) {
    for (const player_state& player : game.players) {
        const double upright = std::sqrt(std::max(0.05, 1 - length(player.lean) * length(player.lean)));
        const point fall = (shadow_way * upright + player.lean) * (body_height * figure_scale * 0.5);
        add_ground_ellipse(picture, camera, player.place + fall, fall, 0.3);
    }
    const point under = game.ball.ground() + shadow_way * game.ball.z;
    add_ground_ellipse(picture, camera, under, {drawn_ball_radius, 0}, drawn_ball_radius);
    picture.set(0x0A1A0C, 0.34);
    picture.fill();
}

// Draws one player in metres of his own body: x to the right of the picture, y from feet to head.
class figure {
  public:
    figure(canvas& picture, const view_camera& camera, int player, const player_state& state)
        : picture_(picture), context_(picture.context()), state_(state), player_(player) {
        const point way = camera.eye().ground() - state.place;
        const double away = std::atan2(way.y, way.x);
        // Across the picture, to the right, as this camera sees the ground there.
        across_ = std::sin(state.facing - away);
        towards_ = std::cos(state.facing - away);
    }

    void draw() {
        const kit& worn = kit_of(player_);
        const double effort = std::min(1.0, state_.speed / 6.5);
        const double swing = std::sin(state_.stride * 1.9) * effort;
        limb(0.09, 0.86, foot(0.09, swing), worn.socks, 0.15);
        limb(-0.09, 0.86, foot(-0.09, -swing), worn.socks, 0.15);
        arm(0.25, -swing, worn);
        arm(-0.25, swing, worn);
        shorts(worn.shorts);
        shirt(worn.shirt);
        number(worn.number);
        head();
    }

  private:
    point foot(double hip, double swing) const {
        return {hip + 0.42 * swing * across_,
                0.04 + 0.16 * std::max(0.0, swing) * std::abs(towards_) + 0.05 * std::abs(swing)};
    }

    void limb(double from_x, double from_y, point to, paint colour, double width) {
        const point middle{(from_x + to.x) / 2 + 0.06 * across_, (from_y + to.y) / 2};
        cairo_move_to(context_, from_x, from_y);
        cairo_line_to(context_, middle.x, middle.y);
        cairo_line_to(context_, to.x, to.y);
        picture_.set(colour);
        picture_.stroke(width);
    }

    void arm(double shoulder, double swing, const kit& worn) {
        const double out = shoulder > 0 ? 1 : -1;
        const point hanging{shoulder + 0.1 * out + 0.3 * swing * across_, 0.98 + 0.1 * std::abs(swing)};
        const point raised{shoulder + 0.18 * out, 2.0};
        const point hand = between(hanging, raised, state_.arms);
        const point elbow{(shoulder + hand.x) / 2 + 0.06 * out, (1.42 + hand.y) / 2};
        cairo_move_to(context_, elbow.x, elbow.y);
        cairo_line_to(context_, hand.x, hand.y);
        picture_.set(skin());
        picture_.stroke(0.1);
        cairo_move_to(context_, shoulder * 0.9, 1.42);
        cairo_line_to(context_, elbow.x, elbow.y);
        picture_.set(worn.shirt);
        picture_.stroke(0.14);
    }

    void shorts(paint colour) {
        picture_.add(
            {{-0.2, 0.98}, {0.2, 0.98}, {0.22, 0.7}, {0.03, 0.7}, {0, 0.78}, {-0.03, 0.7}, {-0.22, 0.7}});
        picture_.set(colour);
        picture_.fill();
    }

    void shirt(paint colour) {
        cairo_move_to(context_, -0.2, 0.93);
        cairo_line_to(context_, 0.2, 0.93);
        cairo_line_to(context_, 0.25, 1.4);
        cairo_curve_to(context_, 0.26, 1.5, 0.12, 1.53, 0, 1.53);
        cairo_curve_to(context_, -0.12, 1.53, -0.26, 1.5, -0.25, 1.4);
        cairo_close_path(context_);
        picture_.set(colour);
        picture_.fill();
    }

    void number(paint colour) {
        constexpr double height = 0.34;
        const std::string digits = std::to_string(member(player_).number);
        const double left = -text_width(digits, height) / 2;
        for (const auto& line : text_strokes(digits, height)) {
            cairo_move_to(context_, left + line.front().x, 1.05 + line.front().y);
            for (const point& corner : line) cairo_line_to(context_, left + corner.x, 1.05 + corner.y);
        }
        picture_.set(colour);
        picture_.stroke(0.075);
    }

    void head() {
        cairo_arc(context_, 0, 1.68, 0.155, 0, 2 * pi);
        picture_.set(skin());
        picture_.fill();
        // From behind there is only hair, from the front it ends at the brow.
        const double cover = 0.25 + 0.3 * (1 - towards_) * 0.5;
        cairo_arc(context_, -0.04 * across_, 1.7, 0.16, pi * (0.5 - cover), pi * (0.5 + cover));
        cairo_close_path(context_);
        picture_.set(hairs[static_cast<std::size_t>(player_ * 7 % 4)]);
        picture_.fill();
    }

    paint skin() const { return skins[static_cast<std::size_t>(player_ * 5 / 3 % 4)]; }

    canvas& picture_;
    cairo_t* context_;
    const player_state& state_;
    int player_;
    double across_ = 0;
    double towards_ = 0;
};

void draw_player(canvas& picture, const view_camera& camera, int player, const player_state& state) {
    const point3 feet = raised(state.place, 0);
    if (camera.depth(feet) < 1.5) return;
    const double lean = std::min(0.98, length(state.lean));
    const point tilt = with_length(state.lean, lean * body_height);
    const screen_point low = camera.project(feet);
    const screen_point high =
        camera.project(raised(state.place + tilt, body_height * std::sqrt(1 - lean * lean)));
    const double scale = camera.pixels_per_metre(feet) * figure_scale;
    const double margin = 3 * scale;
    if (low.x < -margin || low.x > picture.width() + margin || low.y < -margin ||
        low.y > picture.height() + margin)
        return;
    point up{(high.x - low.x) * figure_scale / body_height, (high.y - low.y) * figure_scale / body_height};
    // A body that lies along the line of sight still shows some of itself.
    if (length(up) < 0.45 * scale)
        up = length(up) > 1e-6 ? with_length(up, 0.45 * scale) : point{0, -0.45 * scale};
    const point right = with_length({-up.y, up.x}, scale);
    cairo_matrix_t body;
    cairo_matrix_init(&body, right.x, right.y, up.x, up.y, low.x, low.y);
    cairo_save(picture.context());
    cairo_transform(picture.context(), &body);
    cairo_set_tolerance(picture.context(), 0.3);
    figure(picture, camera, player, state).draw();
    cairo_restore(picture.context());
}

void draw_ball(canvas& picture, const view_camera& camera, point3 ball) {
    const point3 centre{ball.x, ball.y, ball.z + drawn_ball_radius - ball_radius};
    if (camera.depth(centre) < 1.5) return;
    const screen_point seen = camera.project(centre);
    const double radius = std::max(4.0, drawn_ball_radius * camera.pixels_per_metre(centre));
    cairo_t* context = picture.context();
    cairo_arc(context, seen.x, seen.y, radius, 0, 2 * pi);
    picture.set(0x1B1F24);
    picture.fill();
    cairo_arc(context, seen.x, seen.y, radius - std::max(0.7, 0.09 * radius), 0, 2 * pi);
    picture.set(0xF0F1EE);
    picture.fill();
    // Dark patches go round as it rolls.
    for (int patch = 0; patch < 3; ++patch) {
        const double angle = 3.2 * ball.x + 2.1 * patch;
        const double slant = 2.7 * ball.y + 1.3 * patch;
        if (std::cos(angle) * std::cos(slant) < 0.1) continue;
        cairo_arc(context, seen.x + 0.55 * radius * std::sin(angle), seen.y + 0.55 * radius * std::sin(slant),
                  0.22 * radius, 0, 2 * pi);
        picture.set(0x2A2E33);
        picture.fill();
    }
}

}  // namespace

void draw_figures(canvas& picture, const view_camera& camera, const game_state& game) {
    add_shadows(picture, camera, game);
    constexpr int ball = player_count;
    std::array<std::pair<double, int>, player_count + 1> order;
    for (int player = 0; player < player_count; ++player) {
        const auto index = static_cast<std::size_t>(player);
        order[index] = {-camera.depth(raised(game.players[index].place, 0)), player};
    }
    order.back() = {-camera.depth(raised(game.ball.ground(), 0)), ball};
    std::sort(order.begin(), order.end());
    for (const auto& [depth, which] : order) {
        if (which == ball)
            draw_ball(picture, camera, game.ball);
        else
            draw_player(picture, camera, which, game.players[static_cast<std::size_t>(which)]);
    }
}

}  // namespace vistels::demo
