// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "util/run_loop.h"

namespace vistels {

// What is done at a display tick, in this order: what decides about the time (loops, ends of clips), the
// players that show a moment, the buttons that wait for one, the views that draw it all.
enum class tick_step : std::size_t { time, players, presses, views };
inline constexpr std::size_t tick_steps = 4;

class tick_task;

// The ticks at which moving things are brought up to date and drawn: evenly spaced at the screen's refresh
// rate, without an error that adds up, and only while some task is started. A tick that comes late stands
// for the moment that was due last; those missed before it are left out. Main thread.
class display_tick {
  public:
    // 60 ticks a second until set_rate(). `loop` must outlive this.
    explicit display_tick(run_loop& loop) : loop_(loop) {}
    // The tasks are gone by then.
    ~display_tick();
    display_tick(const display_tick&) = delete;
    display_tick& operator=(const display_tick&) = delete;

    // Ticks a second; a rate that no screen has (below 20, above 1000, not finite) changes nothing.
    void set_rate(double hertz);
    double period_seconds() const { return period_; }
    // The moment for which the last tick stands, by the loop's clock; not more than a millisecond after the
    // clock's own time. 0 before the first.
    double seconds() const { return seconds_; }
    bool is_running() const { return timer_ != 0; }

  private:
    friend class tick_task;

    void add(tick_task& task);
    void remove(tick_task& task);
    void schedule();
    void tick();

    run_loop& loop_;
    double period_ = 1.0 / 60;
    double begun_ = 0;         // the ticks come whole periods after that
    std::int64_t number_ = 0;  // of the next tick, from 1
    double seconds_ = 0;
    run_loop::timer_id timer_ = 0;
    bool is_ticking_ = false;
    std::array<std::vector<tick_task*>, tick_steps> tasks_;  // null: stopped during this tick
};

// Work done at every tick while it is started. Tasks of one step are run in the order in which they were
// started; one that is started during a tick is first run at the next. Tasks may be started, stopped and
// destroyed by the work of any task. Main thread.
class tick_task {
  public:
    // `ticks` must outlive the task.
    tick_task(display_tick& ticks, tick_step step, std::function<void()> work);
    ~tick_task() { stop(); }
    tick_task(const tick_task&) = delete;
    tick_task& operator=(const tick_task&) = delete;

    void start();
    void stop();
    void set_running(bool runs) { runs ? start() : stop(); }
    bool is_running() const { return runs_; }

  private:
    friend class display_tick;

    display_tick& ticks_;
    const tick_step step_;
    const std::shared_ptr<const std::function<void()>> work_;
    bool runs_ = false;
};

}  // namespace vistels
