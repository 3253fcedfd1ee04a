// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/job_list.h"

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <utility>

#include "util/job_failures.h"

namespace vistels {

namespace {

constexpr double worth_showing_seconds = 0.5;
constexpr double progress_steps = 1000;
// Before that the speed is not known.
constexpr double least_measured_seconds = 2;
constexpr double least_measured_progress = 0.01;
constexpr int niceness = 10;

// From 0 to 1, whatever a work tells.
double share_of(double fraction) {
    return fraction > 0 ? std::min(fraction, 1.0) : 0;
}

bool share_a_key(const job_order& one, const job_order& other) {
    return std::any_of(one.keys.begin(), one.keys.end(), [&](const std::string& key) {
        return std::find(other.keys.begin(), other.keys.end(), key) != other.keys.end();
    });
}

}  // namespace

struct job_list::entry {
    entry(job_list& in, job_id number, job_order what, const job_group& of)
        : list(in),
          alive(in.alive_),
          loop(in.loop_),
          id(number),
          order(std::move(what)),
          group(&of),
          work([this](double fraction) { tell_progress(fraction); }) {}

    // On the job's thread. The main thread is told once for all that happened since it looked.
    void tell_progress(double fraction) {
        const int now_at = static_cast<int>(share_of(fraction) * progress_steps);
        if (told.exchange(now_at) == now_at || telling.exchange(true)) return;
        loop.post([weak = alive, this] {
            // As long as the list is there, so is this: it is let go behind what was posted before.
            if (weak.expired()) return;
            telling = false;
            if (!has_ended) list.progressed.emit(id);
        });
    }

