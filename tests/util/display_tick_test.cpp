// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/display_tick.h"

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>

#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

// Comes when the test says so, however late.
class late_run_loop final : public run_loop {
  public:
    void post(std::function<void()>) override {}
    timer_id start_timer(double delay_seconds, bool, std::function<void()> work) override {
        due = clock_.now + delay_seconds;
        work_ = std::move(work);
        return 1;
    }
    void stop_timer(timer_id) override { work_ = nullptr; }
    const clock& time() const override { return clock_; }

    void fire_at(double seconds) {
        clock_.now = seconds;
        std::exchange(work_, nullptr)();
    }
    double due = 0;

  private:
    struct manual_clock final : clock {
        double seconds() const override { return now; }
        double now = 0;
    };
    manual_clock clock_;
    std::function<void()> work_;
};

TEST(display_tick, comes_at_the_rate_of_the_screen_without_an_error_that_adds_up) {
    for (const double hertz : {50.0, 59.94, 60.0, 143.9}) {
        simulated_run_loop loop;
        loop.advance(12.3);
        display_tick ticks(loop);
        ticks.set_rate(hertz);
        int count = 0;
        tick_task task(ticks, tick_step::views, [&] {
            ++count;
            ASSERT_NEAR(ticks.seconds(), 12.3 + count / hertz, 1e-9);
        });
        task.start();
        loop.advance(1200.0001);
        EXPECT_EQ(count, static_cast<int>(1200.0001 * hertz)) << hertz;
    }
}

TEST(display_tick, keeps_its_order_while_tasks_come_and_go) {
    simulated_run_loop loop;
    display_tick ticks(loop);
    std::string order;
    std::unique_ptr<tick_task> gone;
    tick_task late(ticks, tick_step::views, [&] { order += 'n'; });
    tick_task views(ticks, tick_step::views, [&] {
        order += "v ";
        late.start();  // first at the next tick
    });
    tick_task presses(ticks, tick_step::presses, [&] {
        order += 'p';
        gone.reset();  // before its turn
    });
    tick_task players(ticks, tick_step::players, [&] { order += 's'; });
    tick_task once(ticks, tick_step::time, [&] {
        order += 't';
        once.stop();
    });
    gone = std::make_unique<tick_task>(ticks, tick_step::presses, [&] { order += 'x'; });
    views.start();
    presses.start();
    gone->start();
    players.start();
    once.start();
    players.start();  // it is already
    loop.advance(2.5 / 60);
    EXPECT_EQ(order, "tspv spv n");
    for (tick_task* task : {&late, &views, &presses, &players}) task->stop();
    EXPECT_FALSE(ticks.is_running());
    loop.advance(1);
    EXPECT_EQ(order, "tspv spv n");

    std::unique_ptr<tick_task> self;
    self = std::make_unique<tick_task>(ticks, tick_step::time, [&] { self.reset(); });
    self->start();
    loop.advance(1);
    EXPECT_FALSE(self || ticks.is_running());
}

TEST(display_tick, a_late_tick_stands_for_the_last_that_was_due) {
    late_run_loop loop;
    display_tick ticks(loop);
    ticks.set_rate(50);
    tick_task task(ticks, tick_step::time, [] {});
    task.start();
    struct {
        double fired;
        double stands_for;
        double next;
    } const cases[] = {
        {0.021, 0.02, 0.04},
        {0.0396, 0.04, 0.06},  // a timer a little early
        {0.131, 0.12, 0.14},
        {0.1405, 0.14, 0.16},
    };
    for (const auto& one : cases) {
        loop.fire_at(one.fired);
        EXPECT_NEAR(ticks.seconds(), one.stands_for, 1e-9);
        EXPECT_NEAR(loop.due, one.next, 1e-9);
    }
    ticks.set_rate(100);
    EXPECT_NEAR(loop.due, 0.1505, 1e-9);
    for (const double none : {0.0, -1.0, 1e9, std::nan("")}) ticks.set_rate(none);
    EXPECT_DOUBLE_EQ(ticks.period_seconds(), 0.01);
}

}  // namespace
}  // namespace vistels
