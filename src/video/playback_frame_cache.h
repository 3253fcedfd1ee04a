// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>

#include "media/picture.h"

namespace vistels {

// The scaled frames of one movie that are held in memory, by time stamp. A frame stands from its stamp to its
// `until_stamp`; frames that follow each other without a gap make a run. Not locked: the owner sees to that.
class playback_frame_cache {
  public:
    // Frames after each other: stamps from `from` (inclusive) to `until` (exclusive); both equal when empty.
    struct run {
        std::int64_t from = 0;
        std::int64_t until = 0;
        std::size_t frames_before = 0;  // of the run, earlier than the frame asked for
        std::size_t frames_after = 0;
        bool reaches_end = false;  // of the movie
    };

    // Replaces a frame of the same stamp, and those that would begin while this one stands: a damaged movie
    // need not give the same frames each time.
    void insert(picture_pointer made);
    // The frame that stands at `stamp`; null when it is not held. The movie's last frame stands for ever
    // after.
    picture_pointer at(std::int64_t stamp) const;
    // The last frame held that is not later; null when there is none.
    picture_pointer at_or_before(std::int64_t stamp) const;
    // The first frame held that is later; null when there is none.
    picture_pointer after(std::int64_t stamp) const;
    // A frame that stands at some time from `from` to `until`, the latest up to `stamp` or else the first
    // after it; null when none is held.
    picture_pointer near(std::int64_t stamp, std::int64_t from, std::int64_t until) const;
    // The run of the frame that stands at `stamp`.
    run run_at(std::int64_t stamp) const;

    // Forgets frames until `most` bytes are held, the farthest from `stamp` first; the nearest `before` and
    // `after` it go last. The frame at `stamp` stays.
    void keep_within(std::size_t most, std::int64_t stamp, std::size_t before, std::size_t after);
    // Forgets frames that were read while others were passed over.
    void forget_sparse();
    void clear();

    std::size_t bytes() const { return bytes_; }

  private:
    using frame_map = std::map<std::int64_t, picture_pointer>;

    frame_map::const_iterator standing_at(std::int64_t stamp) const;
    void erase(frame_map::iterator gone);

    frame_map frames_;
    std::size_t bytes_ = 0;
};

}  // namespace vistels
