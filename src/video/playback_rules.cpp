// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/playback_rules.h"

#include <algorithm>
#include <cmath>

namespace vistels {

namespace {

constexpr int same_times_allowed = 30;
constexpr double largest_camera_number = 100000;
constexpr double before_all_seconds = -111111111.0;
constexpr double lag_threshold_seconds = 5.0;
constexpr double correction_pause_seconds = 1.0;
constexpr double seek_timescale = 30000;
constexpr double shortest_clip_seconds = 0.001;

bool takes_part(const lagging_vistel& vistel) {
    return !vistel.has_overlay && !vistel.is_away && vistel.number <= largest_camera_number;
}

double at_timescale(double seconds) {
    return std::round(seconds * seek_timescale) / seek_timescale;
}

}  // namespace

double clamped_top_speed(double stored) {
    return std::clamp(stored, top_reverse_rate, top_forward_rate);
}

bool playback_timer_record::tick(std::optional<double> collection_seconds) {
    if (!collection_seconds) return true;
    if (check_for_stop__last_time_SECS != collection_seconds) {
        check_for_stop__last_time_SECS = collection_seconds;
        check_for_stop__cnt_consecutive_same_times = 0;
        return true;
    }
    return ++check_for_stop__cnt_consecutive_same_times <= same_times_allowed;
}

std::vector<lag_move> advance_lagging_players(std::vector<lagging_vistel>& vistels, double now) {
    if (std::count_if(vistels.begin(), vistels.end(), takes_part) < 2) return {};
    double leader = before_all_seconds;
    for (const auto& vistel : vistels) {
        if (takes_part(vistel) && vistel.seconds && *vistel.seconds > leader) leader = *vistel.seconds;
    }
    std::vector<lag_move> moves;
    for (std::size_t i = 0; i < vistels.size(); ++i) {
        lagging_vistel& vistel = vistels[i];
        if (!takes_part(vistel)) continue;
        if (vistel.last_correction_seconds &&
            now - *vistel.last_correction_seconds < correction_pause_seconds) {
            continue;
        }
        vistel.last_correction_seconds = now;
        if (!vistel.seconds) continue;
        const double lag = leader - *vistel.seconds;
        if (lag <= lag_threshold_seconds || !vistel.is_playing) continue;
        moves.push_back({i, at_timescale(at_timescale(*vistel.seconds) + at_timescale(lag))});
    }
    return moves;
}

double fraction_within(double fraction) {
    return fraction > 0 ? std::min(fraction, 1.0) : 0;
}

double fraction_at(double start, double end, double seconds) {
    return fraction_within((seconds - start) / std::max(end - start, shortest_clip_seconds));
}

double seconds_still_to_play(double start, double end, double fraction) {
    return (end - start) * (1 - fraction_within(fraction));
}

}  // namespace vistels
