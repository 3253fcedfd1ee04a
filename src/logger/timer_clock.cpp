// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/timer_clock.h"

#include <algorithm>

namespace vistels {

namespace {

constexpr double seconds_in_a_minute = 60;

}  // namespace

double timer_seconds(const sxy_ROW& row, const sxy_CLIP& clip, bool is_growing, double at) {
    const double start = clip.secs_start();
    double run = std::max(0.0, (is_growing ? at : std::min(at, clip.secs_end())) - start);
    if (clip.timer_is_cumulative()) {
        for (const auto& earlier : row.clips()) {
            if (earlier->secs_start() > start) break;
            if (earlier->id() == clip.id() || (!is_growing && !clip_before(*earlier, clip))) continue;
            run += earlier->secs_end() - earlier->secs_start();
        }
    }
    const double offset = clip.mins().value_or(0) * seconds_in_a_minute;
    return clip.timer_counts_down() ? offset - run : offset + run;
}

std::optional<double> timer_row_seconds(const sxy_DATA_root& timeline, const sxy_ROW& row, double at) {
    for (const auto& growing : timeline.live_clips()) {
        if (growing.row == row.uuid()) return timer_seconds(row, *growing.clip, true, at);
    }
    clip_pointer holding, ended;
    for (const auto& clip : row.clips()) {
        if (clip->secs_start() > at) break;
        if (clip->secs_end() > at) {
            holding = clip;
        } else if (!ended || clip->secs_end() >= ended->secs_end()) {
            ended = clip;
        }
    }
    const auto& shown = holding ? holding : ended;
    return shown ? std::optional(timer_seconds(row, *shown, false, at)) : std::nullopt;
}

}  // namespace vistels
