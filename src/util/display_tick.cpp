// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/display_tick.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vistels {

namespace {

constexpr double slowest_screen = 20;
constexpr double fastest_screen = 1000;

}  // namespace

display_tick::~display_tick() {
    if (timer_ != 0) loop_.stop_timer(timer_);
}

void display_tick::set_rate(double hertz) {
    if (!(hertz >= slowest_screen && hertz <= fastest_screen) || 1 / hertz == period_) return;
    period_ = 1 / hertz;
    if (timer_ == 0 && !is_ticking_) return;
    if (timer_ != 0) loop_.stop_timer(std::exchange(timer_, 0));
    begun_ = loop_.time().seconds();
    number_ = 1;
    if (!is_ticking_) schedule();
}

void display_tick::add(tick_task& task) {
    tasks_[static_cast<std::size_t>(task.step_)].push_back(&task);
    if (timer_ != 0 || is_ticking_) return;
    begun_ = loop_.time().seconds();
    number_ = 1;
    schedule();
}

void display_tick::remove(tick_task& task) {
    auto& tasks = tasks_[static_cast<std::size_t>(task.step_)];
    const auto found = std::find(tasks.begin(), tasks.end(), &task);
    if (is_ticking_) {
        *found = nullptr;
        return;
    }
    tasks.erase(found);
    const bool is_idle =
        std::all_of(tasks_.begin(), tasks_.end(), [](const auto& list) { return list.empty(); });
    if (is_idle) loop_.stop_timer(std::exchange(timer_, 0));
}

void display_tick::schedule() {
    const double due = begun_ + static_cast<double>(number_) * period_;
    timer_ = loop_.start_timer(std::max(0.0, due - loop_.time().seconds()), false, [this] { tick(); });
}

void display_tick::tick() {
    timer_ = 0;
    // A loop's timer may be a little early; what is later than the next tick stands for that one.
    const auto passed = static_cast<std::int64_t>(std::floor((loop_.time().seconds() - begun_) / period_));
    number_ = std::max(number_, passed);
    seconds_ = begun_ + static_cast<double>(number_) * period_;
    ++number_;
    is_ticking_ = true;
    std::array<std::size_t, tick_steps> counts{};
    for (std::size_t step = 0; step < tick_steps; ++step) counts[step] = tasks_[step].size();
    for (std::size_t step = 0; step < tick_steps; ++step) {
        for (std::size_t at = 0; at < counts[step]; ++at) {
            const tick_task* const task = tasks_[step][at];
            if (task == nullptr) continue;
            // It may destroy its own task.
            const auto work = task->work_;
            (*work)();
        }
    }
    is_ticking_ = false;
    bool is_idle = true;
    for (auto& list : tasks_) {
        std::erase(list, nullptr);
        is_idle = is_idle && list.empty();
    }
    if (!is_idle) schedule();
}

tick_task::tick_task(display_tick& ticks, tick_step step, std::function<void()> work)
    : ticks_(ticks), step_(step), work_(std::make_shared<const std::function<void()>>(std::move(work))) {}

void tick_task::start() {
    if (std::exchange(runs_, true)) return;
    ticks_.add(*this);
}

void tick_task::stop() {
    if (!std::exchange(runs_, false)) return;
    ticks_.remove(*this);
}

}  // namespace vistels
