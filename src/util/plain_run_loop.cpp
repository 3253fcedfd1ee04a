// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/plain_run_loop.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace vistels {

void plain_run_loop::post(std::function<void()> work) {
    {
        const std::lock_guard lock(mutex_);
        posted_.push_back(std::move(work));
    }
    wake_.notify_one();
}

run_loop::timer_id plain_run_loop::start_timer(double delay_seconds, bool repeat,
                                               std::function<void()> work) {
    return timers_.start(clock_.seconds(), delay_seconds, repeat, std::move(work));
}

void plain_run_loop::stop_timer(timer_id timer) {
    timers_.stop(timer);
}

bool plain_run_loop::run_until(const std::function<bool()>& done, double seconds) {
    const double end = clock_.seconds() + seconds;
    while (!done()) {
        if (run_posted() || timers_.run_one(clock_.seconds())) continue;
        const double now = clock_.seconds();
        if (now >= end) return false;
        const double until = std::min(end, timers_.next_due().value_or(end));
        std::unique_lock lock(mutex_);
        wake_.wait_for(lock, std::chrono::duration<double>(until - now), [this] { return !posted_.empty(); });
    }
    return true;
}

bool plain_run_loop::run_posted() {
    std::function<void()> work;
    {
        const std::lock_guard lock(mutex_);
        if (posted_.empty()) return false;
        work = std::move(posted_.front());
        posted_.pop_front();
    }
    work();
    return true;
}

}  // namespace vistels
