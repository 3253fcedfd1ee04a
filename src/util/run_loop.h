// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>

#include "util/clock.h"

namespace vistels {

// The main thread's loop, as the core sees it: work posted to it and timers, both run on the main thread,
// one after another. The desktop application drives it by its toolkit, the command line by
// `plain_run_loop`, tests and scripted presses by `simulated_run_loop`.
class run_loop {
  public:
    using timer_id = std::uint64_t;

    virtual ~run_loop() = default;

    // Runs `work` on the main thread, after what was posted before. Any thread may call it.
    virtual void post(std::function<void()> work) = 0;

    // Runs `work` on the main thread in `delay_seconds` (>= 0) from now, once or, with `repeat`, again at
    // that interval until stopped. Main thread only.
    virtual timer_id start_timer(double delay_seconds, bool repeat, std::function<void()> work) = 0;

    // Ends a timer; an unknown or ended one is no error. Main thread only.
    virtual void stop_timer(timer_id timer) = 0;

    // The clock that the timers follow.
    virtual const clock& time() const = 0;
};

}  // namespace vistels
