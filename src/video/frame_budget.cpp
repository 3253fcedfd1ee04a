// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/frame_budget.h"

#include <algorithm>
#include <iterator>
#include <limits>
#include <utility>

namespace vistels {

namespace {

constexpr std::size_t unknown = std::numeric_limits<std::size_t>::max();

}  // namespace

struct frame_budget::holder {
    // Guarded by the budget's mutex.
    std::size_t least = 0;
    std::size_t wanted = unknown;  // until it asks, as much as anybody is kept for it
    std::size_t granted = 0;
    std::size_t held = 0;
    std::size_t told = unknown;  // the last limit

    // Lets disconnect() wait for a call that is under way.
    std::mutex calling;
    std::function<void()> on_change;  // guarded by calling
};

const std::shared_ptr<frame_budget>& frame_budget::of_program() {
    static const auto shared = std::make_shared<frame_budget>();
    return shared;
}

std::size_t frame_budget::held() const {
    const std::lock_guard lock(mutex_);
    return held_;
}

// Grants everybody what he wants, or the highest level at which all fit.
void frame_budget::level() {
    const auto granted_at = [](const holder& one, std::size_t height) {
        return std::max(one.least, std::min(one.wanted, height));
    };
    const auto sum_at = [&](std::size_t height) {
        std::size_t sum = 0;
        for (const auto& one : holders_) sum += granted_at(*one, height);
        return sum;
    };
    std::size_t fits = 0;
    std::size_t too_high = bytes_ + 1;
    while (too_high - fits > 1) {
        const std::size_t middle = fits + (too_high - fits) / 2;
        (sum_at(middle) <= bytes_ ? fits : too_high) = middle;
    }
    for (const auto& one : holders_) one->granted = granted_at(*one, fits);
}

std::size_t frame_budget::limit_of(const holder& asking) const {
    const std::size_t others = held_ - asking.held;
    const std::size_t left = others < bytes_ ? bytes_ - others : 0;
    return std::max(asking.least, std::min(asking.granted, left));
}

// Those that may hold more than they were told, where that was not all they want.
frame_budget::wake_list frame_budget::better_off() {
    wake_list found;
    for (const auto& one : holders_) {
        const std::size_t limit = limit_of(*one);
        if (one->told >= one->wanted || one->told >= limit) continue;
        one->told = limit;
        found.push_back(one);
    }
    return found;
}

// Shares all out anew: those for whom something changed.
frame_budget::wake_list frame_budget::share_out() {
    level();
    wake_list found = better_off();
    std::copy_if(holders_.begin(), holders_.end(), std::back_inserter(found),
                 [](const auto& one) { return one->held > one->granted; });
    return found;
}

void frame_budget::wake(const wake_list& holders) {
    for (const auto& one : holders) {
        const std::lock_guard lock(one->calling);
        if (one->on_change) one->on_change();
    }
}

void frame_budget::count(const std::shared_ptr<holder>& by, std::ptrdiff_t bytes) {
    wake_list found;
    {
        const std::lock_guard lock(mutex_);
        by->held += static_cast<std::size_t>(bytes);
        held_ += static_cast<std::size_t>(bytes);
        if (bytes < 0) found = better_off();
    }
    wake(found);
}

frame_budget::share::share(std::shared_ptr<frame_budget> budget, std::function<void()> on_change)
    : budget_(std::move(budget)),
      holder_(std::make_shared<holder>()),
      pictures_(std::make_shared<picture_pool>(
          [budget = budget_, one = holder_](std::ptrdiff_t bytes) { budget->count(one, bytes); })) {
    wake_list found;
    {
        const std::lock_guard lock(budget_->mutex_);
        budget_->holders_.push_back(holder_);
        found = budget_->share_out();
    }
    wake(found);
    const std::lock_guard lock(holder_->calling);
    holder_->on_change = std::move(on_change);
}

frame_budget::share::~share() {
    disconnect();
    wake_list found;
    {
        const std::lock_guard lock(budget_->mutex_);
        std::erase(budget_->holders_, holder_);
        found = budget_->share_out();
    }
    wake(found);
}

void frame_budget::share::disconnect() {
    const std::lock_guard lock(holder_->calling);
    holder_->on_change = nullptr;
}

void frame_budget::share::ask(std::size_t least, std::size_t wanted) {
    wake_list found;
    {
        const std::lock_guard lock(budget_->mutex_);
        if (holder_->least == least && holder_->wanted == wanted) return;
        holder_->least = least;
        holder_->wanted = wanted;
        found = budget_->share_out();
    }
    std::erase(found, holder_);
    wake(found);
}

std::size_t frame_budget::share::limit() {
    std::size_t limit = 0;
    {
        const std::lock_guard lock(budget_->mutex_);
        limit = budget_->limit_of(*holder_);
        holder_->told = limit;
    }
    pictures_->keep_within(limit);
    return limit;
}

}  // namespace vistels
