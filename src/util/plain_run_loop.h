// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

#include "util/run_loop.h"
#include "util/timer_list.h"

namespace vistels {

// A run loop for programs without a window, on the machine's clock. The thread that calls run_until() is the
// main thread; post() may be called from any.
class plain_run_loop final : public run_loop {
  public:
    void post(std::function<void()> work) override;
    timer_id start_timer(double delay_seconds, bool repeat, std::function<void()> work) override;
    void stop_timer(timer_id timer) override;
    const clock& time() const override { return clock_; }

    // Runs posted work and timers until `done` is true (asked after each) or `seconds` have passed; returns
    // whether it was done.
    bool run_until(const std::function<bool()>& done, double seconds);

  private:
    bool run_posted();

    steady_clock clock_;
    timer_list timers_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::deque<std::function<void()>> posted_;  // guarded by mutex_
};

}  // namespace vistels
