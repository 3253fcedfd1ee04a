// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <random>

#include "playback/measured.h"

// Long movies, and playback that goes on for long.
namespace vistels::bench {

inline double first_frames(const std::vector<camera>& cameras) {
    const steady_clock machine;
    const double before = machine.seconds();
    const played_event event(cameras, small_picture);
    return machine.seconds() - before;
}

// Four movies of three hours beside four of a minute, of the same pictures.
inline void measure_long(measured& run) {
    constexpr double most_first_seconds = 0.3;
    constexpr double most_ratio = 1.2;
    const std::string minute = run.plain_movie();
    const std::string hours = join_many_times(
        minute, run.folder() / (run.is_short ? "short joined.mp4" : "3 hours.mp4"), run.is_short ? 3 : 166);
    const auto brief = cameras_of_movie(minute, 4, 30);
    const auto lasting = unknown_cameras(hours, 4);
    std::vector<double> firsts;
    for (int n = 0; n < (run.is_short ? 1 : 5); ++n) firsts.push_back(first_frames(lasting));
    const bool in_time = percentile(firsts, 1) <= most_first_seconds;
    std::printf(
        "first frames of 4 movies of %.0f minutes: median %.0f ms, longest %.0f ms (target %.0f ms)%s\n",
        lasting.front().vistel.parts.front().duration / 60, median(firsts) * 1e3, percentile(firsts, 1) * 1e3,
        most_first_seconds * 1e3, missed(in_time));
    run.expect(in_time);
    std::mt19937 random(3);
    played_event long_event(lasting, small_picture);
    played_event short_event(brief, small_picture);
    // The same places within the movie that was joined.
    const double length = short_event.end();
    std::uniform_real_distribution<double> anywhere(0, length - 1);
    const double joined = brief.front().vistel.parts.front().duration;
    std::uniform_int_distribution<int> which(0, static_cast<int>(long_event.end() / joined) - 1);
    paired_runs pairs;
    for (int n = 0; n < (run.is_short ? 1 : 5); ++n) {
        std::vector<double> ours;
        std::vector<double> theirs;
        for (int i = 0; i < (run.is_short ? 2 : 20); ++i) {
            const double to = anywhere(random);
            ours.push_back(long_event.seek_and_wait(to + joined * which(random)));
            theirs.push_back(short_event.seek_and_wait(to));
        }
        pairs.add(percentile(ours, 0.95), percentile(theirs, 0.95));
    }
    run.expect(tell("exact seek in long movies against short ones, p95", pairs, most_ratio));
}

inline void measure_growth(measured& run, double minutes) {
    constexpr double most_growth = 0.05;
    played_event event(run.plain_cameras(4), small_picture);
    std::mt19937 random(5);
    std::uniform_real_distribution<double> anywhere(0, event.end());
    const auto seek_often = [&](int times) {
        for (int i = 0; i < times; ++i) event.seek_and_wait(anywhere(random));
    };
    const auto play_long = [&](double seconds) {
        for (double played = 0; played < seconds;) {
            played += std::max(event.play(0, 4, seconds - played).seconds, 0.01);
        }
    };
    const auto settled_bytes = [&] {
        event.seek_and_wait(1);
        event.loop().run_until([&] { return !is_reading(event); }, longest_wait_seconds);
        return resident_bytes("VmRSS");
    };
    // What is there once all has been used.
    seek_often(run.is_short ? 2 : 50);
    play_long(run.is_short ? 0.1 : 20);
    const double before = settled_bytes();
    seek_often(run.is_short ? 5 : 1000);
    const double after_seeks = settled_bytes();
    play_long(run.is_short ? 0.2 : minutes * 60);
    const double after_playing = settled_bytes();
    const double growth = std::max(after_seeks, after_playing) / before - 1;
    std::printf(
        "memory: %.0f MB, after 1,000 seeks %.0f MB, after %.1f minutes at 4 %.0f MB: %+.1f %% (target "
        "%.0f %%)%s\n",
        before / 1e6, after_seeks / 1e6, minutes, after_playing / 1e6, growth * 100, most_growth * 100,
        missed(growth <= most_growth));
    run.expect(growth <= most_growth);
}

}  // namespace vistels::bench
