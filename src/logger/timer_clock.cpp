// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/timer_clock.h"

#include <algorithm>
#include <limits>

namespace vistels {

namespace {

constexpr double seconds_in_a_minute = 60;

}  // namespace

timer_clocks::timer_clocks(const sxy_ROW& row) : run_before_{0} {
    for (const auto& clip : row.clips()) {
        clips_.push_back(timer_of(*clip));
        const timer& last = clips_.back();
        run_before_.push_back(run_before_.back() + last.end - last.start);
        const std::size_t place = clips_.size() - 1;
        const bool is_later = ends_last_.empty() || last.end >= clips_[ends_last_.back()].end;
        ends_last_.push_back(is_later ? place : ends_last_.back());
    }
}

timer_clocks::timer timer_clocks::timer_of(const sxy_CLIP& clip) {
    return {clip.secs_start(), clip.secs_end(), clip.mins().value_or(0) * seconds_in_a_minute,
            clip.timer_is_cumulative(), clip.timer_counts_down()};
}

double timer_clocks::shown(const timer& one, double end, double run_before, double at) {
    const double run = std::max(0.0, std::min(at, end) - one.start) + (one.is_cumulative ? run_before : 0.0);
    return one.counts_down ? one.offset - run : one.offset + run;
}

double timer_clocks::of_clip(std::size_t index, double at) const {
    return shown(clips_[index], clips_[index].end, run_before_[index], at);
}

double timer_clocks::of_growing(const sxy_CLIP& clip, double at) const {
    const timer one = timer_of(clip);
    const double before = run_before_.empty() ? 0 : run_before_[count_starting_until(one.start)];
    return shown(one, std::numeric_limits<double>::infinity(), before, at);
}

std::size_t timer_clocks::count_starting_until(double seconds) const {
    const auto found = std::partition_point(clips_.begin(), clips_.end(),
                                            [&](const timer& one) { return one.start <= seconds; });
    return static_cast<std::size_t>(found - clips_.begin());
}

std::optional<double> timer_clocks::of_row(double at) const {
    const std::size_t count = count_starting_until(at);
    if (count == 0) return std::nullopt;
    std::size_t place = ends_last_[count - 1];
    if (clips_[place].end > at) {
        place = count - 1;
        while (clips_[place].end <= at) --place;
    }
    return of_clip(place, at);
}

}  // namespace vistels
