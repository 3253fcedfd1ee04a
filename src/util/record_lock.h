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
    record_lock(const record_lock&) {}
    record_lock& operator=(const record_lock&) { return *this; }

    void lock();
    void unlock();

  private:
    std::atomic<std::uint32_t> owner_ = 0;  // number of the thread that holds it, 0 when free
    std::uint32_t depth_ = 0;               // guarded by owner_
};

using record_guard = std::lock_guard<record_lock>;

}  // namespace vistels
