// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <deque>

#include "util/clock.h"

namespace vistels {

// The one clock that all vistels of a collection are shown by. While playing it moves by the monotonic clock
// times the rate; it stops by itself at either end of its range. Main thread only.
class collection_clock {
  public:
    // `source` outlives the clock.
    explicit collection_clock(const clock& source);

    // Where the collection begins and ends, in seconds; a time outside is moved to the nearer end.
    void set_range(double first, double last);
    double first() const { return first_; }
    double last() const { return last_; }

    double time() const { return time_at(source_.seconds()); }
    // The time at an earlier moment of the source, as far back as the last few changes reach.
    double time_at(double source_seconds) const;
    // The time to be shown at a tick that stands for that moment of the source: time_at() of it, but never
    // from before the last play, pause, seek, or change of rate or range.
    double time_to_show(double source_seconds) const;

    void play();
    void pause();
    void seek(double seconds);
    void set_rate(double rate);
    double rate() const { return rate_; }
    bool is_playing() const { return playing_; }
    // Whether playing on would move it: false at the end that it plays towards.
    bool can_move() const;

    // Says what the time is by a clock to be followed (the sound device's). The difference is made up for by
    // running at most 5 % slower or faster until the next call; the time never jumps and never turns back. A
    // difference that nobody hears or sees is left alone, so that time runs evenly and no tick meets a frame
    // twice or misses one.
    void follow(double seconds);

  private:
    // From `source_seconds` on, time runs from `time` at `speed`.
    struct stretch {
        double source_seconds;
        double time;
        double speed;
    };

    void start_stretch(double time, double speed_factor);
    void change(double time);

    const clock& source_;
    double first_ = 0;
    double last_ = 0;
    double rate_ = 1;
    bool playing_ = false;
    bool follows_ = false;           // a difference is being made up for
    double changed_ = 0;             // by the source: the last change but for following
    std::deque<stretch> stretches_;  // oldest first, never empty
};

}  // namespace vistels
