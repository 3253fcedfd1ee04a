// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>

#include "util/job.h"
#include "util/result.h"
#include "util/serial_queue.h"

namespace vistels {

// "blank vistel movie.mov": a second of one still picture, black, which stands in where a vistel has no
// movie. It is made once, on a queue of its own, and kept; blank movies of any length are made of its
// pictures. While it is written its name ends in " temp.mov". Any thread but the queue's own.
class blank_vistel_movie {
  public:
    static constexpr const char* file_name = "blank vistel movie.mov";

    // `folder` is made when missing.
    explicit blank_vistel_movie(const std::string& folder);

    // Begins to make it, unless it is there and whole or being made.
    void prepare();
    // Prepares it and waits: its path.
    result<std::string> wait_for_movie();

    // Writes a blank movie of `seconds` at `path`, where it appears when it is whole; on failure, or when
    // `work` is cancelled, nothing is left.
    result<void> write(const std::string& path, double seconds, job& work);

  private:
    result<void> make();
    void remove_left_over() const;

    const std::string folder_;
    const std::string path_;
    std::mutex mutex_;
    std::condition_variable is_done_;
    bool started_ = false;  // guarded by mutex_, as what follows
    bool done_ = false;
    failure problem_;                      // of the last time
    std::unique_ptr<serial_queue> queue_;  // from the first time on; last: its work is done before all else
};

}  // namespace vistels
