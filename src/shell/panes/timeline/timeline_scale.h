// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <vector>

namespace vistels {

// How seconds lie on a line of pixels.
struct timeline_scale {
    double first_seconds = 0;        // at x = 0
    double seconds_per_pixel = 0.1;  // logical pixels

    double x_of(double seconds) const { return (seconds - first_seconds) / seconds_per_pixel; }
    double seconds_at(double x) const { return first_seconds + x * seconds_per_pixel; }
    bool operator==(const timeline_scale&) const = default;
};

// What may be shown: from start to end seconds, on `width` pixels.
struct timeline_reach {
    double start_seconds = 0;
    double end_seconds = 60;
    double width = 1;

    double fit_seconds_per_pixel() const;
    bool operator==(const timeline_reach&) const = default;
};

inline constexpr double closest_seconds_per_pixel = 0.002;

// The nearest scale that shows nothing beyond the reach, where that is possible.
timeline_scale scale_within(const timeline_reach& reach, timeline_scale wanted);
// `factor` above 1 comes closer; what is at `x` stays there.
timeline_scale scale_zoomed(const timeline_reach& reach, const timeline_scale& now, double factor, double x);
// Whole reach = 0, closest = 1; equal steps multiply the scale equally.
double zoom_share(const timeline_reach& reach, const timeline_scale& now);
timeline_scale scale_with_share(const timeline_reach& reach, const timeline_scale& now, double share,
                                double x);

// Where the ruler has ticks, in seconds.
struct ruler_steps {
    double major_seconds = 1;
    int minor_parts = 1;  // minor ticks divide a major step into so many parts; 1 = none
};

// The first step that gives majors and minors at least these distances in pixels.
ruler_steps ruler_steps_for(double seconds_per_pixel, double major_distance, double minor_distance);

// The first second shown once the playhead is to be seen while playing: in front of `share` of the width
// nothing moves, there it stays in place. Whole pixels of the first's position are kept, so that pictures can
// be shifted.
double first_seconds_following(const timeline_scale& now, double width, double playhead_seconds,
                               double share);

}  // namespace vistels
