// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/game_engine.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vistels::demo {

namespace {

constexpr double first_kick_off_seconds = 0.6;
constexpr double least_attack_seconds = 1.5;
constexpr int pass_chain_passes = 3;

}  // namespace

point3 game_engine::flight::at(double now) const {
    const double share = duration > 0 ? std::clamp((now - start) / duration, 0.0, 1.0) : 1.0;
    const double way = share * (1 + slowing) - slowing * share * share;
    point3 place = from + (to - from) * way;
    place.z += 4 * apex * share * (1 - share);
    return place;
}

game_engine::game_engine(std::uint64_t seed, double from)
    : random_(seed), now_(from), players_(from), ball_{0, 0, ball_radius} {
    view_.now = from;
    view_.ball_is_dead = true;
    view_.attacking = random_.chance(0.5) ? 1 : 0;
    deck_ = {0, 1, 2, 3};
    random_.shuffle(deck_);
    const int team = view_.attacking;
    wait(std::max(0.0, first_kick_off_seconds - 2.5 - from), [this, team] { kick_off(team); });
}

void game_engine::step() {
    now_ += step_seconds;
    move_ball();
    view_.now = now_;
    view_.ball = ball_.ground();
    view_.holder = holder_;
    players_.step(view_, step_seconds);
    if (possession_.open)
        possession_.furthest = std::max(possession_.furthest, forward(ball_.ground(), possession_.team));
    for (std::size_t index = 0; index < later_.size();) {
        if (now_ < later_[index].at) {
            ++index;
            continue;
        }
        const deed what = std::move(later_[index].what);
        later_.erase(later_.begin() + static_cast<std::ptrdiff_t>(index));
        what();
    }
    if (condition_ && condition_()) {
        condition_ = nullptr;
        const deed then = std::move(then_);
        then();
    }
}

void game_engine::finish() {
    close_possession(play_outcome::none);
}

game_state game_engine::state() const {
    game_state out;
    out.ball = ball_;
    for (int player = 0; player < player_count; ++player)
        out.players[static_cast<std::size_t>(player)] = players_.state(player);
    out.score = score_;
    out.clock = std::max(0.0, now_ - kicked_off_);
    return out;
}

std::vector<play> game_engine::take_plays() {
    std::stable_sort(plays_.begin(), plays_.end(),
                     [](const play& a, const play& b) { return a.start < b.start; });
    return std::move(plays_);
}

void game_engine::move_ball() {
    if (flying_) {
        ball_ = flight_.at(now_);
        return;
    }
    if (holder_ < 0) return;
    const player_state& holder = players_.state(holder_);
    const bool in_hands = place_of(holder_) == keeper;
    // A runner's touches push the ball a little ahead at every stride.
    const double ahead =
        in_hands ? 0.4
                 : 0.55 + 0.25 * std::min(1.0, holder.speed / 5) * std::abs(std::sin(holder.stride * 1.3));
    const point carried =
        holder.place + point{std::cos(holder.facing), std::sin(holder.facing)} * ahead + holder.lean * 1.1;
    const double height = in_hands ? 1.1 - 0.8 * length(holder.lean) : ball_radius;
    const point3 way = raised(carried, height) - ball_;
    const double most = 12 * step_seconds;
    ball_ = length(way) > most ? ball_ + way * (most / length(way)) : raised(carried, height);
}

void game_engine::wait_until(std::function<bool()> condition, deed then) {
    condition_ = std::move(condition);
    then_ = std::move(then);
}

void game_engine::wait(double seconds, deed then) {
    const double due = now_ + seconds;
    wait_until([this, due] { return now_ >= due; }, std::move(then));
}

void game_engine::after(double seconds, deed what) {
    later_.push_back({now_ + seconds, std::move(what)});
}

void game_engine::kick(int player, point3 to, double speed, double apex, double slowing, deed on_arrival) {
    players_.release(player);
    cue(cue_kind::kick, std::clamp(speed / 22, 0.3, 1.0));
    flight_ = {ball_, to, now_, std::max(0.12, length(to - ball_) / speed), apex, slowing};
    flying_ = true;
    holder_ = -1;
    wait(flight_.duration, std::move(on_arrival));
}

void game_engine::roll_to(point3 to, double speed, double apex, deed on_arrival) {
    flight_ = {ball_, to, now_, std::max(0.15, length(to - ball_) / speed), apex, 0.5};
    flying_ = true;
    holder_ = -1;
    wait(flight_.duration, std::move(on_arrival));
}

void game_engine::hold(int player, double seconds) {
    gain(player);
    holder_ = player;
    flying_ = false;
    view_.ball_is_dead = false;
    if (place_of(player) == keeper)
        players_.release(player);
    else
        players_.send(player, players_.place(player) + point{3 * direction_of(team_of(player)), 0},
                      now_ + seconds + 0.5, 3.0);
    wait(seconds, [this] { next(); });
}

void game_engine::cue(cue_kind kind, double strength) {
    cues_.push_back({kind, now_, ball_.ground(), strength});
}

play& game_engine::note(play_kind kind, double start, double end, int player, int other,
                        play_outcome outcome) {
    const int team = team_of(player);
    plays_.push_back({kind, start, end, team, player, other, zone_of(players_.place(player), team), outcome});
    return plays_.back();
}

void game_engine::gain(int player) {
    const int team = team_of(player);
    if (!possession_.open || possession_.team != team) {
        close_possession(play_outcome::none);
        possession_ = {};
        possession_.open = true;
        possession_.team = team;
        possession_.start = now_;
        possession_.first_player = player;
    }
    possession_.last_player = player;
    view_.attacking = team;
}

void game_engine::close_possession(play_outcome outcome) {
    if (!possession_.open) return;
    const possession ended = std::exchange(possession_, possession{});
    if (ended.furthest > 5 && now_ - ended.start > least_attack_seconds)
        note(play_kind::attack, ended.start, now_, ended.last_player, ended.first_player, outcome);
    if (ended.passes >= pass_chain_passes)
        note(play_kind::pass_chain, ended.first_pass, ended.last_pass, ended.first_player, ended.last_player,
             play_outcome::none);
    if (countering_)
        note(play_kind::counter, counter_start_, now_, ended.last_player, ended.first_player, outcome);
    countering_ = false;
}

pitch_zone game_engine::zone_of(point place, int team) const {
    const double side = place.y * direction_of(team);
    if (forward(place, team) > half_length - box_depth && std::abs(side) < box_half_width)
        return pitch_zone::box;
    if (side > half_width / 3) return pitch_zone::left;
    return side < -half_width / 3 ? pitch_zone::right : pitch_zone::centre;
}

}  // namespace vistels::demo
