// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "util/result.h"

namespace vistels {

// How a movie is written. Sizes are even numbers of pixels.
struct movie_writer_settings {
    int width = 1280;
    int height = 720;
    int frame_rate = 30;  // frames a second are frame_rate / frame_rate_divisor
    int frame_rate_divisor = 1;
    std::int64_t video_bit_rate = 4'000'000;  // bits a second
    std::string preset = "veryfast";          // x264's
    std::string encoder_options = {};         // of x264 beside the preset, "deblock=1:cabac=1"
    int gop_frames = 60;                      // most frames from one key frame to the next
    int b_frames = 2;
    int threads = 0;               // of the video encoder; 0: as many as it likes
    int sound_rate = 48000;        // samples a second
    int sound_channels = 0;        // 0: no sound
    std::string sound_coder = {};  // of FFmpeg's AAC encoder; empty: its own choice
    int rotation = 0;              // degrees clockwise by which players turn the picture: 0, 90, 180, 270
    bool fast_start = false;       // index at the front, for which the finished file is copied once more
    bool in_fragments =
        false;  // an MP4 file that can be read while it is written, a group of pictures at a time
};

// Writes one movie file: H.264 and AAC, in the container that the path's ending names (.mp4, .mov, .mkv).
// The file appears at create(); one that is destroyed without finish() having succeeded is removed.
// One thread at a time may use a writer; different writers know nothing of each other.
class movie_writer {
  public:
    static result<std::unique_ptr<movie_writer>> create(const std::string& path,
                                                        const movie_writer_settings& settings);
    ~movie_writer();
    movie_writer(const movie_writer&) = delete;
    movie_writer& operator=(const movie_writer&) = delete;

    // The next frame: `height` rows of `width` pixels of 4 bytes B, G, R, unused, `stride` bytes apart. The
    // pixels may be changed as soon as the call is over.
    result<void> add_picture(const std::uint8_t* bgra, int stride);

    // The next frame at a time of its own, in seconds from the movie's start, later than the one before: for
    // a variable frame rate.
    result<void> add_picture_at(const std::uint8_t* bgra, int stride, double seconds);

    // Sound that follows what was added before: `frames` times `sound_channels` interleaved samples from -1
    // to 1.
    result<void> add_sound(const float* interleaved, std::size_t frames);

    // Writes what is still in the encoders and closes the file. Nothing may be added afterwards.
    result<void> finish();

  private:
    struct implementation;
    explicit movie_writer(std::unique_ptr<implementation> made);
    std::unique_ptr<implementation> its_;
};

}  // namespace vistels
