// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <vector>

#include "demo/geometry.h"
#include "demo/seeded_random.h"
#include "demo/simulation.h"
#include "demo/team_movement.h"

namespace vistels::demo {

// Plays the game step by step. Moves are drawn from a shuffled deck, so that every kind of play comes soon
// and again; how each comes off follows from where the players are by then.
class game_engine {
  public:
    static constexpr double step_seconds = 1.0 / 60;

    game_engine(std::uint64_t seed, double from);
    game_engine(const game_engine&) = delete;
    game_engine& operator=(const game_engine&) = delete;

    void step();
    // Ends plays that are going on. Nothing is stepped afterwards.
    void finish();

    game_state state() const;
    std::vector<play> take_plays();
    std::vector<sound_cue> take_cues() { return std::move(cues_); }

  private:
    // What the team at the ball does next.
    enum class intent {
        build,
        advance,
        wing,
        cross,
        shot_in,
        shot_held,
        shot_parried,
        shot_wide,
        shot_blocked,
        draw_foul,
        hit_out,
        lose_to_press,
        break_away
    };
    struct flight {
        point3 from;
        point3 to;
        double start = 0;
        double duration = 0;
        double apex = 0;     // metres above the straight line
        double slowing = 0;  // 0: even, towards 1: rolls out
        point3 at(double now) const;
    };
    struct possession {
        bool open = false;
        int team = 0;
        double start = 0;
        int first_player = -1;
        int last_player = -1;
        int passes = 0;
        double first_pass = 0;
        double last_pass = 0;
        double furthest = -half_length;  // in the direction of play
    };
    using deed = std::function<void()>;

    // game_engine.cpp: time, ball and books
    void move_ball();
    void wait_until(std::function<bool()> condition, deed then);
    void wait(double seconds, deed then);
    void after(double seconds, deed what);  // beside what is being waited for
    void kick(int player, point3 to, double speed, double apex, double slowing, deed on_arrival);
    void roll_to(point3 to, double speed, double apex, deed on_arrival);
    void hold(int player, double seconds);
    void cue(cue_kind kind, double strength = 1);
    play& note(play_kind kind, double start, double end, int player, int other, play_outcome outcome);
    void gain(int player);
    void close_possession(play_outcome outcome);
    int team_at_ball() const { return team_of(holder_); }
    double forward(point place, int team) const { return place.x * direction_of(team); }
    pitch_zone zone_of(point place, int team) const;
    point goal_of(int team) const { return {-half_length * direction_of(team), 0}; }

    // game_moves.cpp: what is done with the ball
    void next();
    void deal();
    void do_intent(intent what);
    void pass_on();
    void pass(int receiver, point target, double speed, double apex, deed then);
    point meeting_point(int receiver, double speed, double lead) const;
    int best_receiver(double least_gain, double furthest) const;
    void advance();
    void run_with_ball(double seconds, deed then);
    void wing();
    void run_in_and_cross();
    void cross();
    void shot_in();
    void shot_at_keeper(bool holds);
    void shot_wide();
    void shot_blocked();
    void dive(int keeper, double side, double seconds);
    void draw_foul();
    void hit_out();
    void lose_to_press();
    void break_away();

    // game_restarts.cpp: what happens when the ball is dead
    void kick_off(int team);
    void throw_in(int team);
    void corner(int team, double side);
    void goal_kick(int team);
    void free_kick(int team, point place);
    void celebrate(int scorer);
    void bring_ball(point3 spot, int taker, double least_seconds, deed then);

    seeded_random random_;
    double now_;
    team_movement players_;
    game_view view_;
    point3 ball_;
    flight flight_;
    bool flying_ = false;
    int holder_ = -1;
    std::function<bool()> condition_;
    deed then_;
    struct timed_deed {
        double at;
        deed what;
    };
    std::vector<timed_deed> later_;
    std::deque<intent> plan_;
    std::vector<int> deck_;
    int advances_ = 0;
    bool countering_ = false;
    double counter_start_ = 0;
    possession possession_;
    std::array<int, 2> score_{};
    double kicked_off_ = 1e9;
    std::vector<play> plays_;
    std::vector<sound_cue> cues_;
};

}  // namespace vistels::demo
