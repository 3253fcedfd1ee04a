// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

namespace vistels {

// The recursive lock of one record (its field `lk`), held for one read or write of a field. Eight bytes and
// no system call while nobody waits: a timeline has a million of them. A copy of a record gets a lock of its
// own, unlocked.
class record_lock {
  public:
    record_lock() = default;
    record_lock(const record_lock&) noexcept {}
    record_lock& operator=(const record_lock&) noexcept { return *this; }

    void lock() {
        const std::uint32_t self = thread_number_ != 0 ? thread_number_ : give_thread_number();
        std::uint32_t owner = 0;
        if (!owner_.compare_exchange_strong(owner, self, std::memory_order_acquire) && owner != self) {
            wait_for(self);
        }
        ++depth_;
    }
    void unlock() {
        if (--depth_ == 0) owner_.store(0, std::memory_order_release);
    }

  private:
    static std::uint32_t give_thread_number();
    void wait_for(std::uint32_t self);

    static inline thread_local constinit std::uint32_t thread_number_ = 0;  // 0 = not given yet

    std::atomic<std::uint32_t> owner_ = 0;  // number of the thread that holds it, 0 when free
    std::uint32_t depth_ = 0;               // guarded by owner_
};

using record_guard = std::lock_guard<record_lock>;

}  // namespace vistels
