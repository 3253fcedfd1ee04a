// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <atomic>
#include <functional>
#include <utility>

namespace vistels {

// The hold on a piece of long work from outside: progress is reported by the worker, cancelling is asked for
// by anyone. Every member may be called from any thread.
class job {
  public:
    job() = default;
    // `on_progress` gets the fraction done (0 to 1) on the worker's thread.
    explicit job(std::function<void(double)> on_progress) : on_progress_(std::move(on_progress)) {}

    void cancel() { cancelled_ = true; }
    bool is_cancelled() const { return cancelled_; }
    double progress() const { return progress_; }

    void set_progress(double fraction) {
        progress_ = fraction;
        if (on_progress_) on_progress_(fraction);
    }

  private:
    std::atomic<bool> cancelled_ = false;
    std::atomic<double> progress_ = 0;
    std::function<void(double)> on_progress_;
};

}  // namespace vistels
