// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <memory>
#include <unordered_map>

#include "util/run_loop.h"

class QTimer;

namespace vistels {

// The main thread's loop driven by Qt. Made and destroyed on the main thread, after the application object;
// work still waiting when it is destroyed is forgotten. Only post() may be called from other threads.
class qt_run_loop final : public QObject, public run_loop {
  public:
    qt_run_loop();
    ~qt_run_loop() override;

    void post(std::function<void()> work) override;
    timer_id start_timer(double delay_seconds, bool repeat, std::function<void()> work) override;
    void stop_timer(timer_id timer) override;
    const clock& time() const override { return clock_; }

  private:
    steady_clock clock_;
    timer_id last_timer_ = 0;
    std::unordered_map<timer_id, std::unique_ptr<QTimer>> timers_;
};

}  // namespace vistels
