// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "media/movie_information.h"
#include "media/picture.h"
#include "util/result.h"

namespace vistels {

// A time counts as reached this much early, so that seconds worked out from a frame's time stamp find that
// frame.
inline constexpr double frame_tolerance_seconds = 0.0001;

enum class frames_decoded { all, without_unreferenced, key_frames_only };

// Reads the pictures of one movie, exactly: the frame shown at a time is the last one whose time stamp is not
// later; before the first frame it is the first, after the last one the last. Time stamps count from the
// first frame, in the stream's own time base. Where a movie is so damaged that no frame up to a time can be
// decoded, the first that can stands there. Decodes and scales on the caller's thread; one thread at a time
// may use a reader. Packets that are broken are passed over; after many in a row the reader fails.
class frame_reader {
  public:
    // `threads`: of the decoder. The pictures are made in `pool`; null: in one of the reader's own.
    static result<std::unique_ptr<frame_reader>> open(const std::string& path, int threads = 1,
                                                      std::shared_ptr<picture_pool> pool = nullptr);
    ~frame_reader();
    frame_reader(const frame_reader&) = delete;
    frame_reader& operator=(const frame_reader&) = delete;

    const movie_information& information() const;
    double seconds_per_tick() const;              // of the stream's time base
    std::int64_t stamp_at(double seconds) const;  // the latest time stamp that counts as reached
    double seconds_at(std::int64_t stamp) const;

    // The frame at a time, scaled to that size (0, 0: its own).
    result<picture_pointer> frame_at(double seconds, int width, int height);
    // The frame after the last one read; null at the end.
    result<picture_pointer> next(int width, int height);

    // The steps of which those are made, for readers that decide themselves which frames are worth scaling.
    // Reading goes to the last key frame that is not after `stamp`. Frames before `needed_from` may be passed
    // over on the way, where no other frame needs them.
    result<void> seek(std::int64_t stamp, std::int64_t needed_from);
    result<void> seek(std::int64_t stamp) { return seek(stamp, 0); }
    // The same while reading on.
    void set_needed_from(std::int64_t stamp);
    // Whether the frame that advance() read is followed by the very next one of the movie, as far as
    // passing over on the way is concerned.
    bool is_certain() const;
    // Whether a seek gets nearer to `stamp` than reading on does.
    bool should_seek(std::int64_t stamp) const;
    // About where the last key frame lies that is not after `stamp`, not later than it does; nothing when the
    // file has no index.
    std::optional<std::int64_t> key_stamp(std::int64_t stamp) const;
    // Reads the next frame, false at the end. It is not scaled before paint() asks for it.
    result<bool> advance();
    // The time stamp of the frame that advance() reads next; nothing at the end.
    std::optional<std::int64_t> next_stamp() const;
    // The frame that advance() read, and the time stamp of the one after it (or the movie's end).
    std::int64_t current_stamp() const;
    std::int64_t current_until() const;
    result<picture_pointer> paint(int width, int height);

    // Takes effect at the next seek, or with `all` and `without_unreferenced` at the next frame.
    void set_decoded(frames_decoded which);
    // From the next frame on, those that follow the one before by less than so many ticks are decoded and not
    // given, but for key frames. 0: all are given.
    void set_spacing(std::int64_t ticks);

  private:
    struct implementation;
    explicit frame_reader(std::unique_ptr<implementation> made);
    std::unique_ptr<implementation> its_;
};

}  // namespace vistels
