// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "formula/clip_verdicts.h"
#include "timeline/records/clip_Pause_Item.h"
#include "timeline/records/sxy_DATA_root.h"
#include "util/clock.h"
#include "util/display_tick.h"
#include "util/signal.h"
#include "util/transport.h"

namespace vistels {

// A clip to be played: seconds on the collection's clock.
struct playlist_clip {
    std::string uuid;
    double start = 0;
    double end = 0;
    std::vector<clip_Pause_Item> pauses = {};  // where playing halts
};

// The clips of all rows that pass, by start.
std::vector<playlist_clip> clips_that_pass(const sxy_DATA_root& timeline, const clip_verdicts& verdicts);

// Plays clips one after another: each from its start to its end, then on to the start of the next. Of clips
// that overlap nothing is played twice: the next one goes on where the playhead stands, and one that is over
// by then is passed over. At a pause point playing halts, and goes on with the list when it is to play again.
// Playing stops after the last. A person who pauses, seeks or plays backwards ends the list, and playback
// does what they asked for. Main thread.
class clip_playlist {
  public:
    // All must outlive it. `source` is the clock by which playback moves.
    clip_playlist(transport& playback, display_tick& ticks, const clock& source);
    clip_playlist(const clip_playlist&) = delete;
    clip_playlist& operator=(const clip_playlist&) = delete;

    // `clips` by start. Begins with the first that ends after `from_seconds`; when there is none nothing
    // happens. Each is gone to so long before its start as `lead_in_seconds` says. Takes the place of a list
    // that plays.
    void play(std::vector<playlist_clip> clips, std::optional<double> from_seconds = {},
              double lead_in_seconds = 0);
    // Ends the list; playback goes on as it is.
    void stop();

    bool is_playing() const { return task_.is_running(); }
    // The UUID of the clip that plays; empty when none does.
    std::string current() const { return is_playing() ? clips_[at_].uuid : std::string(); }

    // Playing or not, or another clip plays.
    signal<> changed;

  private:
    void tick();
    bool was_moved(double now) const;
    void go_on(double now);
    void begin_at(double seconds);
    bool follow_halt(double now);
    void halt_at(double seconds);
    void note_time();

    transport& playback_;
    const clock& source_;
    std::vector<playlist_clip> clips_;
    std::size_t at_ = 0;
    double lead_in_ = 0;
    bool halts_ = false;     // at a pause point
    tick_task task_;         // while a list plays
    double noted_time_ = 0;  // the collection's time at the last look
    double noted_rate_ = 1;
    double noted_at_ = 0;  // by the source
};

}  // namespace vistels
