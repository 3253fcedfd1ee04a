// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "app/event/open_event.h"
#include "app/settings/places.h"
#include "util/posted_work_guard.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"

namespace vistels {

// Finds and reads events on a queue of its own, so that nobody waits for their volume. What is asked for last
// counts: what is under way then is given up and its outcome told to nobody. Main thread.
class event_reader {
  public:
    // `loop` must outlive the reader.
    explicit event_reader(run_loop& loop) : loop_(loop) {}
    // Waits for what is being read.
    ~event_reader();
    event_reader(const event_reader&) = delete;
    event_reader& operator=(const event_reader&) = delete;

    // Reads the event in `folder`; `then` gets it, to be begun, or why it could not be read. Asked again for
    // the folder that is being read, it goes on with that and calls the new `then`.
    using event_taker = std::function<void(result<std::unique_ptr<open_event>>)>;
    void read(const std::string& folder, const home_places& places, event_taker then);
    // Runs `find` on the queue; `then` gets what it returns.
    using finder = std::function<result<std::string>()>;
    void find(finder find, std::function<void(result<std::string>)> then);
    // An event that was read and is not begun after all: it is closed on the queue.
    void give_back(std::unique_ptr<open_event> event);
    // Gives up what is under way.
    void cancel();

    // The folder that is being read; empty: none.
    const std::string& coming() const { return coming_; }
    bool is_at_work() const { return running_ != nullptr; }

  private:
    struct request;

    void start(std::shared_ptr<request> one);
    void post(std::shared_ptr<request> one);
    void finish(const std::shared_ptr<request>& one);

    run_loop& loop_;
    std::string coming_;
    std::shared_ptr<request> running_;  // what was asked for last
    // One that was read and given up is given back before the next is read, which may be the same event.
    bool is_queue_busy_ = false;
    posted_work_guard guard_;
    std::unique_ptr<serial_queue> queue_ = std::make_unique<serial_queue>("events");
};

}  // namespace vistels
