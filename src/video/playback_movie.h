// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "media/frame_reader.h"
#include "video/playback_frame_cache.h"
#include "video/playback_pace.h"

namespace vistels {

// As a tolerance: the key frame before the wanted frame will do, or any between the two.
inline constexpr double key_frames_will_do = 1e9;

// What playback wants of one movie.
struct playback_demand {
    double seconds = 0;  // from the movie's first frame
    double rate = 0;     // 0: standing still
    int direction = 0;   // of the last step while standing still: 1, -1 or 0
    int width = 0;       // of the pictures; 0: the movie's own size
    int height = 0;
    bool alone = false;    // the very frame will do, no other is going to be asked for soon
    bool hurries = false;  // the very frame is asked for, and others will be once that has come
    double tolerance = 0;  // seconds before and after by which the frame may be another; no more is read then
    std::size_t memory = 0;  // bytes that this movie's pictures may take; the wanted one comes in any case
};

// Of memory, in bytes.
struct playback_needs {
    std::size_t least = 0;   // to show one frame after the other
    std::size_t wanted = 0;  // to have at hand what the demand will ask for
};

// What tells a file from another that takes its place.
struct file_stand {
    bool is_there = false;
    std::uint64_t device = 0;
    std::uint64_t number = 0;
    std::int64_t bytes = 0;
    std::int64_t changed = 0;  // nanoseconds

    bool operator==(const file_stand&) const = default;
    static file_stand of(const std::string& path);
    // Whether this is what it was, or has only grown.
    bool goes_on_from(const file_stand& before) const;
};

// Reads one movie for playback: fetches the frame that is wanted, then those that will be wanted next, within
// the memory that the demand names. When decoding cannot keep up it passes over frames as playback_pace has
// it. work(), keep(), check_file(), is_open(), needs() and close() are called on the
// vistel's queue, everything else on any thread.
class playback_movie {
  public:
    enum class progress { nothing_to_do, worked, wanted_frame_came, failed };

    // Pictures are made in `pool`. `recorded_seconds`: how long the movie is on record; 0: not known.
    playback_movie(std::string path, std::shared_ptr<picture_pool> pool, double recorded_seconds = 0);

    bool is_open() const { return reader_ != nullptr; }
    // What serves a demand; nothing before the movie is open.
    playback_needs needs(const playback_demand& demand) const;
    // One piece of work towards what is demanded: opens, seeks, or reads a frame.
    progress work(const playback_demand& demand);
    // Forgets what the demand has least use for, until the rest is within its memory; the frame that it asks
    // for stays, unless there is no memory at all.
    void keep(const playback_demand& demand);
    // Lets go of the file and the frames.
    void close();
    // Looks whether the file is the one that was opened. One that is gone cannot be shown; one that another
    // has taken the place of, or that was cut off, is opened anew, and so is one that could not be shown
    // before.
    void check_file();

    // The frame that stands at a time; null when it is not there (yet).
    picture_pointer frame_at(double seconds) const;
    // The latest frame held that is not later than that, for showing while the right one is being read.
    picture_pointer frame_before(double seconds) const;
    // The earliest frame held that is later, for the same while playing backwards.
    picture_pointer frame_after(double seconds) const;
    // A frame that stands within so many seconds of that; null when none is held.
    picture_pointer frame_near(double seconds, double tolerance) const;
    // The frame that precedes `shown`, when it is held.
    picture_pointer frame_preceding(const picture& shown) const;
    // Why the movie cannot be shown; none when it can.
    failure problem() const;
    // What tells the movie from the one on record, though it is shown; none when nothing does.
    failure difference_from_record() const;
    double frame_seconds() const;  // how long a frame stands on average

  private:
    // What is held around the wanted frame, in frames.
    struct targets {
        std::size_t ahead = 0;
        std::size_t behind = 0;
        std::size_t group = 0;  // read at once when going back
    };

    std::int64_t stamp_at(double seconds) const;
    progress open();
    progress fail(failure reason);
    void forget_problem();
    progress fetch(const playback_demand& demand, std::int64_t stamp);
    progress fetch_near(const playback_demand& demand, std::int64_t stamp);
    progress fetch_from_key(std::int64_t stamp);
    progress fetch_ahead(const playback_frame_cache::run& held);
    progress fetch_behind(const playback_frame_cache::run& held);
    bool needs_more_ahead(const playback_demand& demand, const playback_frame_cache::run& held);
    progress seek(std::int64_t stamp, std::int64_t needed_from);
    std::int64_t ticks_in(double seconds) const;
    std::int64_t ticks_of(std::size_t frames) const;
    double shown_seconds() const;
    std::int64_t painted_from(const playback_demand& demand, std::int64_t stamp) const;
    progress read_one(std::int64_t paint_from, bool in_any_case = false);
    bool make_room(bool is_wanted);
    progress paint_current();
    std::size_t frame_bytes(int width, int height) const;
    std::size_t playing_frames(const playback_demand& demand) const;
    targets targets_for(const playback_demand& demand) const;
    void set_spacing();
    void forget_dead_ends();
    void choose_decoded(const playback_demand& demand, bool is_missing, bool is_full);
    void set_size(int width, int height);

    const std::string path_;
    const std::shared_ptr<picture_pool> pool_;
    const double recorded_seconds_;

    // Of the queue.
    file_stand opened_;  // what was opened, or could not be
    bool failed_in_reading_ = false;
    std::unique_ptr<frame_reader> reader_;
    bool reader_has_current_ = false;
    int width_ = 0;
    int height_ = 0;
    std::int64_t wanted_stamp_ = 0;
    std::int64_t last_painted_ = 0;
    std::int64_t read_whole_for_ = -1;  // passing over frames on the way to that one hid what stands there
    std::size_t memory_ = 0;            // what the demand allows
    targets targets_;
    int last_direction_ = 0;
    bool is_filling_ahead_ = false;
    playback_pace pace_;
    std::optional<std::int64_t> nothing_before_;  // going back from here brought nothing
    std::optional<std::int64_t> nothing_after_;   // ... and going on

    mutable std::mutex mutex_;
    playback_frame_cache cache_;   // guarded by mutex_, changed on the queue only
    std::int64_t near_to_ = -1;    // guarded by mutex_; for that one a frame from near_from_ on will do
    std::int64_t near_from_ = 0;   // guarded by mutex_
    failure problem_;              // guarded by mutex_
    failure difference_;           // guarded by mutex_
    double seconds_per_tick_ = 0;  // guarded by mutex_; 0: not open yet
    double frame_seconds_ = 0.04;  // guarded by mutex_
};

}  // namespace vistels
