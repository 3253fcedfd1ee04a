// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/timeline/timeline_scale.h"

#include <algorithm>
#include <cmath>
#include <iterator>

namespace vistels {
namespace {

constexpr double major_steps[] = {0.1, 0.2, 0.5, 1, 2, 5, 10, 15, 30, 60, 120, 300, 600, 900, 1800, 3600};

}  // namespace

double timeline_reach::fit_seconds_per_pixel() const {
    return std::max((end_seconds - start_seconds) / std::max(width, 1.0), closest_seconds_per_pixel);
}

timeline_scale scale_within(const timeline_reach& reach, timeline_scale wanted) {
    const double widest = reach.fit_seconds_per_pixel();
    timeline_scale made = wanted;
    made.seconds_per_pixel = std::clamp(wanted.seconds_per_pixel, closest_seconds_per_pixel, widest);
    const double last_first = reach.end_seconds - reach.width * made.seconds_per_pixel;
    made.first_seconds =
        std::clamp(wanted.first_seconds, reach.start_seconds, std::max(reach.start_seconds, last_first));
    return made;
}

timeline_scale scale_zoomed(const timeline_reach& reach, const timeline_scale& now, double factor, double x) {
    timeline_scale wanted;
    wanted.seconds_per_pixel =
        std::clamp(now.seconds_per_pixel / factor, closest_seconds_per_pixel, reach.fit_seconds_per_pixel());
    wanted.first_seconds = now.seconds_at(x) - x * wanted.seconds_per_pixel;
    return scale_within(reach, wanted);
}

double zoom_share(const timeline_reach& reach, const timeline_scale& now) {
    const double widest = std::log(reach.fit_seconds_per_pixel());
    const double closest = std::log(closest_seconds_per_pixel);
    if (widest - closest < 1e-9) return 0;
    return std::clamp((widest - std::log(now.seconds_per_pixel)) / (widest - closest), 0.0, 1.0);
}

timeline_scale scale_with_share(const timeline_reach& reach, const timeline_scale& now, double share,
                                double x) {
    const double widest = reach.fit_seconds_per_pixel();
    const double wanted = widest * std::pow(closest_seconds_per_pixel / widest, std::clamp(share, 0.0, 1.0));
    return scale_zoomed(reach, now, now.seconds_per_pixel / wanted, x);
}

ruler_steps ruler_steps_for(double seconds_per_pixel, double major_distance, double minor_distance) {
    const double least = major_distance * seconds_per_pixel;
    const double* found = std::find_if(std::begin(major_steps), std::end(major_steps),
                                       [least](double step) { return step >= least; });
    // Beyond the longest step whole multiples of it.
    const double longest = *std::prev(std::end(major_steps));
    ruler_steps made;
    made.major_seconds = found != std::end(major_steps) ? *found : longest * std::ceil(least / longest);
    for (const int parts : {5, 4}) {
        if (made.major_seconds / parts / seconds_per_pixel >= minor_distance) {
            made.minor_parts = parts;
            break;
        }
    }
    return made;
}

double first_seconds_following(const timeline_scale& now, double width, double playhead_seconds,
                               double share) {
    const double over = now.x_of(playhead_seconds) - width * share;
    if (over <= 0) return now.first_seconds;
    return now.first_seconds + std::ceil(over) * now.seconds_per_pixel;
}

}  // namespace vistels
