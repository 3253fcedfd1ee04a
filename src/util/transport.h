// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// What the code window and the views need of playback: the collection's time, and the means to change it.
// All times are seconds on the collection's clock; all calls are made on the main thread.
class transport {
  public:
    virtual ~transport() = default;

    // The collection time at this moment.
    virtual double collection_time() const = 0;

    // The collection time at an earlier moment of the monotonic clock (see clock::seconds), for an input
    // event that carries a time stamp.
    virtual double collection_time_at(double clock_seconds) const = 0;

    // The time of what is shown: while playing that of the last display tick, which all that is drawn goes
    // by, so that pictures, playhead and clock agree.
    virtual double shown_time() const { return collection_time(); }

    virtual bool is_playing() const = 0;
    // The rate in force, or to be used by the next play(); negative plays backwards.
    virtual double rate() const = 0;
    virtual void play() = 0;
    virtual void pause() = 0;
    virtual void set_rate(double rate) = 0;
    virtual void seek(double collection_seconds) = 0;
    // The same for a hand that drags: what is at hand may be shown first. A seek is its end.
    virtual void scrub(double collection_seconds) { seek(collection_seconds); }
};

}  // namespace vistels
