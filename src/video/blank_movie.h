// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>

#include "util/job.h"
#include "util/result.h"
#include "util/serial_queue.h"

namespace vistels {

// Writes a movie of one still picture, black, that lasts `seconds`. It is written under a name that ends in
// " temp.mov" and appears at `path` when it is whole; on failure, or when `work` is cancelled, nothing is
// left. Any thread.
result<void> write_blank_movie(const std::string& path, double seconds, job& work);

// "blank vistel movie.mov", which stands in where a vistel has no movie: made once, when it is first asked
// for, on a queue of its own, and kept. The flags may be read from any thread.
class blank_vistel_movie {
  public:
    static constexpr const char* file_name = "blank vistel movie.mov";
    static constexpr double seconds = 10;

    // `folder` is made when missing.
    explicit blank_vistel_movie(const std::string& folder);

    // Begins to make it, unless that was done before or the file is there. `done`, when given, is called on
    // the queue once it is there or could not be made, at every call.
    void prepare(std::function<void()> done = nullptr);
    bool started_preparing_getting_blank_movie() const { return started_; }
    bool blank_movie_preparation_is_done() const { return done_; }

    const std::string& path() const { return path_; }
    // Why there is no movie, for the user; empty when all is well, or not known yet.
    std::string problem() const;

  private:
    void make();

    const std::string folder_;
    const std::string path_;
    std::atomic<bool> started_ = false;
    std::atomic<bool> done_ = false;
    mutable std::mutex mutex_;
    std::string problem_;  // guarded by mutex_
    serial_queue queue_{"join timelines queue"};
};

}  // namespace vistels
