// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "demo/demo_event.h"
#include "media/demultiplexer.h"
#include "media/multiplexer.h"
#include "playback/played_event.h"
#include "util/job.h"
#include "video/video_coll_LOAD.h"
#include "video/video_coll_Playback.h"

// The movies that playback is measured with. They stay where they were made, for the next run.
namespace vistels::bench {

inline std::vector<camera> cameras_of_collection(const std::string& path) {
    const auto loaded = load_collection(path);
    if (!loaded.ok()) stop_with(loaded.message());
    std::vector<camera> cameras;
    for (const auto& vistel : playback_vistels_of(loaded.value().collection)) {
        cameras.push_back(camera::open(vistel, 30, true));
    }
    return cameras;
}

inline std::string make_demo_movies(const std::filesystem::path& folder, int seconds, int cameras) {
    std::printf("making a demo event of %d s ...\n", seconds);
    std::fflush(stdout);
    std::filesystem::remove_all(folder);  // of a run before
    demo_options options;
    options.seconds = seconds;
    options.cameras = cameras;
    job work;
    auto made = make_demo_event(folder, options, work);
    if (!made.ok()) stop_with(made.message());
    return made.value().collection;
}

struct movie_kind {
    int width = 1280;
    int height = 720;
    int frame_rate = 30;
    int group_frames = 60;
    int seconds = 20;
    std::int64_t bit_rate = 4'000'000;
};

inline std::string make_movie(const std::filesystem::path& folder, const movie_kind& kind) {
    const std::string path = folder / (std::to_string(kind.height) + "p" + std::to_string(kind.frame_rate) +
                                       " " + std::to_string(kind.group_frames) + ".mp4");
    if (std::filesystem::exists(path)) return path;
    movie_writer_settings settings;
    settings.width = kind.width;
    settings.height = kind.height;
    settings.frame_rate = kind.frame_rate;
    settings.gop_frames = kind.group_frames;
    settings.video_bit_rate = kind.bit_rate;
    std::printf("making %s ...\n", path.c_str());
    std::fflush(stdout);
    const auto made = vistels::testing::write_coded_movie(
        path, settings, static_cast<unsigned>(kind.frame_rate * kind.seconds));
    if (!made.ok()) stop_with(made.message());
    return path;
}

// So many vistels that show one movie, whose frames are not looked at.
inline std::vector<camera> unknown_cameras(const std::string& path, int count) {
    auto known = probe_movie(path);
    if (!known.ok()) stop_with(known.message());
    std::vector<camera> cameras;
    for (int i = 1; i <= count; ++i) {
        cameras.push_back(
            {{"vistel " + std::to_string(i), 0, {{path, 0, known.value().duration}}, 1.0 * i}, {}});
    }
    return cameras;
}

// ... and are.
inline std::vector<camera> cameras_of_movie(const std::string& path, int count, double frame_rate) {
    std::vector<camera> cameras = unknown_cameras(path, count);
    for (auto& one : cameras) one = camera::open(one.vistel, frame_rate, false);
    return cameras;
}

// One movie many times after itself, without decoding it.
inline std::string join_many_times(const std::string& from, const std::string& to, int times) {
    if (std::filesystem::exists(to)) return to;
    std::printf("joining %s ...\n", to.c_str());
    std::fflush(stdout);
    auto file = multiplexer::create(to, to);
    if (!file.ok()) stop_with(file.message());
    const AVStream* track = nullptr;
    std::int64_t begin = 0;
    for (int n = 0; n < times; ++n) {
        auto movie = demultiplexer::open(from);
        if (!movie.ok()) stop_with(movie.message());
        const AVStream& stream = *movie.value()->video();
        if (track == nullptr) {
            const auto added = file.value()->add_track(stream, stream.time_base);
            if (!added.ok() || !file.value()->begin().ok()) stop_with("A movie cannot be joined");
            track = added.value();
        }
        const ffmpeg_owner<AVPacket> packet(av_packet_alloc());
        while (movie.value()->read(*packet, stream) >= 0) {
            packet->pts += begin;
            packet->dts += begin;
            packet->stream_index = 0;
            if (!file.value()->write(*packet, *track, stream.time_base).ok())
                stop_with("A movie cannot be joined");
        }
        begin += stream.duration;
    }
    if (!file.value()->finish().ok()) stop_with("A movie cannot be joined");
    return to;
}

}  // namespace vistels::bench
