// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <random>

#include "playback/measured.h"
#include "playback/peer_players.h"

// Going to a time, and a frame back.
namespace vistels::bench {

inline std::vector<std::string> first_movies(const std::vector<camera>& cameras) {
    std::vector<std::string> paths;
    for (const auto& camera : cameras) paths.push_back(camera.vistel.parts.front().path);
    return paths;
}

inline void tell_peer(const char* what, const paired_runs& runs, double most, measured& run) {
    if (peer_players::is_there) {
        run.expect(tell(what, runs, most));
    } else {
        std::printf("%-58s %9.2f ms; libmpv is not there\n", what, median(runs.ours) * 1e3);
    }
    std::fflush(stdout);
}

// To random times in the demo event, whose every frame is known.
inline void measure_exact(measured& run) {
    played_event event(run.demo_cameras(), small_picture);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> anywhere(0, event.end());
    std::vector<double> lasted;
    int wrong = 0;
    for (int i = 0; i < (run.is_short ? 10 : 100); ++i) {
        const double to = anywhere(random);
        lasted.push_back(event.seek_and_wait(to));
        if (!event.all_right(to, true)) ++wrong;
    }
    std::printf("seek: %d wrong of %zu; median %.0f ms, 95th percentile %.0f ms\n", wrong, lasted.size(),
                percentile(lasted, 0.5) * 1e3, percentile(lasted, 0.95) * 1e3);
    run.expect_found(wrong == 0);
}

// The same beside the peer, which is given movies without leads.
inline void measure_seeks(measured& run) {
    constexpr double most_ratio = 0.8;
    auto cameras = run.plain_cameras(4);
    peer_players peer(first_movies(cameras));
    played_event event(std::move(cameras), small_picture);
    std::mt19937 random(7);
    std::uniform_real_distribution<double> anywhere(0, event.end());
    paired_runs pairs;
    int wrong = 0;
    for (int n = 0; n < (run.is_short ? 1 : 5); ++n) {
        std::vector<double> ours;
        std::vector<double> theirs;
        for (int i = 0; i < (run.is_short ? 3 : 30); ++i) {
            const double to = anywhere(random);
            ours.push_back(event.seek_and_wait(to));
            if (!event.all_right(to, true)) ++wrong;
            event.run(0.02);  // what is read ahead then does not slow the peer
            event.loop().run_until([&] { return !is_reading(event); }, longest_wait_seconds);
            theirs.push_back(peer.seek({to, to, to, to}));
        }
        pairs.add(percentile(ours, 0.95), percentile(theirs, 0.95));
    }
    run.expect_found(wrong == 0);
    tell_peer("exact seek of all four, 95th percentile", pairs, most_ratio, run);
}

inline void measure_back(measured& run) {
    constexpr double most_seconds = 0.020;
    constexpr double most_ratio = 0.1;
    auto cameras = run.plain_cameras(4);
    peer_players peer(first_movies(cameras));
    played_event event(std::move(cameras), small_picture);
    std::mt19937 random(11);
    std::uniform_real_distribution<double> anywhere(event.end() / 10, event.end() * 0.9 - 0.5);
    std::vector<double> after_playing;
    std::vector<double> ours;
    std::vector<double> theirs;
    int wrong = 0;
    const auto step = [&](std::vector<double>& lasted) {
        const long shown = event.cameras().front().due_at(event.playback().collection_time());
        bool done = false;
        const double before = event.loop().time().seconds();
        event.playback().step(-1, [&] { done = true; });
        if (!event.loop().run_until([&] { return done; }, longest_wait_seconds))
            stop_with("A step did not come to its end");
        lasted.push_back(event.loop().time().seconds() - before);
        const double now = event.playback().collection_time();
        const bool is_one_back = shown == 0 || event.cameras().front().due_at(now) == shown - 1;
        if (!is_one_back || !event.all_right(now, true)) ++wrong;
    };
    for (int i = 0; i < (run.is_short ? 1 : 8); ++i) {
        event.seek_and_wait(anywhere(random));
        event.playback().set_rate(1);
        event.playback().play();
        event.run(run.is_short ? 0.1 : 0.5);
        event.playback().pause();
        event.loop().run_until([&] { return event.playback().is_settled(); }, longest_wait_seconds);
        step(after_playing);
        for (int n = 0; n < (run.is_short ? 5 : 60); ++n) {
            event.run(0.033);  // as fast as a held key repeats
            step(ours);
        }
        event.loop().run_until([&] { return !is_reading(event); }, longest_wait_seconds);
        const double at = event.playback().collection_time();
        peer.seek({at, at, at, at});
        for (int n = 0; n < (run.is_short ? 2 : 10); ++n) theirs.push_back(peer.step_back());
    }
    run.expect_found(wrong == 0);
    run.expect(percentile(after_playing, 0.95) <= most_seconds && percentile(ours, 0.95) <= most_seconds);
    std::printf("one frame back, after playing: 95th percentile %.2f ms, slowest %.2f ms (target %.0f ms)\n",
                percentile(after_playing, 0.95) * 1e3, percentile(after_playing, 1) * 1e3,
                most_seconds * 1e3);
    std::printf("one frame back, after another: 95th percentile %.2f ms, slowest %.2f ms; %d wrong\n",
                percentile(ours, 0.95) * 1e3, percentile(ours, 1) * 1e3, wrong);
    paired_runs pairs;
    pairs.add(percentile(ours, 0.95), percentile(theirs, 0.95));
    tell_peer("one frame back, 95th percentile", pairs, most_ratio, run);
}

}  // namespace vistels::bench
