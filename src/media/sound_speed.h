// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>

#include "util/result.h"

namespace vistels {

// Makes sound, interleaved stereo at 48 kHz, last shorter or longer: 1/rate of its time. One thread at a
// time.
class sound_speed {
  public:
    static constexpr double slowest_rate = 0.25;
    static constexpr double fastest_rate = 4;

    // `rate` lies within those two. With `keeps_pitch` what is heard is as high as before, else it is
    // resampled and rises and falls with the rate.
    static result<std::unique_ptr<sound_speed>> open(double rate, bool keeps_pitch);
    ~sound_speed();
    sound_speed(const sound_speed&) = delete;
    sound_speed& operator=(const sound_speed&) = delete;

    // Sound that follows what was added before.
    result<void> add(const float* interleaved, std::size_t frames);
    // Takes up to so many pairs of samples of what is ready; returns how many.
    std::size_t take(float* interleaved, std::size_t frames);

  private:
    struct implementation;
    explicit sound_speed(std::unique_ptr<implementation> made);
    std::unique_ptr<implementation> its_;
};

}  // namespace vistels
