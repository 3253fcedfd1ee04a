// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// What a piece of work needs in memory: the objects of the program and, where the C library tells it, all
// that is taken from it, so that a C library's share is included. To be included by one file of a program,
// which counts from then on.

#include <malloc.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<std::size_t> objects_in_use = 0;
std::atomic<std::size_t> most_objects = 0;
std::atomic<std::size_t> most_taken = 0;
std::atomic<unsigned> calls = 0;
std::atomic<bool> counting = false;

std::size_t taken() {
    const auto told = mallinfo2();  // nothing but zeros under the address sanitizer
    return told.uordblks + told.hblkhd;
}

void raise(std::atomic<std::size_t>& most, std::size_t now) {
    if (now > most) most = now;
}

void* counted(std::size_t bytes) {
    void* made = std::malloc(bytes == 0 ? 1 : bytes);
    if (!made) std::abort();
    raise(most_objects, objects_in_use += malloc_usable_size(made));
    constexpr std::size_t large = 1 << 14;
    // The first calls count singly: a file that is refused causes no others.
    constexpr unsigned between_looks = 64;
    if (counting && (bytes >= large || ++calls < between_looks || calls % between_looks == 0)) {
        raise(most_taken, taken());
    }
    return made;
}

void uncounted(void* made) noexcept {
    if (!made) return;
    objects_in_use -= malloc_usable_size(made);
    std::free(made);
}

}  // namespace

void* operator new(std::size_t bytes) {
    return counted(bytes);
}
void* operator new[](std::size_t bytes) {
    return counted(bytes);
}
// Libraries use these; left alone they would be the sanitizer's own, whose blocks are not to be freed here.
void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept {
    return counted(bytes);
}
void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept {
    return counted(bytes);
}
void operator delete(void* made, const std::nothrow_t&) noexcept {
    uncounted(made);
}
void operator delete[](void* made, const std::nothrow_t&) noexcept {
    uncounted(made);
}
void operator delete(void* made) noexcept {
    uncounted(made);
}
void operator delete[](void* made) noexcept {
    uncounted(made);
}
void operator delete(void* made, std::size_t) noexcept {
    uncounted(made);
}
void operator delete[](void* made, std::size_t) noexcept {
    uncounted(made);
}

namespace vistels {

// The most bytes that were in use at once during `work`, beyond those before.
template <class Work>
std::size_t most_needed(Work work) {
    const std::size_t objects_before = objects_in_use;
    const std::size_t taken_before = taken();
    most_objects = objects_before;
    most_taken = taken_before;
    calls = 0;
    counting = true;
    work();
    raise(most_taken, taken());
    counting = false;
    return std::max(most_objects - objects_before, most_taken - taken_before);
}

}  // namespace vistels
