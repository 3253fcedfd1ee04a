// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/blank_movie.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "media/movie_writer.h"
#include "util/file_system.h"

namespace vistels {

namespace {

constexpr const char* could_not_make = "Could not make an empty vistel movie.";
constexpr const char* temporary_ending = " temp.mov";
constexpr int width = 320;
constexpr int height = 180;
constexpr int bytes_a_pixel = 4;
constexpr int frame_rate = 25;
constexpr double frame_seconds = 1.0 / frame_rate;
// However long it is: a still picture needs no more to be sought in.
constexpr int most_pictures = 200;

failure not_made(const std::string& reason) {
    return {std::string(could_not_make) + " " + reason};
}

std::string temporary_path(const std::string& path) {
    const auto dot = path.rfind('.');
    return path.substr(0, dot) + temporary_ending;
}

// The pictures stand at equal distances, the last one frame before the end.
result<void> write_pictures(movie_writer& writer, double seconds, job& work) {
    const std::vector<std::uint8_t> black(static_cast<std::size_t>(width) * height * bytes_a_pixel);
    const double last = std::max(seconds - frame_seconds, 0.0);
    const int steps = std::clamp(static_cast<int>(last), last > 0 ? 1 : 0, most_pictures);
    for (int step = 0; step <= steps; ++step) {
        if (work.is_cancelled()) return failure{"It was cancelled."};
        const double time = steps > 0 ? last * step / steps : 0;
        if (auto added = writer.add_picture_at(black.data(), width * bytes_a_pixel, time); !added)
            return added;
        work.set_progress(static_cast<double>(step) / (steps + 1));
    }
    return writer.finish();
}

}  // namespace

result<void> write_blank_movie(const std::string& path, double seconds, job& work) {
    if (!(seconds > 0)) return not_made("\"" + path + "\" would have no length.");
    movie_writer_settings settings;
    settings.width = width;
    settings.height = height;
    settings.frame_rate = frame_rate;
    settings.video_bit_rate = 50'000;
    settings.preset = "ultrafast";
    settings.gop_frames = 10;
    settings.b_frames = 0;
    settings.threads = 1;
    const std::string temporary = temporary_path(path);
    {
        auto writer = movie_writer::create(temporary, settings);
        if (!writer) return not_made(writer.message());
        if (auto written = write_pictures(*writer.value(), seconds, work); !written)
            return not_made(written.message());
    }
    if (const int fault = machine_files().rename(temporary, path)) {
        machine_files().remove(temporary);
        return not_made(file_failure(path, "could not be made", fault).message);
    }
    work.set_progress(1);
    return {};
}

}  // namespace vistels
