// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/serial_queue.h"

#include <pthread.h>

#include <utility>

#include "util/wait_watch.h"

namespace vistels {

namespace {

// The queue of this thread went away in its own last piece of work.
thread_local bool is_gone = false;

}  // namespace

serial_queue::serial_queue(std::string name) : name_(std::move(name)), thread_([this] { run(); }) {}

serial_queue::~serial_queue() {
    {
        const std::lock_guard lock(mutex_);
        ending_ = true;
    }
    wake_.notify_all();
    if (thread_.get_id() == std::this_thread::get_id()) {
        is_gone = true;
        thread_.detach();
        return;
    }
    const wait_note note("end of a queue", name_);
    thread_.join();
}

void serial_queue::post(std::function<void()> work) {
    {
        const std::lock_guard lock(mutex_);
        waiting_.push_back(std::move(work));
    }
    wake_.notify_one();
}

void serial_queue::drain() {
    std::unique_lock lock(mutex_);
    if (waiting_.empty() && !working_) return;
    const wait_note note("work of a queue", name_);
    idle_.wait(lock, [this] { return waiting_.empty() && !working_; });
}

void serial_queue::forget_waiting() {
    const std::lock_guard lock(mutex_);
    waiting_.clear();
    if (!working_) idle_.notify_all();
}

void serial_queue::run() {
    pthread_setname_np(pthread_self(), name_.substr(0, 15).c_str());
    std::unique_lock lock(mutex_);
    for (;;) {
        wake_.wait(lock, [this] { return ending_ || !waiting_.empty(); });
        if (waiting_.empty()) return;
        auto work = std::move(waiting_.front());
        waiting_.pop_front();
        working_ = true;
        lock.unlock();
        work();
        work = nullptr;  // what the work held is let go here, not under the lock
        if (is_gone) return;
        lock.lock();
        working_ = false;
        if (waiting_.empty()) idle_.notify_all();
    }
}

}  // namespace vistels
