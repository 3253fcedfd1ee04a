// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>

#include "app/settings/places.h"
#include "logger/button_fired.h"
#include "util/posted_work_guard.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"
#include "util/signal.h"

namespace vistels {

class press_engine;

// Writes what each press and release set off to "System/vistels presses.txt" in the state folder, a line a
// round: its number in this run, the button that it began with, and all changes in firing order, so that what
// happened in an event can be told afterwards. Written in the background. Main thread only.
class press_log {
  public:
    // The engine and the loop must outlive it.
    press_log(press_engine& engine, home_places places, std::string event, run_loop& loop);
    // Waits until all is written.
    ~press_log();

  private:
    void note(const button_fired& fired);
    void write();

    const press_engine& engine_;
    const home_places places_;
    const std::string event_;  // its name
    run_loop& loop_;
    std::uint64_t round_ = 0;
    std::string line_;  // of that round; empty: none is to be written
    connection fired_;
    posted_work_guard guard_;
    serial_queue queue_;
};

// "Goal down at 12.34 (link): clip"; what came of it is left out where that is nothing.
std::string fired_text(const button_fired& fired);

}  // namespace vistels
