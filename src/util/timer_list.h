// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "util/run_loop.h"

namespace vistels {

// The timers of a run loop, by due time on the loop's clock; timers due at one moment run in the order in
// which they were started. Main thread only.
class timer_list {
  public:
    run_loop::timer_id start(double now, double delay_seconds, bool repeat, std::function<void()> work) {
        const run_loop::timer_id id = ++last_id_;
        const double delay = delay_seconds > 0 ? delay_seconds : 0;
        entry made{repeat ? delay : -1, std::make_shared<std::function<void()>>(std::move(work))};
        timers_.emplace(place{now + delay, id}, std::move(made));
        return id;
    }

    void stop(run_loop::timer_id id) {
        std::erase_if(timers_, [id](const auto& timer) { return timer.first.second == id; });
    }

    std::optional<double> next_due() const {
        return timers_.empty() ? std::nullopt : std::optional(timers_.begin()->first.first);
    }

    // Runs the first timer when it is due by `now`; false when none is. A repeating timer that fell behind is
    // next due one interval from now.
    bool run_one(double now) {
        if (timers_.empty() || timers_.begin()->first.first > now) return false;
        const auto first = timers_.begin();
        const auto [due, id] = first->first;
        const entry timer = first->second;
        timers_.erase(first);
        if (timer.interval >= 0) {
            const double next = due + timer.interval > now ? due + timer.interval : now + timer.interval;
            timers_.emplace(place{next, id}, timer);
        }
        (*timer.work)();
        return true;
    }

  private:
    using place = std::pair<double, run_loop::timer_id>;
    struct entry {
        double interval;  // seconds; negative: runs once
        std::shared_ptr<std::function<void()>> work;
    };

    std::map<place, entry> timers_;
    run_loop::timer_id last_id_ = 0;
};

}  // namespace vistels
