// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/simulation.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "demo/game_engine.h"

namespace vistels::demo {

namespace {

constexpr std::array<std::string_view, play_kind_count> play_names{"Attack", "Press", "Counter", "Pass chain",
                                                                   "Cross",  "Shot",  "Goal",    "Save",
                                                                   "Corner", "Foul",  "Throw-in"};
constexpr std::array<std::string_view, 5> outcome_names{"", "On target", "Off target", "Blocked", "Won"};
constexpr std::array<std::string_view, 4> zone_names{"Left", "Centre", "Right", "Box"};

double mixed(double a, double b, double share) {
    return a + (b - a) * share;
}

double mixed_angle(double a, double b, double share) {
    return a + std::remainder(b - a, 2 * pi) * share;
}

player_state mixed(const player_state& a, const player_state& b, double share) {
    player_state out;
    out.place = between(a.place, b.place, share);
    out.lean = between(a.lean, b.lean, share);
    out.facing = mixed_angle(a.facing, b.facing, share);
    out.speed = mixed(a.speed, b.speed, share);
    out.stride = mixed(a.stride, b.stride, share);
    out.arms = mixed(a.arms, b.arms, share);
    return out;
}

}  // namespace

std::string_view play_name(play_kind kind) {
    return play_names[static_cast<std::size_t>(kind)];
}

std::string_view outcome_name(play_outcome outcome) {
    return outcome_names[static_cast<std::size_t>(outcome)];
}

std::string_view zone_name(pitch_zone zone) {
    return zone_names[static_cast<std::size_t>(zone)];
}

game_record::game_record(double from, std::vector<game_state> samples, std::vector<play> plays,
                         std::vector<sound_cue> cues)
    : from_(from), samples_(std::move(samples)), plays_(std::move(plays)), cues_(std::move(cues)) {}

double game_record::until() const {
    return from_ + static_cast<double>(samples_.size() - 1) / samples_per_second;
}

game_record::spot game_record::spot_at(double seconds) const {
    const double last = static_cast<double>(samples_.size() - 1);
    const double exact = std::clamp((seconds - from_) * samples_per_second, 0.0, last);
    const double whole = std::min(std::floor(exact), std::max(last - 1, 0.0));
    return {static_cast<std::size_t>(whole), exact - whole};
}

game_state game_record::state_at(double seconds) const {
    const spot place = spot_at(seconds);
    const game_state& a = samples_[place.index];
    if (place.share <= 0) return a;
    const game_state& b = samples_[place.index + 1];
    game_state out = a;
    out.ball = a.ball + (b.ball - a.ball) * place.share;
    out.clock = mixed(a.clock, b.clock, place.share);
    for (std::size_t index = 0; index < out.players.size(); ++index)
        out.players[index] = mixed(a.players[index], b.players[index], place.share);
    return out;
}

point3 game_record::ball_at(double seconds) const {
    const spot place = spot_at(seconds);
    const point3 a = samples_[place.index].ball;
    if (place.share <= 0) return a;
    return a + (samples_[place.index + 1].ball - a) * place.share;
}

game_record simulate_game(std::uint64_t seed, double until) {
    constexpr double from = -6;
    game_engine engine(seed, from);
    const auto count =
        static_cast<std::size_t>(std::ceil((until - from) * game_record::samples_per_second)) + 1;
    std::vector<game_state> samples;
    samples.reserve(count);
    samples.push_back(engine.state());
    while (samples.size() < count) {
        engine.step();
        engine.step();
        samples.push_back(engine.state());
    }
    engine.finish();
    return game_record(from, std::move(samples), engine.take_plays(), engine.take_cues());
}

}  // namespace vistels::demo
