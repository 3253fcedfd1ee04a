// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>

#include "util/result.h"

namespace vistels {

// Sends interleaved stereo at 48 kHz to the sound device. Where no device can be opened it takes sound at the
// same pace and nobody hears it. One thread at a time, but heard_seconds() and set_volume() from any.
class sound_output {
  public:
    static result<std::unique_ptr<sound_output>> open();
    ~sound_output();
    sound_output(const sound_output&) = delete;
    sound_output& operator=(const sound_output&) = delete;

    // Adds sound to the end of what is waiting. Playing starts with the first.
    result<void> add(const float* interleaved, std::size_t frames);
    // Forgets what is waiting and begins at 0 again.
    void flush();
    // Seconds of sound heard since open() or the last flush().
    double heard_seconds() const;
    // Seconds of sound added since then.
    double added_seconds() const;
    void set_volume(double volume);  // 0 to 1

  private:
    struct implementation;
    explicit sound_output(std::unique_ptr<implementation> made);
    std::unique_ptr<implementation> its_;
};

}  // namespace vistels
