// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <utility>

#include "util/record_lock.h"

namespace vistels {

// What the records share: the lock `lk`, taken for one read or write of a field and let go at once. A copy of
// a record has a lock of its own.
class record {
  protected:
    template <class Field>
    Field read(const Field& field) const {
        const record_guard guard(lk);
        return field;
    }
    template <class Field>
    void write(Field& field, Field value) const {
        const record_guard guard(lk);
        field = std::move(value);
    }

    // For marks that a walk over all records reads without their locks: written under `lk` like the rest.
    template <class Mark>
    void write_mark(Mark& mark, Mark value) const {
        const record_guard guard(lk);
        std::atomic_ref<Mark>(mark).store(value, std::memory_order_relaxed);
    }
    template <class Mark>
    static Mark peek(Mark& mark) {
        return std::atomic_ref<Mark>(mark).load(std::memory_order_relaxed);
    }

    mutable record_lock lk;
};

}  // namespace vistels
