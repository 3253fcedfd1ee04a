// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <sanitizer/allocator_interface.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>

// Counts what the heap gives out, by whichever way it is asked for (operator new, malloc in a library). Each
// block counts as what a usual heap takes for it: its size and eight bytes, in steps of sixteen. One thread.
namespace vistels::fuzz {

inline std::size_t allocated_now = 0;
inline std::size_t allocated_most = 0;

inline std::size_t taken_for(std::size_t size) {
    constexpr std::size_t smallest = 32;
    return std::max(smallest, (size + 8 + 15) / 16 * 16);
}

// Once, before anything is counted.
inline void count_allocations() {
    const auto given = [](const volatile void*, std::size_t size) {
        allocated_now += taken_for(size);
        allocated_most = std::max(allocated_most, allocated_now);
    };
    const auto returned = [](const volatile void* block) {
        if (block) allocated_now -= taken_for(__sanitizer_get_allocated_size(block));
    };
    if (__sanitizer_install_malloc_and_free_hooks(given, returned) == 0) std::abort();
}

// What reading a file of whatever kind may take of its size, and beside that: a parser's buffers, blocks of
// memory that are not yet full.
inline constexpr std::size_t most_times = 64;
inline constexpr std::size_t most_times_of_journal =
    72;  // whose line is there as it was read, beside its edit
inline constexpr std::size_t constant_bytes = 512 * 1024;

// Runs `work` on an input of `size` bytes. When it held more at any moment, tells so under the name `what`,
// and is false. `times` is for what takes more of its input than a file does.
template <class Work>
bool is_lean(std::size_t size, const char* what, Work work, std::size_t times = most_times) {
    const std::size_t before = allocated_now;
    allocated_most = before;
    work();
    const std::size_t used = allocated_most - before;
    if (used <= times * size + constant_bytes) return true;
    std::fprintf(stderr, "%s took %zu bytes for an input of %zu: %.1f times\n", what, used, size,
                 static_cast<double>(used) / static_cast<double>(size));
    return false;
}

}  // namespace vistels::fuzz
