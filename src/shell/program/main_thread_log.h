// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <thread>

#include "app/settings/places.h"
#include "util/serial_queue.h"
#include "util/wait_watch.h"

namespace vistels {

// Writes into the log of the state folder when the thread that made this had to wait for a volume or another
// thread for so long that a person notices, be the wait expected or not: which call, for what, how long. One
// at a time.
class main_thread_log : private wait_watch {
  public:
    static constexpr double noticed_seconds = 0.1;

    explicit main_thread_log(home_places places);
    ~main_thread_log() override;

  private:
    void begins(const wait_note&) override {}
    void ended(const wait_note& note, double seconds) override;

    const home_places places_;
    const std::thread::id thread_ = std::this_thread::get_id();
    serial_queue queue_{"main thread log"};
};

}  // namespace vistels
