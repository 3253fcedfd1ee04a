// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace vistels {

inline constexpr double top_forward_rate = 64.0;
inline constexpr double top_reverse_rate = -8.0;

// A top speed as stored, brought within what playing can do.
double clamped_top_speed(double stored);

// What the playback timer notes: the last time seen and how many ticks in a row saw it.
struct playback_timer_record {
    std::optional<double> check_for_stop__last_time_SECS;
    int check_for_stop__cnt_consecutive_same_times = 0;

    // Takes note of one tick; false when the timer has to stop, after 31 ticks without movement. A tick
    // without a time changes nothing.
    bool tick(std::optional<double> collection_seconds);
};

// A vistel in the correction of those that lag.
struct lagging_vistel {
    double number = 0;         // above 100000: not a camera's movie
    bool has_overlay = false;  // an overlay object in place of a movie
    bool is_away = false;      // it has nothing to show at this time, or nothing comes from it
    bool is_playing = false;
    std::optional<double> seconds;                  // its time on the common clock; nothing: not known
    std::optional<double> last_correction_seconds;  // machine time
};

struct lag_move {
    std::size_t vistel = 0;
    double to_seconds = 0;
};

// How near to its target the move has to come, before and after.
inline constexpr double lag_move_tolerance_seconds = 1.0;
// Who asks for such a move.
inline constexpr const char* lag_move_source = "ADVANCE LAGGING PLAYERS";
inline constexpr const char* time_fix_note = "A TIME FIX WAS REQUIRED ";

// The moves that bring vistels more than 5 seconds behind the leader back to it, each vistel looked at no
// more than once a second. Notes in `vistels` when each was looked at; `now` is machine time in seconds.
std::vector<lag_move> advance_lagging_players(std::vector<lagging_vistel>& vistels, double now);

// Where a clip that is played stands, as a fraction of it: 0 to 1.
double fraction_within(double fraction);
// The fraction that has been played when a clip from `start` to `end` has come to `seconds`. No clip counts
// as shorter than a thousandth of a second.
double fraction_at(double start, double end, double seconds);
// How many seconds of the clip are still to be played.
double seconds_still_to_play(double start, double end, double fraction);

}  // namespace vistels
