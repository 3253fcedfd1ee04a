// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstdint>
#include <string_view>
#include <vector>

#include "demo/geometry.h"
#include "demo/squads.h"

namespace vistels::demo {

enum class play_kind { attack, press, counter, pass_chain, cross, shot, goal, save, corner, foul, throw_in };
inline constexpr int play_kind_count = 11;

enum class play_outcome { none, on_target, off_target, blocked, won };
enum class pitch_zone { left, centre, right, box };

std::string_view play_name(play_kind kind);
std::string_view outcome_name(play_outcome outcome);  // empty for none
std::string_view zone_name(pitch_zone zone);

// Something that happened in the game.
struct play {
    play_kind kind = play_kind::attack;
    double start = 0;  // seconds
    double end = 0;
    int team = 0;
    int player = 0;
    int other = -1;  // the second player: who was passed to, fouled or beaten; -1: nobody
    pitch_zone zone = pitch_zone::centre;
    play_outcome outcome = play_outcome::none;
};

enum class cue_kind { kick, whistle, long_whistle, cheer, gasp };

// Something to be heard.
struct sound_cue {
    cue_kind kind = cue_kind::kick;
    double at = 0;  // seconds
    point place;
    double strength = 1;  // 0 to 1
};

struct player_state {
    point place;
    point lean;         // where the head is out of the upright, as a share of the body's height
    double facing = 0;  // radians
    double speed = 0;   // metres a second
    double stride = 0;  // metres run so far; moves the legs
    double arms = 0;    // 0: hanging, 1: up in the air
};

struct game_state {
    point3 ball;
    std::array<player_state, player_count> players;
    std::array<int, 2> score{};
    double clock = 0;  // seconds played
};

// A game from first to last moment. Unchanging once made; any thread may read it.
class game_record {
  public:
    static constexpr int samples_per_second = 30;

    game_record(double from, std::vector<game_state> samples, std::vector<play> plays,
                std::vector<sound_cue> cues);

    // The game at any time, between two samples in a straight line; before its first moment that moment,
    // after its last that.
    game_state state_at(double seconds) const;
    point3 ball_at(double seconds) const;
    double from() const { return from_; }
    double until() const;
    // Ascending by start.
    const std::vector<play>& plays() const { return plays_; }
    // Ascending by time.
    const std::vector<sound_cue>& cues() const { return cues_; }

  private:
    struct spot {
        std::size_t index;
        double share;
    };
    spot spot_at(double seconds) const;

    double from_;
    std::vector<game_state> samples_;
    std::vector<play> plays_;
    std::vector<sound_cue> cues_;
};

// Plays a game from 6 seconds before 0 until `until` (seconds, above 0): the same one for the same seed.
// Kick-off is shortly after 0; a minute holds every kind of play.
game_record simulate_game(std::uint64_t seed, double until);

}  // namespace vistels::demo
