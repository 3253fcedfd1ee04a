// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>

namespace vistels {

// How far the work of another thread has come.
struct work_progress {
    std::uint64_t done = 0;  // pieces of work that have ended
    bool is_busy = false;    // it is at the next one

    bool operator==(const work_progress&) const = default;
};

// Tells from looks at that progress whether a thread answers, or hangs at one piece of work: on a volume that
// does not come back, in a decoder. Seconds are those of any one clock. One thread.
class answer_watch {
  public:
    static constexpr double patience_seconds = 5;   // at one piece: it does not answer
    static constexpr double closing_seconds = 0.5;  // at one piece: nobody who closes waits for it
    static constexpr double try_anew_seconds = 10;  // from one try to the next

    void look(work_progress progress, double now);
    // As of the last look; false from the moment that patience ends until another piece of work has ended.
    bool answers() const { return !lost_; }
    bool is_slow() const { return slow_; }
    // Whether another try is due; the tries are counted from the moment that it stopped answering.
    bool should_try(double now) const;
    // Another thread tries. Until it has ended a piece of work nothing answers.
    void try_anew(double now);

  private:
    work_progress seen_;
    double seen_since_ = 0;
    bool slow_ = false;
    bool lost_ = false;
    std::uint64_t done_when_lost_ = 0;
    double tried_ = 0;
};

}  // namespace vistels
