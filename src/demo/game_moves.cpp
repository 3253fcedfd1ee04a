// SPDX-License-Identifier: GPL-3.0-or-later
// What a team does with the ball in open play.
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "demo/game_engine.h"

namespace vistels::demo {

namespace {

constexpr double pass_speed = 16;  // metres a second
constexpr double shooting_range_x = 14;
constexpr int most_advances = 5;
constexpr double touch_distance = 1.15;

// Where someone runs who means to reach `aim` at full speed.
point beyond(point from, point aim) {
    return aim + with_length(aim - from, 2);
}

}  // namespace

void game_engine::deal() {
    static const std::array<std::vector<intent>, 6> moves{{
        {intent::build, intent::build, intent::advance, intent::shot_in},
        {intent::build, intent::wing, intent::cross, intent::shot_parried},
        {intent::build, intent::draw_foul, intent::advance, intent::shot_blocked},
        {intent::build, intent::hit_out, intent::build, intent::lose_to_press, intent::break_away,
         intent::wing, intent::cross, intent::shot_held},
        {intent::build, intent::build, intent::build, intent::advance, intent::shot_wide},
        {intent::build, intent::lose_to_press, intent::build, intent::wing, intent::cross, intent::shot_held},
    }};
    if (deck_.empty()) {
        deck_ = {0, 1, 2, 3, 4, 5, 1, 4, 5};
        random_.shuffle(deck_);
    }
    const std::vector<intent>& move = moves[static_cast<std::size_t>(deck_.back())];
    deck_.pop_back();
    plan_.assign(move.begin(), move.end());
    advances_ = 0;
}

void game_engine::next() {
    if (plan_.empty()) deal();
    const intent what = plan_.front();
    plan_.pop_front();
    do_intent(what);
}

void game_engine::do_intent(intent what) {
    switch (what) {
        case intent::build:
            return pass_on();
        case intent::advance:
            return advance();
        case intent::wing:
            return wing();
        case intent::cross:
            return run_in_and_cross();
        case intent::shot_in:
            return shot_in();
        case intent::shot_held:
            return shot_at_keeper(true);
        case intent::shot_parried:
            return shot_at_keeper(false);
        case intent::shot_wide:
            return shot_wide();
        case intent::shot_blocked:
            return shot_blocked();
        case intent::draw_foul:
            return draw_foul();
        case intent::hit_out:
            return hit_out();
        case intent::lose_to_press:
            return lose_to_press();
        case intent::break_away:
            return break_away();
    }
}

point game_engine::meeting_point(int receiver, double speed, double lead) const {
    const double flown = distance(ball_.ground(), players_.place(receiver)) / speed;
    point target = players_.place(receiver) + players_.velocity(receiver) * (0.7 * flown);
    target.x += lead * direction_of(team_of(receiver));
    return {std::clamp(target.x, -half_length + 2, half_length - 2),
            std::clamp(target.y, -half_width + 1.5, half_width - 1.5)};
}

void game_engine::pass(int receiver, point target, double speed, double apex, deed then) {
    const int passer = holder_;
    const double kicked = now_;
    const double way = distance(ball_.ground(), target);
    const double run = distance(players_.place(receiver), target);
    const double duration = std::max(way / speed, run / 6.6);
    players_.send(receiver, target, 1e9);
    const double end_height = apex > 1.5 ? 0.5 : ball_radius;
    kick(passer, raised(target, end_height), std::max(way, 0.5) / duration, apex, apex > 0.5 ? 0.1 : 0.45,
         [] {});
    const double arrival = now_ + flight_.duration;
    wait_until(
        [this, receiver, arrival] {
            return now_ >= arrival && distance(players_.place(receiver), ball_.ground()) < touch_distance;
        },
        [this, receiver, kicked, then = std::move(then)] {
            players_.release(receiver);
            gain(receiver);
            holder_ = receiver;
            flying_ = false;
            if (possession_.passes++ == 0) possession_.first_pass = kicked;
            possession_.last_pass = now_;
            then();
        });
}

int game_engine::best_receiver(double least_gain, double furthest) const {
    const int team = team_at_ball();
    const point ball = ball_.ground();
    int best = -1;
    double best_score = -1e9;
    for (int place = left_back; place < players_a_side; ++place) {
        const int mate = player_at(team, place);
        const point there = players_.place(mate);
        const double away = distance(ball, there);
        const double gain = forward(there, team) - forward(ball, team);
        if (mate == holder_ || away < 5 || away > furthest || gain < least_gain) continue;
        const double score = 2.5 * std::min(players_.lane_room(team, ball, there), 3.0) +
                             std::min(players_.room_at(team, there), 4.0) + 0.12 * gain -
                             0.1 * std::abs(away - 11);
        if (score > best_score) {
            best = mate;
            best_score = score;
        }
    }
    return best;
}

void game_engine::pass_on() {
    const int presser = players_.nearest(1 - team_at_ball(), ball_.ground());
    if (place_of(holder_) != keeper && distance(players_.place(presser), ball_.ground()) < 3.5 &&
        random_.chance(0.6))
        note(play_kind::press, now_ - 1.6, now_ + 0.6, presser, holder_, play_outcome::none);
    int receiver = best_receiver(-8, 22);
    if (receiver < 0) receiver = players_.nearest(team_at_ball(), ball_.ground(), holder_);
    const double way = distance(ball_.ground(), players_.place(receiver));
    pass(receiver, meeting_point(receiver, pass_speed, 0.5), pass_speed + random_.between(-1, 2),
         way > 16 ? 2.2 : 0, [this] { hold(holder_, random_.between(0.3, 0.65)); });
}

void game_engine::advance() {
    if (forward(ball_.ground(), team_at_ball()) > shooting_range_x || advances_ >= most_advances)
        return next();
    ++advances_;
    plan_.push_front(intent::advance);
    const int receiver = best_receiver(3, 24);
    if (receiver < 0) return run_with_ball(0.8, [this] { next(); });
    const double way = distance(ball_.ground(), players_.place(receiver));
    pass(receiver, meeting_point(receiver, pass_speed, 2.5), pass_speed + 1, way > 17 ? 2 : 0,
         [this] { hold(holder_, 0.35); });
}

void game_engine::run_with_ball(double seconds, deed then) {
    const int team = team_at_ball();
    const point from = players_.place(holder_);
    const point opponent = players_.place(players_.nearest(1 - team, from));
    const point ahead = goal_of(1 - team) + point{0, from.y * 0.4} - from;
    // Round the nearest opponent, on the side where he is not.
    const double round = distance(opponent, from) < 4 ? (from.y > opponent.y ? 2.5 : -2.5) : 0;
    const point target = from + with_length(ahead, 12) + point{0, round};
    players_.send(holder_, {target.x, std::clamp(target.y, -half_width + 1.5, half_width - 1.5)},
                  now_ + seconds + 0.3, 5.8);
    wait(seconds, std::move(then));
}

void game_engine::wing() {
    const int team = team_at_ball();
    const double side = ball_.y * direction_of(team) > 0 ? 1 : -1;
    const int winger = player_at(team, side > 0 ? left_wing : right_wing);
    const point target = point{18.5, 14.5 * side} * direction_of(team);
    if (winger == holder_) {
        const double deadline = now_ + 3;
        players_.send(winger, target, deadline, 6.2);
        return wait_until(
            [=, this] { return now_ > deadline || distance(players_.place(winger), target) < 2; },
            [this] { next(); });
    }
    pass(winger, target, 16, distance(ball_.ground(), target) > 14 ? 2.4 : 0.3, [this] { next(); });
}

void game_engine::run_in_and_cross() {
    const int team = team_at_ball();
    const int crosser = holder_;
    const double direction = direction_of(team);
    const double side = ball_.y * direction > 0 ? 1 : -1;
    const point corner = point{25, 14 * side} * direction;
    players_.send(crosser, corner, now_ + 4, 6.4);
    players_.send(player_at(team, striker), point{23.5, -1.5 * side} * direction, now_ + 5, run_speed + 1);
    players_.send(player_at(team, side > 0 ? right_wing : left_wing), point{22.5, -6 * side} * direction,
                  now_ + 5, run_speed + 1);
    players_.send(player_at(team, right_half), point{18, 2 * side} * direction, now_ + 5, run_speed);
    const double deadline = now_ + 2.5;
    wait_until([this, crosser, corner,
                deadline] { return distance(players_.place(crosser), corner) < 1.5 || now_ > deadline; },
               [this] { cross(); });
}

void game_engine::cross() {
    const int team = team_at_ball();
    const int crosser = holder_;
    const double direction = direction_of(team);
    const int header = players_.nearest(team, point{24, 0} * direction, crosser);
    const point met = between(players_.place(header), point{24.5, random_.between(-2, 2)} * direction, 0.6);
    const double kicked = now_;
    pass(header, met, 16, 2.6, [this, crosser, header, kicked] {
        note(play_kind::cross, kicked - 0.8, now_, crosser, header, play_outcome::won).zone =
            zone_of(players_.place(crosser), team_of(crosser));
        next();
    });
    flight_.to.z = 1.75;
}

void game_engine::dive(int keeper, double side, double seconds) {
    after(seconds, [this, keeper, side] {
        players_.lean(keeper, {0, 0.93 * side}, now_ + 0.85);
        players_.send(keeper, players_.place(keeper) + point{0, 1.2 * side}, now_ + 0.5, run_speed);
    });
}

void game_engine::shot_in() {
    const int shooter = holder_;
    const int team = team_of(shooter);
    const int beaten = keeper_of(1 - team);
    const double kicked = now_;
    const double side = random_.side();
    const point3 target{direction_of(team) * (half_length + 1.1), side * (goal_half_width - 0.6),
                        random_.between(0.4, 1.5)};
    kick(shooter, target, 21, 0.3, 0, [this, shooter, beaten, kicked] {
        note(play_kind::shot, kicked, now_, shooter, beaten, play_outcome::on_target);
        note(play_kind::goal, kicked, now_, shooter, beaten, play_outcome::on_target);
        close_possession(play_outcome::won);
        celebrate(shooter);
    });
    // Too late for a ball on his side, or gone the wrong way.
    const bool wrong_way = random_.chance(0.5);
    dive(beaten, wrong_way ? -side : side, flight_.duration - (wrong_way ? 0.35 : 0.1));
}

void game_engine::shot_at_keeper(bool holds) {
    const int shooter = holder_;
    const int team = team_of(shooter);
    const int saver = keeper_of(1 - team);
    const double kicked = now_;
    const point line = players_.place(saver) + players_.velocity(saver) * 0.2;
    const double side = random_.side();
    const double reach = holds ? 1.2 : 1.7;
    const double y = std::clamp(line.y + reach * side, -goal_half_width + 0.3, goal_half_width - 0.3);
    const double height = random_.between(0.5, 1.0);
    kick(shooter, {line.x - 0.3 * direction_of(team), y, height}, 20, 0.4, 0, [=, this] {
        cue(cue_kind::gasp, 0.8);
        note(play_kind::shot, kicked, now_, shooter, saver, play_outcome::on_target);
        note(play_kind::save, kicked + 0.1, now_ + 0.4, saver, shooter,
             holds ? play_outcome::won : play_outcome::blocked)
            .zone = zone_of(players_.place(shooter), team);
        close_possession(play_outcome::on_target);
        if (holds) return hold(saver, 1.5);
        const double corner_side = y >= line.y ? 1 : -1;
        cue(cue_kind::kick, 0.4);
        roll_to({direction_of(team) * (half_length + 2), y + corner_side * 5, ball_radius}, 11, 0.8,
                [this, team, corner_side] { corner(team, corner_side); });
    });
    dive(saver, y >= line.y ? 1 : -1, flight_.duration - 0.3);
}

void game_engine::shot_wide() {
    const int shooter = holder_;
    const int team = team_of(shooter);
    const double kicked = now_;
    const double side = random_.side();
    const point3 target{direction_of(team) * (half_length + 2.2),
                        side * (goal_half_width + random_.between(0.8, 2.2)), random_.between(0.6, 2.6)};
    kick(shooter, target, 20, 0.6, 0, [this, shooter, team, kicked] {
        cue(cue_kind::gasp, 1);
        note(play_kind::shot, kicked, now_, shooter, keeper_of(1 - team), play_outcome::off_target);
        close_possession(play_outcome::off_target);
        roll_to(raised(ball_.ground() + point{0.3 * direction_of(team), 0.8}, ball_radius), 4, 0,
                [this, team] { goal_kick(1 - team); });
    });
    dive(keeper_of(1 - team), side, flight_.duration - 0.2);
}

void game_engine::shot_blocked() {
    const int shooter = holder_;
    const int team = team_of(shooter);
    const double kicked = now_;
    const point aim = between(ball_.ground(), goal_of(1 - team), 0.35);
    const int blocker = players_.nearest(1 - team, aim);
    const point met = between(players_.place(blocker), aim, 0.25);
    players_.send(blocker, met, now_ + 0.8);
    kick(shooter, raised(met, 0.5), 18, 0.1, 0, [=, this] {
        cue(cue_kind::kick, 0.6);
        cue(cue_kind::gasp, 0.4);
        note(play_kind::shot, kicked, now_, shooter, blocker, play_outcome::blocked);
        const int finder = players_.nearest(1 - team, met, blocker);
        const point loose = met + with_length(players_.place(finder) - met, 5);
        players_.send(finder, loose, 1e9);
        roll_to(raised(loose, ball_radius), 6, 0.8, [] {});
        wait_until(
            [this, finder] { return distance(players_.place(finder), ball_.ground()) < touch_distance; },
            [this, finder] { hold(finder, 0.5); });
    });
}

void game_engine::draw_foul() {
    const int victim = holder_;
    const int team = team_of(victim);
    const int fouler = players_.nearest(1 - team, ball_.ground());
    players_.send(victim, players_.place(victim) + point{14 * direction_of(team), 0}, now_ + 4, 4.6);
    const double deadline = now_ + 3;
    wait_until(
        [this, victim, fouler, deadline] {
            players_.send(fouler, beyond(players_.place(fouler), players_.place(victim)), now_ + 0.3);
            return now_ > deadline || distance(players_.place(fouler), players_.place(victim)) < 0.95;
        },
        [this, victim, fouler, team] {
            cue(cue_kind::whistle);
            const point away = with_length(players_.place(victim) - players_.place(fouler), 1);
            players_.lean(victim, away * 0.95, now_ + 1.3);
            players_.lean(fouler, away * 0.4, now_ + 0.5);
            note(play_kind::foul, now_ - 0.8, now_ + 0.6, fouler, victim, play_outcome::none);
            close_possession(play_outcome::won);
            const point loose = ball_.ground() + away * 1.5;
            roll_to(raised(loose, ball_radius), 3, 0, [this, team] { free_kick(team, ball_.ground()); });
        });
}

void game_engine::hit_out() {
    const int team = team_at_ball();
    const double side = ball_.y >= 0 ? 1 : -1;
    const double x = std::clamp(ball_.x + random_.between(4, 9) * direction_of(team), -24.0, 24.0);
    const int chaser = players_.nearest(team, {x, side * half_width}, holder_);
    players_.send(chaser, {x, side * (half_width - 0.8)}, now_ + 1.6, run_speed + 1);
    kick(holder_, {x, side * (half_width + 1.9), ball_radius}, 15, 0.9, 0.2,
         [this, team] { throw_in(1 - team); });
}

void game_engine::lose_to_press() {
    const int loser = holder_;
    const int team = team_of(loser);
    const int winner = players_.nearest(1 - team, ball_.ground());
    const int second = players_.nearest(1 - team, ball_.ground(), winner);
    const double began = now_;
    players_.send(loser, players_.place(loser) - point{6 * direction_of(team), 0}, now_ + 4, 2.8);
    wait_until(
        [=, this] {
            players_.send(winner, beyond(players_.place(winner), ball_.ground()), now_ + 0.3, 7);
            players_.send(second, players_.place(loser) + point{1.2, 1.2}, now_ + 0.3, 6.6);
            return now_ > began + 1.1 && distance(players_.place(winner), ball_.ground()) < 0.9;
        },
        [=, this] {
            cue(cue_kind::kick, 0.5);
            note(play_kind::press, began, now_, winner, loser, play_outcome::won);
            close_possession(play_outcome::none);
            hold(winner, 0.45);
        });
}

void game_engine::break_away() {
    countering_ = true;
    counter_start_ = now_;
    advances_ = 1;
    plan_.push_front(intent::advance);
    const int receiver = best_receiver(5, 30);
    if (receiver < 0) return run_with_ball(1.3, [this] { next(); });
    const int team = team_at_ball();
    for (const int runner : {left_wing, right_wing, striker})
        players_.send(player_at(team, runner),
                      players_.place(player_at(team, runner)) + point{12 * direction_of(team), 0}, now_ + 2);
    pass(receiver, meeting_point(receiver, 17, 6), 17, 1.2,
         [this] { run_with_ball(1.0, [this] { next(); }); });
}

}  // namespace vistels::demo
