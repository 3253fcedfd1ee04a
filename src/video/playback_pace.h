// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>

#include "media/frame_reader.h"

namespace vistels {

// Decides which frames of a movie are read while it plays, so that what cannot be read in time is left out
// evenly: first the frames that no other needs, then (going back) some more, then all but key frames. More is
// left out when frames have been missing for some time, and less again, a step at a time, when none has been
// for a while; a step that did not last is tried again after a longer while. Goes by the clock of playback
// alone. One thread.
class playback_pace {
  public:
    struct look_taken {
        double rate = 0;            // 0: standing still
        double wanted_seconds = 0;  // of the movie's time
        bool is_missing = false;    // the frame of that time is not there
        bool is_full = false;       // as much is held as is to be held
    };

    void look(const look_taken& now);

    frames_decoded decoded() const;
    // Frames that follow the one before by less than that are not shown; 0: all are. In seconds of the movie,
    // whose frames stand so long.
    double spacing(double frame_seconds) const;
    bool shows_all(double frame_seconds) const;
    // Frames have been missing, and not only since the last jump: a late one is better than none.
    bool is_behind() const { return is_behind_; }

  private:
    struct step {
        frames_decoded decoded;
        int frames_apart;
    };

    const step& chosen() const;
    std::size_t step_count() const;
    std::size_t usual_step() const;
    void begin(const look_taken& now);
    void count(const look_taken& now);
    void choose(const look_taken& now);

    double rate_ = 0;
    std::size_t step_ = 0;
    double last_wanted_ = 0;
    bool is_under_way_ = false;  // to what was wanted by a jump
    bool was_missing_ = false;
    bool is_behind_ = false;
    // Of playback's own time, in seconds.
    double under_way_ = 0;
    double missed_ = 0;  // less for the time in which nothing was missed
    double well_ = 0;    // nothing has been missed for so long
    double patience_ = 0;
    double since_tried_ = 0;  // a step that leaves out less
};

}  // namespace vistels
