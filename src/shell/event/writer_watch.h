// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "util/failure.h"
#include "util/posted_work_guard.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"
#include "util/signal.h"

namespace vistels {

class open_event;

// Whether the open event can be changed here, and if another program keeps it from that, whether it has let
// go of it since. Everything is harmless while no event is open. Main thread.
class writer_watch {
  public:
    // `loop` must outlive this.
    explicit writer_watch(run_loop& loop) : loop_(loop) {}
    ~writer_watch() { set_event(nullptr); }
    writer_watch(const writer_watch&) = delete;
    writer_watch& operator=(const writer_watch&) = delete;

    // Null: none is open. The event must outlive its use here.
    void set_event(open_event* event);

    bool is_read_only() const;
    // Why, fit for the user; empty while the event can be changed.
    failure reason() const;
    // By a program that is at work on it, or was when it was looked for last.
    bool is_held_elsewhere() const;
    // The other program has closed the event: another try would do.
    bool is_free() const { return is_free_; }

    // Tries again to change the event; with `take_over` it is taken from the program that has it. What has to
    // be read for it is read on the queue; `changed` tells when it can be changed, `refused` when not.
    void try_to_write(bool take_over);
    bool is_trying() const { return is_trying_; }
    // Something was refused just now because the event can only be read.
    void note_refusal();

    signal<> changed;  // whether it can be changed, why not, whether it is free
    signal<> refused;

  private:
    void follow_access();
    void look();
    void ask_queue(std::function<void()> work);
    void take_try();
    void take_look(const std::string& folder, bool is_free);

    run_loop& loop_;
    open_event* event_ = nullptr;
    bool is_free_ = false;
    bool is_trying_ = false;
    run_loop::timer_id timer_ = 0;  // while the event can only be read
    connection access_;
    posted_work_guard guard_;
    std::unique_ptr<serial_queue> queue_;  // made when it is first needed
};

}  // namespace vistels
