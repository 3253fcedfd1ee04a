// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/event_reader.h"

#include <utility>

#include "util/wait_watch.h"

namespace vistels {

// `event` and `found` are set on the queue, before the main thread is told.
struct event_reader::request {
    // One that was given up is destroyed on the queue; this is for one that is told of when the reader is
    // gone.
    ~request() {
        const expected_waits closing("an event that nobody waits for any more is given back");
        event = std::unique_ptr<open_event>();
    }

    std::function<void(request&)> work;
    event_taker take_event;
    std::function<void(result<std::string>)> take_found;
    result<std::unique_ptr<open_event>> event = std::unique_ptr<open_event>();
    result<std::string> found = std::string();
};

event_reader::~event_reader() {
    const expected_waits closing("an event is being read when its window goes");
    queue_.reset();
}

void event_reader::read(const std::string& folder, const home_places& places, event_taker then) {
    if (running_ && coming_ == folder) {
        running_->take_event = std::move(then);
        return;
    }
    auto one = std::make_shared<request>();
    one->take_event = std::move(then);
    one->work = [folder, places, &loop = loop_](request& own) {
        own.event = open_event::read(folder, places, loop);
    };
    coming_ = folder;
    start(std::move(one));
}

void event_reader::find(finder find, std::function<void(result<std::string>)> then) {
    auto one = std::make_shared<request>();
    one->take_found = std::move(then);
    one->work = [find = std::move(find)](request& own) { own.found = find(); };
    coming_.clear();
    start(std::move(one));
}

void event_reader::cancel() {
    coming_.clear();
    running_.reset();
}

void event_reader::give_back(std::unique_ptr<open_event> event) {
    if (!event) return;
    auto one = std::make_shared<request>();
    one->event = std::move(event);
    queue_->post([one] { one->event = std::unique_ptr<open_event>(); });
}

void event_reader::start(std::shared_ptr<request> one) {
    running_ = one;
    if (!is_queue_busy_) post(std::move(one));
}

void event_reader::post(std::shared_ptr<request> one) {
    is_queue_busy_ = true;
    queue_->post([this, one = std::move(one)]() mutable {
        one->work(*one);
        loop_.post(guard_.guarded([this, one = std::move(one)] { finish(one); }));
    });
}

void event_reader::finish(const std::shared_ptr<request>& one) {
    is_queue_busy_ = false;
    if (one != running_) {
        if (one->event) give_back(std::move(one->event).value());
        if (running_) post(running_);
        return;
    }
    running_.reset();
    coming_.clear();
    if (one->take_found) return one->take_found(std::move(one->found));
    one->take_event(std::move(one->event));
}

}  // namespace vistels
