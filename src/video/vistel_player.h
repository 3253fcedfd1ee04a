// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "util/serial_queue.h"
#include "video/answer_watch.h"
#include "video/frame_budget.h"
#include "video/playback_movie.h"

namespace vistels {

// One movie file of a vistel, on the vistel's own time line.
struct playback_part {
    std::string path;
    double start = 0;       // seconds
    double duration = 0;    // seconds
    bool is_still = false;  // a picture, shown at all times; the vistel has no other part

    bool operator==(const playback_part&) const = default;
};

enum class vistel_state {
    waiting,     // the frame is being read
    showing,     // the very frame is there
    blank,       // nothing was filmed at that time
    unreadable,  // the movie cannot be shown
};

// Plays one vistel: says which picture stands at a time, and reads ahead and behind on a queue of its own.
// Main thread only; nothing here waits for a file.
class vistel_player {
  public:
    struct view {
        vistel_state state = vistel_state::waiting;
        // The right one when `showing`; while `waiting`, the latest before it (playing backwards the
        // earliest after it) or null.
        picture_pointer frame;
        double frame_seconds = 0;  // the frame's time on the vistel's own time line
        double until_seconds = 0;  // ... and the next one's, or the part's end
        failure problem;           // when unreadable
        failure difference;        // what tells the movie that is shown from the one on record
        bool is_near = false;      // the frame stands within the tolerance that was asked for
    };

    // `on_arrival` is called on the queue when a frame that was asked for has come, or cannot come. The
    // pictures take their share of `budget`.
    vistel_player(std::vector<playback_part> parts, std::function<void()> on_arrival,
                  std::shared_ptr<frame_budget> budget);
    // Waits for the piece of work that the queue is at.
    ~vistel_player();

    // Asks for the frame at a time of the vistel's own time line, and for those that playing at `rate` (0:
    // standing still, having last stepped in `direction`) will need; `alone`: the very frame will do. With a
    // tolerance, in seconds, one as near as that will do. `hurries`: nothing else is read yet, so that others
    // come to theirs sooner. Takes the place of what was asked before.
    void want(double seconds, double rate, int direction, bool alone = false, double tolerance = 0,
              bool hurries = false);
    // Has the queue look whether the movies are still the files that were opened.
    void check_files();
    // Nothing is asked for until the next want(): lets go of the pictures.
    void rest();
    // The pictures' size; 0, 0: the movie's own. Takes effect with the next want().
    void set_size(int width, int height);

    // How far the queue's work has come.
    work_progress progress() const;
    // How long a frame took to be read lately; 0 before the first.
    double decode_milliseconds() const { return decode_milliseconds_; }
    // Does not wait for the piece of work that the queue is at: the player goes away by itself when that
    // ends, which calls `on_arrival` no more than once. What is given back expires then.
    static std::weak_ptr<vistel_player> leave(std::unique_ptr<vistel_player> player);

    // What stands at a time, or as near to it as the tolerance allows.
    view look(double seconds, double tolerance = 0) const;
    // The time of the frame before that one, when it is held.
    std::optional<double> preceding(double seconds) const;
    // How long a frame stands on average.
    double frame_seconds(double seconds) const;
    // The end of the last part.
    double duration() const;
    // Whether the vistel is a picture that is shown at all times.
    bool is_still() const;
    const std::vector<playback_part>& parts() const { return parts_; }

  private:
    struct place {
        int part;  // -1: in a gap, or before all
        double seconds;
    };

    // A part that is shown, that comes next or that has just gone by.
    struct near_part {
        int index = 0;
        bool is_read = false;
        playback_demand demand;  // of its own time
    };

    place place_of(double seconds) const;
    int part_at_or_after(double seconds) const;
    std::vector<near_part> near_parts(double seconds, const playback_demand& demand) const;
    double demanded_rate() const;
    void post_work();
    void look_again();
    void work();
    playback_movie::progress work_timed(double seconds, const playback_demand& demand);
    playback_movie::progress work_once(double seconds, const playback_demand& demand);
    void share_memory(std::vector<near_part>& parts);
    void let_go();
    bool has_missed_frame(double seconds);

    const std::vector<playback_part> parts_;  // by start
    frame_budget::share share_;               // of the queue
    std::vector<std::unique_ptr<playback_movie>> movies_;
    const std::function<void()> on_arrival_;

    // A look found nothing: whoever puts the frame there tells, be it that it was read ahead.
    mutable std::atomic<bool> is_missed_{false};
    mutable std::mutex mutex_;
    double wanted_seconds_ = 0;  // guarded by mutex_, like the following
    playback_demand demand_;
    std::uint64_t demand_number_ = 0;
    bool resting_ = true;
    bool working_ = false;
    bool ending_ = false;
    bool checks_files_ = false;
    std::atomic<double> decode_milliseconds_{0};
    std::atomic<std::uint64_t> stages_{0};  // begun and ended pieces of work

    serial_queue queue_{"vistel"};  // last, so that its work ends before anything else goes
};

}  // namespace vistels
