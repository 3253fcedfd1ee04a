// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/record_lock.h"

#include <thread>

namespace vistels {

namespace {

std::uint32_t thread_number() {
    static std::atomic<std::uint32_t> last = 0;
    thread_local const std::uint32_t own = ++last;
    return own;
}

}  // namespace

void record_lock::lock() {
    const std::uint32_t self = thread_number();
    if (owner_.load(std::memory_order_relaxed) != self) {
        constexpr int spins_before_yield = 64;
        int spins = 0;
        std::uint32_t free = 0;
        while (!owner_.compare_exchange_weak(free, self, std::memory_order_acquire)) {
            free = 0;
            if (++spins >= spins_before_yield) std::this_thread::yield();
        }
    }
    ++depth_;
}

void record_lock::unlock() {
    if (--depth_ == 0) owner_.store(0, std::memory_order_release);
}

}  // namespace vistels
