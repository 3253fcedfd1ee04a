// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>

#include "playback/measured.h"

// What is shown while playing.
namespace vistels::bench {

inline void tell_gaps(const char* what, const seen_pictures& seen) {
    std::printf(
        "%-34s clock off by %.4f s at most; from picture to picture median %.0f ms, longest %.0f ms (%.1f "
        "times), at the beginning %.0f ms; %.1f pictures a second and vistel; %d against the direction\n",
        what, seen.clock_error, seen.median_gap() * 1e3, seen.largest_gap() * 1e3,
        seen.largest_gap() / std::max(seen.median_gap(), 1e-9), seen.first_gap * 1e3,
        static_cast<double>(*std::min_element(seen.pictures.begin(), seen.pictures.end())) / seen.seconds,
        seen.turns);
    std::fflush(stdout);
}

inline void measure_ticks(measured& run) {
    constexpr double least_right = 0.999;
    played_event event(run.demo_cameras(), small_picture);
    for (const double rate : {1.0, 2.0}) {
        const auto seen = event.play(0, rate, 600, true);
        const bool met = seen.right_share() >= least_right;
        std::printf("rate %g: ticks that show all the due frames %.2f %% of %d (target %.1f %%)%s\n", rate,
                    seen.right_share() * 100, seen.ticks, least_right * 100, missed(met));
        run.expect(met);
    }
}

// Fast forwards and backwards: even pictures, and a clock that waits for nobody.
inline void measure_fast(measured& run) {
    constexpr double most_clock_error = 0.001;
    constexpr double most_gap_ratio = 2;
    const auto look_at = [&](const char* kind, std::vector<camera> cameras) {
        played_event event(std::move(cameras), small_picture);
        for (const double rate : {4.0, 8.0, 16.0, 32.0, 64.0, -2.0, -4.0, -8.0}) {
            const auto seen = event.play(rate > 0 ? 0 : event.end() - 0.3, rate, run.is_short ? 0.1 : 8);
            tell_gaps((std::string(kind) + ", rate " + std::to_string(static_cast<int>(rate))).c_str(), seen);
            const bool is_even = seen.largest_gap() <= most_gap_ratio * seen.median_gap() + tick_seconds;
            run.expect(seen.clock_error <= most_clock_error && is_even && seen.turns == 0);
        }
    };
    look_at("4 x 1280x720 at 30", run.long_cameras({1280, 720, 30, 60, 65, 4'000'000}, 4, 9));
    look_at("2 x 1920x1080 at 60", run.long_cameras({1920, 1080, 60, 120, 20, 10'000'000}, 2, 28));
}

inline void measure_reverse(measured& run) {
    const auto look_at = [&](const char* kind, std::vector<camera> cameras, picture_size size,
                             double least_share, double least_a_second) {
        const double frame_rate = cameras.front().frame_rate;
        played_event event(std::move(cameras), size);
        const auto seen = event.play(event.end() - 0.3, -1, run.is_short ? 0.3 : 20);
        const auto fewest =
            static_cast<double>(*std::min_element(seen.pictures.begin(), seen.pictures.end()));
        const double share = fewest / (seen.seconds * frame_rate);
        const bool met = share >= least_share && fewest / seen.seconds >= least_a_second;
        std::printf(
            "rate -1, %-42s %.1f %% of the frames, %.1f a second; longest gap %.0f ms; %.0f MB of "
            "pictures (target %.0f %%, %.0f a second)%s\n",
            kind, share * 100, fewest / seen.seconds, seen.largest_gap() * 1e3,
            static_cast<double>(frame_budget::of_program()->held()) / 1e6, least_share * 100, least_a_second,
            missed(met));
        std::fflush(stdout);
        run.expect(met);
    };
    look_at("4 x 1280x720 at 30", run.plain_cameras(4), small_picture, 0.99, 0);
    look_at("4 x 1280x720 at 30, groups of 10 s", run.cameras_of({1280, 720, 30, 300, 30, 4'000'000}, 4),
            small_picture, 0, 0);
    look_at("1920x1080 at 60, as large as a window", run.cameras_of({1920, 1080, 60, 120, 20, 10'000'000}, 1),
            large_picture, 0, 15);
}

// What playing up to `until` needs of one movie, decoded and nothing else.
inline void decode(const playback_part& part, double lead, double until) {
    auto reader = frame_reader::open(part.path);
    if (!reader.ok()) stop_with(reader.message());
    const double from = std::max(lead - part.start, 0.0);
    if (!reader.value()->seek(reader.value()->stamp_at(from)).ok()) stop_with("A seek failed");
    const std::int64_t last = reader.value()->stamp_at(lead + until - part.start);
    while (reader.value()->next_stamp().value_or(last + 1) <= last) {
        if (!reader.value()->advance().ok()) stop_with("Decoding failed");
    }
}

inline void measure_processor_time(measured& run) {
    constexpr double most_ratio = 1.25;
    played_event event(run.demo_cameras(), small_picture);
    const double until = std::min(event.end() - 0.2, 10.0);
    paired_runs pairs;
    for (int n = 0; n < (run.is_short ? 1 : 3); ++n) {
        event.seek_and_wait(0);
        event.playback().set_rate(1);
        const double playing = seconds_of([&] {
            event.playback().play();
            event.loop().run_until([&] { return event.playback().collection_time() >= until; }, 600);
            event.playback().pause();
        });
        const double decoding = seconds_of([&] {
            for (const auto& camera : event.cameras()) {
                for (const auto& part : camera.vistel.parts) decode(part, camera.vistel.lead, until);
            }
        });
        pairs.add(playing, decoding);
    }
    run.expect(tell("rate 1: processor time against decoding alone", pairs, most_ratio));
}

inline void measure_eight(measured& run) {
    played_event event(run.plain_cameras(8), small_picture);
    const auto seen = event.play(0, 1, run.is_short ? 0.3 : 20, true);
    std::printf("8 vistels at rate 1: all in step at %.2f %% of %d ticks\n", seen.right_share() * 100,
                seen.ticks);
    tell_gaps("8 vistels, rate 1", seen);
    run.expect(seen.clock_error < 0.001 && seen.turns == 0);
}

}  // namespace vistels::bench
