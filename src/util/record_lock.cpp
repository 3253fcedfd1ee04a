// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/record_lock.h"

#include <thread>

namespace vistels {

std::uint32_t record_lock::give_thread_number() {
    static std::atomic<std::uint32_t> last = 0;
    thread_number_ = ++last;
    return thread_number_;
}

void record_lock::wait_for(std::uint32_t self) {
    constexpr int spins_before_yield = 64;
    int spins = 0;
    std::uint32_t free = 0;
    while (!owner_.compare_exchange_weak(free, self, std::memory_order_acquire)) {
        free = 0;
        if (++spins >= spins_before_yield) std::this_thread::yield();
    }
}

}  // namespace vistels
