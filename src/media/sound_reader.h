// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "util/result.h"

namespace vistels {

inline constexpr int sound_samples_per_second = 48000;
inline constexpr int sound_channels = 2;

// Reads a movie's sound as interleaved stereo at 48 kHz, whatever it is stored as. Times count from the
// movie's first picture, like those of frame_reader. One thread at a time.
class sound_reader {
  public:
    static result<std::unique_ptr<sound_reader>> open(const std::string& path);
    ~sound_reader();
    sound_reader(const sound_reader&) = delete;
    sound_reader& operator=(const sound_reader&) = delete;

    // `frames` pairs of samples from a time on; silence where there is no sound. Reading on from where the
    // last call ended is cheap.
    result<void> read(double seconds, float* interleaved, std::size_t frames);

  private:
    struct implementation;
    explicit sound_reader(std::unique_ptr<implementation> made);
    std::unique_ptr<implementation> its_;
};

}  // namespace vistels
