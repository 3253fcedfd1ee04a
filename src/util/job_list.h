// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "util/job.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"
#include "util/signal.h"

namespace vistels {

class job_group;

// What a job does and how it is shown.
struct job_order {
    std::string title;  // "Adding movies"
    std::string words;  // what happens meanwhile; may be empty
    // What it needs for itself alone: it waits for those before it that have one of these.
    std::vector<std::string> keys = {};
    // Tells it from others of its group, see job_group::has(); may be empty.
    std::string what = {};

    // When its turn comes, main thread; it may plan what the work is about. A failure ends the job. May be
    // empty.
    std::function<result<void>()> begin = {};
    // On a thread of its own. It refers to nothing that may go before it.
    std::function<result<void>(job&)> work = {};
    // Takes away what the work made when nobody wants it any more: the job was cancelled meanwhile, its group
    // is gone, or `then` had no use for it. On the job's thread, under its keys; may be empty.
    std::function<void()> discard = {};
    // When it has ended, main thread; it is not listed any more then. Its value says whether what the work
    // made is used.
    std::function<bool(const result<void>& outcome, bool cancelled)> then = {};
};

// A job as a list shows it.
struct job_status {
    std::uint64_t id = 0;
    std::string title;
    std::string words;
    enum class state { waiting, running, stopping } now = state::waiting;
    double progress = 0;                 // from 0 to 1
    std::optional<double> seconds_left;  // as long as the rest takes at the speed so far
    bool lasts = false;                  // for half a second by now: worth showing
};

// The jobs of the program: several run at once, each on a thread of its own that leaves the processor to
// others, the rest waits in order. Main thread, except for the works. Jobs are started by a job_group.
class job_list {
  public:
    using job_id = std::uint64_t;  // from 1

    // `loop` must outlive the list.
    explicit job_list(run_loop& loop, std::size_t most_at_once = 3);
    // Cancels all jobs and waits for those that run; `then` is not called any more.
    ~job_list();
    job_list(const job_list&) = delete;
    job_list& operator=(const job_list&) = delete;

    // In the order they were started.
    std::vector<job_status> jobs() const;
    std::optional<job_status> find(job_id id) const;
    // The first job that has this key; nothing when the key is free.
    std::optional<job_status> holder(const std::string& key) const;
    // A job that waits is gone at once; one that runs ends when its work has noticed.
    void cancel(job_id id);
    void cancel_all();

    // A job came or went, began, is being stopped, or became worth showing.
    signal<> changed;
    // How far it is changed by a thousandth or more.
    signal<job_id> progressed;

  private:
    friend job_group;
    struct entry;
    using entry_pointer = std::shared_ptr<entry>;

    job_id start(job_order order, const job_group& group);
    void give_up(const job_group& group);
    void cancel(const entry_pointer& one);
    job_status status_of(const entry& one) const;
    entry_pointer next_to_begin() const;
    void begin_waiting();
    void run(const entry_pointer& one);
    void finish(const entry_pointer& one, const result<void>& outcome);
    void let_go(const entry_pointer& one);

    run_loop& loop_;
    std::vector<entry_pointer> entries_;
    job_id last_id_ = 0;
    std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
    std::vector<const entry*> at_work_;                   // for each thread; null: it is free
    std::vector<std::unique_ptr<serial_queue>> threads_;  // made when first needed
};

// Jobs that belong together: of one event, of one window. Main thread.
class job_group {
  public:
    // `list` must outlive the group.
    explicit job_group(job_list& list) : list_(list) {}
    // Cancels its jobs and does not wait for them; `then` is not called any more.
    ~job_group() { list_.give_up(*this); }
    job_group(const job_group&) = delete;
    job_group& operator=(const job_group&) = delete;

    job_list& list() const { return list_; }
    // `then` and `begin` are never called before this returns.
    job_list::job_id start(job_order order) { return list_.start(std::move(order), *this); }
    // Those of its jobs that are not being stopped.
    std::vector<job_status> unfinished() const;
    // One that was started as `what` is not finished yet.
    bool has(const std::string& what) const;
    void cancel_all();

  private:
    job_list& list_;
};

}  // namespace vistels
