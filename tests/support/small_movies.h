// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "media/movie_writer.h"

namespace vistels::testing {

// Writes a movie of 64x36 pixels at 10 frames a second whose frames get brighter; false when that is not
// possible, as in a build without media.
inline bool write_small_movie(const std::string& path, double seconds) {
    movie_writer_settings settings;
    settings.width = 64;
    settings.height = 36;
    settings.frame_rate = 10;
    settings.video_bit_rate = 100'000;
    settings.preset = "ultrafast";
    settings.gop_frames = 10;
    settings.b_frames = 0;
    settings.threads = 1;
    auto writer = movie_writer::create(path, settings);
    if (!writer) return false;
    const int stride = settings.width * 4;
    const int frames = static_cast<int>(seconds * settings.frame_rate);
    for (int frame = 0; frame < frames; ++frame) {
        const auto shade = static_cast<std::uint8_t>(40 + frame * 200 / frames);
        const std::vector<std::uint8_t> pixels(static_cast<std::size_t>(stride * settings.height), shade);
        if (!writer.value()->add_picture(pixels.data(), stride)) return false;
    }
    return writer.value()->finish().ok();
}

}  // namespace vistels::testing
