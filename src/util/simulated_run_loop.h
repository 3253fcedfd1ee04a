// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <utility>

#include "util/run_loop.h"
#include "util/timer_list.h"

namespace vistels {

// A run loop on a clock that moves only when it is told to: for scripted presses and tests. Work may be
// posted from any thread; it runs in run_posted() and advance_to().
class simulated_run_loop final : public run_loop {
  public:
    void post(std::function<void()> work) override {
        const std::lock_guard lock(mutex_);
        posted_.push_back(std::move(work));
    }
    timer_id start_timer(double delay_seconds, bool repeat, std::function<void()> work) override {
        return timers_.start(clock_.now, delay_seconds, repeat, std::move(work));
    }
    void stop_timer(timer_id timer) override { timers_.stop(timer); }
    const clock& time() const override { return clock_; }

    void run_posted() {
        for (;;) {
            std::function<void()> work;
            {
                const std::lock_guard lock(mutex_);
                if (posted_.empty()) return;
                work = std::move(posted_.front());
                posted_.pop_front();
            }
            work();
        }
    }

    // Runs every timer due up to `seconds`, each at its own time, and leaves the clock there.
    void advance_to(double seconds) {
        run_posted();
        while (timers_.next_due() && *timers_.next_due() <= seconds) {
            if (*timers_.next_due() > clock_.now) clock_.now = *timers_.next_due();
            timers_.run_one(clock_.now);
            run_posted();
        }
        if (seconds > clock_.now) clock_.now = seconds;
    }
    void advance(double seconds) { advance_to(clock_.now + seconds); }

  private:
    struct manual_clock final : clock {
        double seconds() const override { return now; }
        double now = 0;
    };

    manual_clock clock_;
    timer_list timers_;
    std::mutex mutex_;
    std::deque<std::function<void()>> posted_;
};

}  // namespace vistels
