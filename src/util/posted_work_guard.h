// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <utility>

namespace vistels {

// A member of what has work posted to a loop or a queue that may come after its owner is gone. What the guard
// has wrapped does nothing from then on, so that it may refer to the owner:
//     loop_.post(guard_.guarded([this] { finish(); }));
// The guard is destroyed, and its work is run, on one thread (for what is posted to a run_loop the main one);
// that is what makes the look at it safe. guarded() may be called on any thread while the guard is there, so
// on a queue of the owner's that is destroyed before the guard: a member after it. A wrapped function holds
// 16 bytes more than its work.
class posted_work_guard {
  public:
    posted_work_guard() = default;
    posted_work_guard(const posted_work_guard&) = delete;
    posted_work_guard& operator=(const posted_work_guard&) = delete;

    // `work`, which is called with whatever the result is called with, as long as the guard is there and
    // drop() was not called since.
    template <class Work>
    auto guarded(Work work) const {
        return [life = std::weak_ptr(life_), work = std::move(work)](auto&&... arguments) mutable {
            if (!life.expired()) work(std::forward<decltype(arguments)>(arguments)...);
        };
    }

    // What was wrapped so far does nothing any more; what is wrapped from now on works. On the thread that
    // destroys the guard, and not while another calls guarded().
    void drop() { life_ = std::make_shared<const char>(); }

  private:
    std::shared_ptr<const char> life_ = std::make_shared<const char>();
};

}  // namespace vistels
