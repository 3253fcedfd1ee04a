// SPDX-License-Identifier: GPL-3.0-or-later
// What happens when the ball is dead.
#include <algorithm>
#include <array>
#include <utility>

#include "demo/game_engine.h"

namespace vistels::demo {

void game_engine::bring_ball(point3 spot, int taker, double least_seconds, deed then) {
    view_.ball_is_dead = true;
    view_.attacking = team_of(taker);
    const double ready = now_ + least_seconds;
    const point back = with_length(spot.ground(), 0.5);
    const point stand =
        spot.ground() + (length(back) > 0 ? back : point{-0.5 * direction_of(team_of(taker)), 0});
    const double way = length(spot - ball_);
    roll_to(spot, std::max(2.0, way / std::max(0.8, least_seconds - 0.5)), way > 12 ? 3 : 0, [] {});
    const double arrival = now_ + flight_.duration;
    wait_until(
        [=, this] {
            players_.send(taker, stand, now_ + 0.3, run_speed + 1.2);
            return now_ >= ready && now_ >= arrival && distance(players_.place(taker), stand) < 0.6;
        },
        [this, taker, then = std::move(then)] {
            gain(taker);
            holder_ = taker;
            view_.ball_is_dead = false;
            then();
        });
}

void game_engine::kick_off(int team) {
    constexpr std::array<point, players_a_side> line_up{
        {{-28, 0}, {-18, 6}, {-18, -6}, {-8, 5}, {-8, -5}, {-3, 12}, {-3, -12}, {-6, 0}}};
    for (int player = 0; player < player_count; ++player)
        players_.send(player,
                      line_up[static_cast<std::size_t>(place_of(player))] * direction_of(team_of(player)),
                      now_ + 12, run_speed + 1);
    bring_ball({0, 0, ball_radius}, player_at(team, striker), 2.5, [this, team] {
        kicked_off_ = std::min(kicked_off_, now_);
        cue(cue_kind::whistle);
        for (int player = 0; player < player_count; ++player) players_.release(player);
        const int receiver = player_at(team, random_.chance(0.5) ? left_half : right_half);
        pass(receiver, players_.place(receiver), 12, 0, [this] { hold(holder_, 0.5); });
    });
}

void game_engine::throw_in(int team) {
    const double side = ball_.y >= 0 ? 1 : -1;
    const point spot{std::clamp(ball_.x, -half_length + 3, half_length - 3), side * (half_width + 0.2)};
    close_possession(play_outcome::none);
    const int taker = players_.nearest(team, spot);
    bring_ball(raised(spot, ball_radius), taker, 1.6, [this, taker, team] {
        const double began = now_;
        players_.raise_arms(taker, now_ + 0.7);
        players_.lean(taker, {0, 0.12}, now_ + 0.6);
        ball_.z = ball_radius;
        wait(0.35, [this, taker, team, began] {
            const int receiver =
                players_.nearest(team, ball_.ground() + point{3 * direction_of(team), 0}, taker);
            const point thrown = players_.place(taker) + with_length(point{} - players_.place(taker), 0.3);
            roll_to(raised(thrown, 1.9), 9, 0, [=, this] {
                const point inside = between(ball_.ground(), players_.place(receiver), 0.8);
                holder_ = taker;
                pass(receiver, {inside.x, std::clamp(inside.y, -half_width + 2, half_width - 2)}, 10, 0.7,
                     [=, this] {
                         note(play_kind::throw_in, began, now_, taker, receiver, play_outcome::won);
                         hold(receiver, 0.5);
                     });
            });
        });
    });
}

void game_engine::corner(int team, double side) {
    const double direction = direction_of(team);
    const point spot{direction * (half_length - 0.3), side * (half_width - 0.3)};
    const int taker = player_at(team, side * direction > 0 ? left_wing : right_wing);
    close_possession(play_outcome::won);
    constexpr std::array<point, 4> inside{{{24, -1}, {22.5, 3.5}, {22, -4}, {18, 1}}};
    std::size_t given = 0;
    for (const int place : {striker, left_half, right_half, side * direction > 0 ? right_wing : left_wing})
        players_.send(player_at(team, place), inside[given++] * direction, now_ + 6, run_speed + 0.8);
    given = 0;
    for (const int place : {left_back, right_back, left_half, right_half})
        players_.send(player_at(1 - team, place), (inside[given++] + point{2.2, 0.7}) * direction, now_ + 6,
                      run_speed + 0.8);
    bring_ball(raised(spot, ball_radius), taker, 2.6, [this, taker, team, direction] {
        const double began = now_;
        const int header = player_at(team, random_.chance(0.6) ? striker : right_half);
        const point met = between(players_.place(header), point{25, random_.between(-2, 2)} * direction, 0.6);
        pass(header, met, 17, 2.8, [=, this] {
            play& noted = note(play_kind::corner, began, now_, taker, header, play_outcome::won);
            noted.zone = pitch_zone::box;
            plan_.assign(1, intent::shot_wide);
            next();
        });
        flight_.to.z = 1.8;
    });
}

void game_engine::goal_kick(int team) {
    const double side = ball_.y >= 0 ? 1 : -1;
    close_possession(play_outcome::none);
    plan_.clear();
    const int taker = keeper_of(team);
    const point spot = point{-25.5, 0} * direction_of(team) + point{0, 3 * side};
    bring_ball(raised(spot, ball_radius), taker, 1.8, [this] { next(); });
}

void game_engine::free_kick(int team, point place) {
    const double direction = direction_of(team);
    const point spot{direction * std::min(place.x * direction, 17.0), std::clamp(place.y, -17.0, 17.0)};
    const int nearest = players_.nearest(team, spot);
    const int taker = players_.nearest(team, spot, nearest);  // the nearest one lies on the ground
    bring_ball(raised(spot, ball_radius), taker, 2.2, [this] {
        cue(cue_kind::whistle, 0.6);
        pass_on();
    });
}

void game_engine::celebrate(int scorer) {
    const int team = team_of(scorer);
    const double direction = direction_of(team);
    ++score_[static_cast<std::size_t>(team)];
    cue(cue_kind::long_whistle, 0.9);
    cue(cue_kind::cheer);
    view_.ball_is_dead = true;
    plan_.clear();
    roll_to(raised(ball_.ground() + point{0.2 * direction, 0}, ball_radius), 3, 0, [] {});
    const double side = players_.place(scorer).y >= 0 ? 1 : -1;
    const point flag{direction * 26, side * 15};
    for (int place = left_back; place < players_a_side; ++place) {
        const int mate = player_at(team, place);
        const bool joins = mate == scorer || distance(players_.place(mate), players_.place(scorer)) < 22;
        if (!joins) continue;
        players_.send(mate, flag + point{-1.3 * direction * place, -side * (place % 3)}, now_ + 2.2,
                      run_speed + 1);
        players_.raise_arms(mate, now_ + (mate == scorer ? 2.2 : 1.6));
    }
    wait(2.2, [this, team] { kick_off(1 - team); });
}

}  // namespace vistels::demo
