// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QSocketNotifier>
#include <functional>
#include <memory>

namespace vistels {

// Turns the signals that ask a program to end (a terminal's interrupt and hang-up, a session's terminate)
// into a call on the main thread, so that what is open is saved and closed. Main thread.
class termination_watch {
  public:
    // Before any other thread begins: these inherit that the signals are held back.
    termination_watch();
    ~termination_watch();
    termination_watch(const termination_watch&) = delete;
    termination_watch& operator=(const termination_watch&) = delete;

    // After the application object was made.
    void start(std::function<void()> asked_to_end);

  private:
    int descriptor_ = -1;
    std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace vistels
