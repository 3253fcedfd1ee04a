// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <vector>

#include "util/clock.h"
#include "video/answer_watch.h"
#include "video/pitch_algorithm.h"
#include "video/vistel_player.h"

namespace vistels {

// Sounds one vistel along with playback, forwards from `slowest_rate` to `fastest_rate`, and is silent
// otherwise. Main thread only; files and the device are handled on a queue of its own.
class playback_sound {
  public:
    static constexpr double slowest_rate = 0.25;
    static constexpr double fastest_rate = 4;
    static bool sounds_at(double rate) { return rate >= slowest_rate && rate <= fastest_rate; }

    // How long a file takes to answer goes by `patience`, which outlives this.
    explicit playback_sound(const clock& patience);
    // Does not wait for a file that does not answer; what reads it goes away by itself then.
    ~playback_sound();

    // Whose sound is heard; empty: none. One whose file does not answer keeps no other silent.
    void set_parts(std::vector<playback_part> parts);
    // What becomes of the pitch at rates other than 1; varispeed from the beginning.
    void set_pitch(pitch_algorithm pitch);
    void set_volume(double volume);  // 0 to 1; at 0 the device rests

    // Playback is at `seconds` of the vistel's own time line and moves at `rate`; 0: it stands still.
    void update(double seconds, double rate);
    // After a jump: what was read ahead is not heard any more.
    void restart();

    // The time on the vistel's time line that is being heard; nothing while silent, before the device runs,
    // or while the file does not answer.
    std::optional<double> heard_seconds() const;

  private:
    struct implementation;

    void look_at_reading();
    void leave();

    const clock& patience_;
    answer_watch watch_;  // of its reading
    std::shared_ptr<implementation> its_;
};

}  // namespace vistels