    job_list& list;
    const std::weak_ptr<bool> alive;
    run_loop& loop;
    const job_id id;
    job_order order;
    const job_group* group;  // null: it was given up
    job_status::state now = job_status::state::waiting;
    bool lasts = false;
    bool has_ended = false;  // and is listed no more; it has its keys and its thread until it is let go
    double begun_seconds = 0;
    run_loop::timer_id timer = 0;
    std::optional<std::size_t> thread;
    std::atomic<bool> has_made = false;  // something that is not used yet
    std::atomic<int> told = 0;           // thousandths
    std::atomic<bool> telling = false;   // posted
    job work;
};

job_list::job_list(run_loop& loop, std::size_t most_at_once)
    : loop_(loop), at_work_(std::max<std::size_t>(most_at_once, 1)), threads_(at_work_.size()) {}

job_list::~job_list() {
    alive_.reset();
    for (const auto& one : entries_) {
        one->work.cancel();
        if (one->timer) loop_.stop_timer(one->timer);
    }
    threads_.clear();
    for (const auto& one : entries_) {
        if (one->has_made && one->order.discard) one->order.discard();
    }
}

std::vector<job_status> job_list::jobs() const {
    std::vector<job_status> all;
    for (const auto& one : entries_) {
        if (!one->has_ended) all.push_back(status_of(*one));
    }
    return all;
}

std::optional<job_status> job_list::find(job_id id) const {
    for (const auto& one : entries_) {
        if (one->id == id && !one->has_ended) return status_of(*one);
    }
    return std::nullopt;
}

std::optional<job_status> job_list::holder(const std::string& key) const {
    for (const auto& one : entries_) {
        const auto& keys = one->order.keys;
        if (std::find(keys.begin(), keys.end(), key) != keys.end()) return status_of(*one);
    }
    return std::nullopt;
}

job_status job_list::status_of(const entry& one) const {
    job_status status{one.id, one.order.title, one.order.words, one.now, share_of(one.work.progress()),
                      {},     one.lasts};
    const double taken = loop_.time().seconds() - one.begun_seconds;
    if (one.now == job_status::state::running && taken >= least_measured_seconds &&
        status.progress >= least_measured_progress) {
        status.seconds_left = taken * (1 - status.progress) / status.progress;
    }
    return status;
}

job_list::job_id job_list::start(job_order order, const job_group& group) {
    const auto made = std::make_shared<entry>(*this, ++last_id_, std::move(order), group);
    made->timer = loop_.start_timer(worth_showing_seconds, false, [this, one = made.get()] {
        one->timer = 0;
        one->lasts = true;
        changed.emit();
    });
    entries_.push_back(made);
    changed.emit();
    begin_waiting();
    return made->id;
}

void job_list::cancel(job_id id) {
    for (const auto& one : std::vector(entries_)) {
        if (one->id == id) cancel(one);
    }
}

void job_list::cancel_all() {
    for (const auto& one : std::vector(entries_)) cancel(one);
}

void job_list::cancel(const entry_pointer& one) {
    if (one->has_ended || one->now == job_status::state::stopping) return;
    one->work.cancel();
    if (std::exchange(one->now, job_status::state::stopping) == job_status::state::waiting) {
        loop_.post([this, weak = std::weak_ptr(alive_), one] {
            if (!weak.expired()) finish(one, job_was_cancelled());
        });
    }
    changed.emit();
}

void job_list::give_up(const job_group& group) {
    for (const auto& one : std::vector(entries_)) {
        if (one->group != &group) continue;
        one->group = nullptr;
        one->order.then = {};
        one->order.begin = {};
        cancel(one);
    }
}

// One that waits keeps its place before those after it that need the same.
job_list::entry_pointer job_list::next_to_begin() const {
    if (std::find(at_work_.begin(), at_work_.end(), nullptr) == at_work_.end()) return nullptr;
    for (auto one = entries_.begin(); one != entries_.end(); ++one) {
        const bool may_begin = (*one)->now == job_status::state::waiting &&
                               std::none_of(entries_.begin(), one, [&](const auto& before) {
                                   return share_a_key(before->order, (*one)->order);
                               });
        if (may_begin) return *one;
    }
    return nullptr;
}

void job_list::begin_waiting() {
    while (const entry_pointer one = next_to_begin()) {
        const auto free = std::find(at_work_.begin(), at_work_.end(), nullptr);
        *free = one.get();
        one->thread = static_cast<std::size_t>(free - at_work_.begin());
        one->now = job_status::state::running;
        one->begun_seconds = loop_.time().seconds();
        loop_.post([this, weak = std::weak_ptr(alive_), one] {
            if (!weak.expired()) run(one);
        });
        changed.emit();
    }
}

void job_list::run(const entry_pointer& one) {
    if (one->work.is_cancelled()) return finish(one, job_was_cancelled());
    const auto begun = one->order.begin ? one->order.begin() : result<void>();
    if (!begun) return finish(one, begun);
    auto& thread = threads_[*one->thread];
    if (!thread) {
        thread = std::make_unique<serial_queue>("job");
        // What is played and coded goes first. It holds for the threads that the work makes, too.
        thread->post([] { ::setpriority(PRIO_PROCESS, static_cast<id_t>(::gettid()), niceness); });
    }
    thread->post([this, one] {
        auto outcome = one->order.work(one->work);
        one->has_made = outcome.ok();
        if (outcome && one->work.is_cancelled() && one->order.discard) {
            one->order.discard();
            one->has_made = false;
            outcome = job_was_cancelled();
        }
        one->loop.post([this, one, outcome] {
            if (!one->alive.expired()) finish(one, outcome);
        });
    });
}

void job_list::finish(const entry_pointer& one, const result<void>& outcome) {
    one->has_ended = true;
    if (one->timer) loop_.stop_timer(std::exchange(one->timer, 0));
    changed.emit();
    const auto then = std::exchange(one->order.then, {});
    const bool is_used = then && then(outcome, one->work.is_cancelled());
    if (is_used) one->has_made = false;
    if (!one->has_made || !one->order.discard) return let_go(one);
    threads_[*one->thread]->post([this, one] {
        one->order.discard();
        one->has_made = false;
        one->loop.post([this, one] {
            if (!one->alive.expired()) let_go(one);
        });
    });
}

void job_list::let_go(const entry_pointer& one) {
    if (one->thread) at_work_[*one->thread] = nullptr;
    std::erase(entries_, one);
    begin_waiting();
}

std::vector<job_status> job_group::unfinished() const {
    std::vector<job_status> all;
    for (const auto& one : list_.entries_) {
        const bool is_mine = one->group == this && !one->has_ended;
        if (is_mine && one->now != job_status::state::stopping) all.push_back(list_.status_of(*one));
    }
    return all;
}

bool job_group::has(const std::string& what) const {
    return std::any_of(list_.entries_.begin(), list_.entries_.end(), [&](const auto& one) {
        return one->group == this && !one->has_ended && one->order.what == what;
    });
}

void job_group::cancel_all() {
    for (const auto& one : std::vector(list_.entries_)) {
        if (one->group == this) list_.cancel(one);
    }
}

}  // namespace vistels
