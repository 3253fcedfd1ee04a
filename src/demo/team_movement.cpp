// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/team_movement.h"

#include <algorithm>
#include <cmath>

namespace vistels::demo {

namespace {

constexpr double acceleration = 11;  // metres a second squared
constexpr double personal_room = 1.5;
constexpr double edge = 1.2;  // how far beyond the lines a player may stand

// In the direction of play, own goal at -half_length; y positive is the left side.
constexpr std::array<point, players_a_side> shape{
    {{-28, 0}, {-17, 6.5}, {-17, -6.5}, {-5, 5}, {-5, -5}, {4, 14}, {4, -14}, {10, 0}}};
// Whom each place watches when the others attack: the place of the opponent. The keeper watches nobody.
constexpr std::array<int, players_a_side> watched{
    {-1, striker, left_wing, right_half, left_half, right_wing, left_wing, right_back}};

point turned(point place, int team) {
    return place * direction_of(team);
}

}  // namespace

team_movement::team_movement(double now) {
    game_view before;
    before.now = now;
    before.ball_is_dead = true;
    for (int player = 0; player < player_count; ++player) {
        body& one = bodies_[index(player)];
        const point local = shape[static_cast<std::size_t>(place_of(player))];
        one.shown.place = turned({std::min(local.x, -1.5), local.y}, team_of(player));
        one.shown.facing = team_of(player) == 0 ? 0 : pi;
    }
}

void team_movement::send(int player, point target, double until, double speed) {
    body& one = bodies_[index(player)];
    one.errand = target;
    one.errand_until = until;
    one.errand_speed = speed;
}

void team_movement::lean(int player, point direction, double until) {
    bodies_[index(player)].lean_direction = direction;
    bodies_[index(player)].lean_until = until;
}

int team_movement::nearest(int team, point where, int besides, bool with_keeper) const {
    int best = -1;
    double best_distance = 1e9;
    for (int place = with_keeper ? keeper : left_back; place < players_a_side; ++place) {
        const int player = player_at(team, place);
        const double away = distance(this->place(player), where);
        if (player != besides && away < best_distance) {
            best = player;
            best_distance = away;
        }
    }
    return best;
}

double team_movement::room_at(int team, point where) const {
    return distance(place(nearest(1 - team, where, -1, true)), where);
}

double team_movement::lane_room(int team, point from, point to) const {
    const point lane = to - from;
    const double size = length(lane);
    if (size < 1e-6) return 0;
    double room = 1e9;
    for (int place_index = keeper; place_index < players_a_side; ++place_index) {
        const point to_player = place(player_at(1 - team, place_index)) - from;
        const double along = (to_player.x * lane.x + to_player.y * lane.y) / size;
        if (along < 0.5 || along > size) continue;
        room = std::min(room, std::abs(to_player.x * lane.y - to_player.y * lane.x) / size);
    }
    return room;
}

point team_movement::keeper_place(int team, const game_view& view) const {
    const point goal = turned({-half_length, 0}, team);
    const double away = distance(view.ball, goal);
    const point out = goal + with_length(view.ball - goal, std::clamp(away * 0.12, 1.2, 4.5));
    return {out.x, std::clamp(out.y, -goal_half_width, goal_half_width)};
}

point team_movement::shape_place(int player, const game_view& view) const {
    const int team = team_of(player);
    const bool attacks = team == view.attacking;
    const auto place_index = static_cast<std::size_t>(place_of(player));
    const point ball = turned(view.ball, team);
    point wanted = shape[place_index];
    wanted.x += 0.58 * ball.x + (attacks ? 5 : -3);
    wanted.y = wanted.y * (attacks ? 1.05 : 0.75) + 0.3 * ball.y;
    // Everyone drifts a little, each in his own time, so that nobody stands like a post.
    const double own = 1.7 * player;
    wanted.x += 1.5 * std::sin(0.53 * view.now + own) + 0.7 * std::sin(1.31 * view.now + 2 * own);
    wanted.y += 1.3 * std::sin(0.61 * view.now + 3 * own) + 0.6 * std::sin(1.17 * view.now + own);
    if (!attacks && ball.x < 12) {
        const int opponent = player_at(1 - team, watched[place_index]);
        const point man = turned(place(opponent), team);
        const point goal_side = man + with_length(point{-half_length, 0} - man, 2.2);
        wanted = between(wanted, goal_side, 0.5);
    }
    wanted.x = std::clamp(wanted.x, -26.5, 26.0);
    wanted.y = std::clamp(wanted.y, -17.5, 17.5);
    return turned(wanted, team);
}

team_movement::aim team_movement::aim_of(int player, const game_view& view) const {
    const body& one = bodies_[index(player)];
    if (view.now < one.errand_until) return {one.errand, one.errand_speed};
    const int team = team_of(player);
    if (place_of(player) == keeper) return {keeper_place(team, view), run_speed};
    if (player == presser_) {
        const point goal = turned({-half_length, 0}, team);
        return {view.ball + with_length(goal - view.ball, 2.0), run_speed + 0.6};
    }
    const point target = shape_place(player, view);
    const double away = distance(target, one.shown.place);
    return {target, away > 7 ? run_speed + 0.8 : away > 2.5 ? run_speed - 0.8 : jog_speed};
}

point team_movement::push_apart(int player) const {
    point push;
    const point own = place(player);
    for (int other = 0; other < player_count; ++other) {
        if (other == player) continue;
        const point away = own - place(other);
        const double gap = length(away);
        if (gap < personal_room) push = push + with_length(away, (personal_room - gap) * 4);
    }
    return push;
}

void team_movement::move(int player, const game_view& view, double seconds) {
    body& one = bodies_[index(player)];
    const bool lies = view.now < one.lean_until && length(one.shown.lean) > 0.5;
    const aim wanted = aim_of(player, view);
    point velocity = at_most((wanted.target - one.shown.place) * 2.4, wanted.speed);
    // Who is on an errand gives way only a little, or a bystander could keep him from ever getting there.
    const point push =
        view.now < one.errand_until ? at_most(push_apart(player) * 0.3, 1) : push_apart(player);
    if (player != view.holder) velocity = at_most(velocity + push, wanted.speed);
    if (lies) velocity = velocity * 0.25;
    one.velocity = one.velocity + at_most(velocity - one.velocity, acceleration * seconds);
    one.shown.place = one.shown.place + one.velocity * seconds;
    one.shown.place.x = std::clamp(one.shown.place.x, -half_length - edge, half_length + edge);
    one.shown.place.y = std::clamp(one.shown.place.y, -half_width - edge, half_width + edge);
}

void team_movement::pose(body& one, const game_view& view, double seconds) {
    player_state& shown = one.shown;
    shown.speed = length(one.velocity);
    shown.stride += shown.speed * seconds;
    const point to_ball = view.ball - shown.place;
    const double blend = std::clamp((shown.speed - 0.8) / 1.5, 0.0, 1.0);
    const point look = with_length(to_ball, 1 - blend) + with_length(one.velocity, blend);
    if (length(look) > 0.05) {
        const double turn = std::remainder(std::atan2(look.y, look.x) - shown.facing, 2 * pi);
        shown.facing = std::remainder(shown.facing + std::clamp(turn, -8 * seconds, 8 * seconds), 2 * pi);
    }
    // Upright runners lean into their run; divers and the fallen lie down fast and get up slowly.
    const bool leans = view.now < one.lean_until;
    const point wanted = leans ? one.lean_direction : one.velocity * 0.022;
    shown.lean = shown.lean + at_most(wanted - shown.lean, (leans ? 3.4 : 1.8) * seconds);
    const double arms = view.now < one.arms_until ? 1 : 0;
    shown.arms += std::clamp(arms - shown.arms, -4 * seconds, 4 * seconds);
}

void team_movement::step(const game_view& view, double seconds) {
    const int defending = 1 - view.attacking;
    const int candidate = nearest(defending, view.ball);
    // Two defenders who take turns at being the nearest would dither.
    const bool stays = presser_ >= 0 && team_of(presser_) == defending &&
                       distance(place(presser_), view.ball) < distance(place(candidate), view.ball) + 2.5;
    if (view.ball_is_dead)
        presser_ = -1;
    else if (!stays)
        presser_ = candidate;
    for (int player = 0; player < player_count; ++player) move(player, view, seconds);
    for (body& one : bodies_) pose(one, view, seconds);
}

}  // namespace vistels::demo
