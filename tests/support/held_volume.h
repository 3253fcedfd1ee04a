// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "util/wait_watch.h"

namespace vistels::testing {

// Holds whoever opens a movie, as a volume does that has gone; or whoever makes another call on a file.
class held_volume {
  public:
    explicit held_volume(std::string_view call = "open movie", std::string file = {})
        : watch_(kept(std::make_unique<watch>(call, std::move(file)))) {
        wait_watch::listen(&watch_);
    }
    ~held_volume() {
        release();
        wait_watch::listen(nullptr);
        while (watch_.held > 0) std::this_thread::yield();
    }
    held_volume(const held_volume&) = delete;
    held_volume& operator=(const held_volume&) = delete;

    bool holds() const { return watch_.held > 0; }
    int calls() const { return watch_.calls; }
    void release() { watch_.release(); }

  private:
    struct watch final : public wait_watch {
        watch(std::string_view held_call, std::string held_file)
            : call(held_call), file(std::move(held_file)) {}

        void begins(const wait_note& note) override {
            if (note.call() != call || (!file.empty() && note.subject() != file)) return;
            ++calls;
            ++held;
            {
                std::unique_lock lock(mutex);
                change.wait_for(lock, std::chrono::seconds(60), [this] { return is_released; });
            }
            --held;
        }
        void ended(const wait_note&, double) override {}
        void release() {
            const std::lock_guard lock(mutex);
            is_released = true;
            change.notify_all();
        }

        const std::string_view call;
        const std::string file;
        std::mutex mutex;
        std::condition_variable change;
        bool is_released = false;
        std::atomic<int> held = 0;
        std::atomic<int> calls = 0;
    };

    // To the end of the process: a thread that was about to tell it something may do so late.
    static watch& kept(std::unique_ptr<watch> made) {
        static auto* const all = new std::vector<std::unique_ptr<watch>>;
        return *all->emplace_back(std::move(made));
    }

    watch& watch_;
};

}  // namespace vistels::testing
