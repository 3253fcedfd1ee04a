// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>

#include "demo/geometry.h"
#include "demo/simulation.h"
#include "demo/squads.h"

namespace vistels::demo {

inline constexpr double sprint_speed = 7.6;  // metres a second
inline constexpr double run_speed = 5.6;
inline constexpr double jog_speed = 3.6;

// What the players look at when they choose where to run.
struct game_view {
    double now = 0;
    point ball;
    int attacking = 0;  // the team that has the ball, or had it last
    int holder = -1;    // the player at the ball; -1: nobody
    bool ball_is_dead = false;
};

// Moves all players: each runs after its errand while it has one, else to where its team's shape wants it.
// Nobody moves faster than sprint_speed or turns at once.
class team_movement {
  public:
    explicit team_movement(double now);

    // Sends a player to `target` until the time `until`.
    void send(int player, point target, double until, double speed = sprint_speed);
    void release(int player) { bodies_[index(player)].errand_until = -1e9; }
    // The body leans (or falls) that way until the time `until`; 1 is flat on the ground.
    void lean(int player, point direction, double until);
    void raise_arms(int player, double until) { bodies_[index(player)].arms_until = until; }

    void step(const game_view& view, double seconds);

    point place(int player) const { return bodies_[index(player)].shown.place; }
    point velocity(int player) const { return bodies_[index(player)].velocity; }
    const player_state& state(int player) const { return bodies_[index(player)].shown; }

    // The player of `team` nearest to `where`, leaving out `besides`; keepers only when asked for.
    int nearest(int team, point where, int besides = -1, bool with_keeper = false) const;
    // How far the nearest opponent of `team` stands from `where`.
    double room_at(int team, point where) const;
    // How far opponents of `team` stand from the line between two places.
    double lane_room(int team, point from, point to) const;

  private:
    struct body {
        player_state shown;
        point velocity;
        point errand;
        double errand_speed = sprint_speed;
        double errand_until = -1e9;
        point lean_direction;
        double lean_until = -1e9;
        double arms_until = -1e9;
    };
    struct aim {
        point target;
        double speed;
    };

    static std::size_t index(int player) { return static_cast<std::size_t>(player); }
    aim aim_of(int player, const game_view& view) const;
    point shape_place(int player, const game_view& view) const;
    point keeper_place(int team, const game_view& view) const;
    point push_apart(int player) const;
    void move(int player, const game_view& view, double seconds);
    void pose(body& body, const game_view& view, double seconds);

    std::array<body, player_count> bodies_;
    int presser_ = -1;
};

}  // namespace vistels::demo
