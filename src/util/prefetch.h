// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

// Asks memory for what lies at `address`, to be looked at soon; nothing happens when it is never looked at.
inline void prefetch(const void* address) {
#if defined(__GNUC__)
    __builtin_prefetch(address);
    // Without a visible effect a function that only prefetches would be taken for one that does nothing.
    asm volatile("");
#else
    (void)address;
#endif
}

}  // namespace vistels
