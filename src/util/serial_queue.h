// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace vistels {

// Runs pieces of work one after another on a thread of its own, in the order posted.
// Any thread may post; destruction waits for what was posted, but in the last piece of work itself.
class serial_queue {
  public:
    // `name` is shown by debuggers (at most 15 characters are kept).
    explicit serial_queue(std::string name);
    ~serial_queue();
    serial_queue(const serial_queue&) = delete;
    serial_queue& operator=(const serial_queue&) = delete;

    void post(std::function<void()> work);

    // Waits until everything posted before this call is done. Not from work on the queue itself.
    void drain();

    // Forgets work that has not begun.
    void forget_waiting();

  private:
    void run();

    const std::string name_;
    std::mutex mutex_;
    std::condition_variable wake_;
    std::condition_variable idle_;
    std::deque<std::function<void()>> waiting_;
    bool working_ = false;
    bool ending_ = false;
    std::thread thread_;
};

}  // namespace vistels
