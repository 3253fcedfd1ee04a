// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>

#include "util/wait_watch.h"

namespace vistels::testing {

// Holds whoever opens a movie, as a volume does that has gone; or whoever makes another call on a file.
class held_volume : public wait_watch {
  public:
    explicit held_volume(std::string_view call = "open movie", std::string file = {})
        : call_(call), file_(std::move(file)) {
        listen(this);
    }
    ~held_volume() override {
        release();
        listen(nullptr);
        while (held_ > 0) std::this_thread::yield();
    }
    bool holds() const { return held_ > 0; }
    int calls() const { return calls_; }
    void release() {
        const std::lock_guard lock(mutex_);
        released_ = true;
        change_.notify_all();
    }

  private:
    void begins(const wait_note& note) override {
        if (note.call() != call_ || (!file_.empty() && note.subject() != file_)) return;
        ++calls_;
        ++held_;
        {
            std::unique_lock lock(mutex_);
            change_.wait_for(lock, std::chrono::seconds(60), [this] { return released_; });
        }
        --held_;
    }
    void ended(const wait_note&, double) override {}

    const std::string_view call_;
    const std::string file_;
    std::mutex mutex_;
    std::condition_variable change_;
    bool released_ = false;
    std::atomic<int> held_ = 0;
    std::atomic<int> calls_ = 0;
};

}  // namespace vistels::testing
