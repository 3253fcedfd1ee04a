// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "media/movie_writer.h"
#include "media/picture.h"

namespace vistels::testing {

// Movies whose every picture says which frame it is: a row of black and white squares at the upper left, the
// number's lowest bit first, ending with the complement of its lowest 4 bits.
inline constexpr int code_bits = 16;
inline constexpr int check_bits = 4;

inline int code_square(int movie_width) {
    return movie_width / 40;
}

inline void draw_frame_number(std::uint8_t* bgra, int width, unsigned number) {
    const unsigned code = number | (~number & 0xfU) << code_bits;
    const int side = code_square(width);
    for (int y = 0; y < side; ++y) {
        for (int x = 0; x < side * (code_bits + check_bits); ++x) {
            const std::uint8_t shade = (code >> (x / side) & 1U) != 0 ? 235 : 16;
            std::uint8_t* const pixel = bgra + (static_cast<std::ptrdiff_t>(y) * width + x) * 4;
            pixel[0] = pixel[1] = pixel[2] = shade;
        }
    }
}

// The number in a picture; -1 when it holds none.
inline int read_frame_number(const picture& shown) {
    unsigned code = 0;
    const double side = shown.width / 40.0;
    for (int bit = 0; bit < code_bits + check_bits; ++bit) {
        const int x = static_cast<int>((bit + 0.5) * side);
        const std::uint8_t* const pixel =
            shown.row(static_cast<int>(side / 2)) + static_cast<std::ptrdiff_t>(x) * 4;
        if (pixel[1] > 128) code |= 1U << bit;
    }
    const unsigned number = code & ((1U << code_bits) - 1);
    return (code >> code_bits) == (~number & 0xfU) ? static_cast<int>(number) : -1;
}

// Writes a movie of `frames` frames: a moving texture with grain. `times`, when given, holds each frame's
// time.
inline result<void> write_coded_movie(const std::string& path, const movie_writer_settings& settings,
                                      unsigned frames, const std::vector<double>& times = {}) {
    auto made = movie_writer::create(path, settings);
    if (!made.ok()) return made.error();
    const auto width = static_cast<unsigned>(settings.width);
    const auto height = static_cast<unsigned>(settings.height);
    std::vector<std::uint8_t> grain(width * height + 65536);
    std::uint32_t state = 12345;
    for (auto& value : grain) {
        state = state * 1664525U + 1013904223U;
        value = static_cast<std::uint8_t>(state >> 29U);
    }
    std::vector<std::uint8_t> pixels(static_cast<std::size_t>(width) * height * 4);
    std::vector<float> sound;
    for (unsigned frame = 0; frame < frames; ++frame) {
        const std::uint8_t* const noise = grain.data() + frame * 7919U % 65536U;
        for (unsigned y = 0; y < height; ++y) {
            for (unsigned x = 0; x < width; ++x) {
                const unsigned wave = ((x + 3 * frame) / 16 * 29 + (y + frame) / 16 * 53) & 127U;
                std::uint8_t* const pixel = pixels.data() + (static_cast<std::size_t>(y) * width + x) * 4;
                pixel[0] = static_cast<std::uint8_t>(40 + noise[y * width + x] + wave / 2);
                pixel[1] = static_cast<std::uint8_t>(60 + noise[y * width + x] + wave);
                pixel[2] = static_cast<std::uint8_t>(50 + wave);
            }
        }
        draw_frame_number(pixels.data(), settings.width, frame);
        auto added = times.empty()
                         ? made.value()->add_picture(pixels.data(), settings.width * 4)
                         : made.value()->add_picture_at(pixels.data(), settings.width * 4, times[frame]);
        if (!added.ok()) return added;
        if (settings.sound_channels > 0) {
            const auto samples = static_cast<std::size_t>(settings.sound_rate) *
                                 static_cast<std::size_t>(settings.frame_rate_divisor) /
                                 static_cast<std::size_t>(settings.frame_rate);
            sound.assign(samples * static_cast<std::size_t>(settings.sound_channels), 0.0F);
            const double second =
                static_cast<double>(frame) * settings.frame_rate_divisor / settings.frame_rate;
            // A short beep at each whole second.
            if (second - std::floor(second) < 0.05) {
                for (std::size_t i = 0; i < sound.size(); ++i) sound[i] = (i / 64) % 2 == 0 ? 0.5F : -0.5F;
            }
            if (auto heard = made.value()->add_sound(sound.data(), samples); !heard.ok()) return heard;
        }
    }
    return made.value()->finish();
}

// The same of 320x240 pixels at 30 frames a second, quickly written.
inline result<void> write_small_coded_movie(const std::string& path, unsigned frames, int gop_frames) {
    movie_writer_settings settings;
    settings.width = 320;
    settings.height = 240;
    settings.gop_frames = gop_frames;
    settings.preset = "ultrafast";
    settings.threads = 1;
    return write_coded_movie(path, settings, frames);
}

}  // namespace vistels::testing
