// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <chrono>
#include <functional>
#include <thread>

#include "util/simulated_run_loop.h"

namespace vistels::testing {

// Runs what other threads post until the condition holds, the clock standing still; false when it does not
// come about on a machine with much to do.
inline bool comes_about(simulated_run_loop& loop, const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!condition()) {
        if (std::chrono::steady_clock::now() > deadline) return false;
        loop.run_posted();
        std::this_thread::yield();
    }
    return true;
}

}  // namespace vistels::testing
