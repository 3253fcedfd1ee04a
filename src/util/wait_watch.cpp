// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/wait_watch.h"

#include <unistd.h>

#include <array>
#include <atomic>

#include "util/clock.h"

namespace vistels {

namespace {

std::atomic<wait_watch*> listening{nullptr};
thread_local const char* expected_on_this_thread = nullptr;

}  // namespace

wait_note::wait_note(const char* call, const std::string* path, int descriptor)
    : call_(call), path_(path), descriptor_(descriptor), expected_(expected_on_this_thread) {
    wait_watch* const watch = listening.load(std::memory_order_acquire);
    if (!watch) return;
    watch->begins(*this);
    begun_ = steady_clock().seconds();
}

wait_note::~wait_note() {
    wait_watch* const watch = begun_ == 0 ? nullptr : listening.load(std::memory_order_acquire);
    if (watch) watch->ended(*this, steady_clock().seconds() - begun_);
}

std::string wait_note::subject() const {
    if (path_) return *path_;
    if (descriptor_ < 0) return {};
    std::array<char, 4096> path{};
    const std::string link = "/proc/self/fd/" + std::to_string(descriptor_);
    const ssize_t length = ::readlink(link.c_str(), path.data(), path.size());
    return length > 0 ? std::string(path.data(), static_cast<std::size_t>(length)) : std::string();
}

expected_waits::expected_waits(const char* why) : before_(expected_on_this_thread) {
    expected_on_this_thread = why;
}

expected_waits::~expected_waits() {
    expected_on_this_thread = before_;
}

void wait_watch::listen(wait_watch* watch) {
    listening.store(watch, std::memory_order_release);
}

}  // namespace vistels
