// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/writer_watch.h"

#include <utility>

#include "app/event/open_event.h"
#include "document/writer_lock.h"
#include "timeline/files/timeline_form.h"

namespace vistels {

namespace {

// How often the other program is looked for.
constexpr double watch_seconds = 2;

}  // namespace

void writer_watch::set_event(open_event* event) {
    access_.disconnect();
    queue_.reset();  // what it reads belongs to the event
    guard_.drop();
    is_trying_ = false;
    event_ = event;
    if (event_) access_ = event_->timeline().access_changed.connect([this] { follow_access(); });
    follow_access();
}

bool writer_watch::is_read_only() const {
    return event_ && event_->timeline().is_read_only();
}

failure writer_watch::reason() const {
    return is_read_only() ? event_->timeline().read_only_reason() : failure();
}

bool writer_watch::is_held_elsewhere() const {
    return event_ && event_->timeline().is_held_elsewhere();
}

void writer_watch::follow_access() {
    if (timer_ != 0) loop_.stop_timer(std::exchange(timer_, 0));
    is_free_ = false;
    if (is_read_only()) timer_ = loop_.start_timer(watch_seconds, true, [this] { look(); });
    changed.emit();
}

void writer_watch::look() {
    if (is_free_ || !is_held_elsewhere()) return;
    if (is_trying_) return;
    ask_queue([this, folder = event_->folder()] {
        const bool is_free = writer_lock::take(folder, timeline_form).ok();
        loop_.post(guard_.guarded([this, folder, is_free] { take_look(folder, is_free); }));
    });
}

void writer_watch::take_look(const std::string& folder, bool is_free) {
    if (!is_free || is_free_ || !is_held_elsewhere() || event_->folder() != folder) return;
    is_free_ = true;
    changed.emit();
}

// What waits there is not wanted any more.
void writer_watch::ask_queue(std::function<void()> work) {
    if (!queue_) queue_ = std::make_unique<serial_queue>("writer watch");
    queue_->forget_waiting();
    queue_->post(std::move(work));
}

// Behind a look that is under way, which holds the other program's place for a moment.
void writer_watch::try_to_write(bool take_over) {
    if (!event_ || is_trying_) return;
    is_trying_ = true;
    ask_queue([this, event = event_, take_over] {
        event->prepare_to_write(take_over);
        loop_.post(guard_.guarded([this] { take_try(); }));
    });
}

void writer_watch::take_try() {
    is_trying_ = false;
    // What was done is told by the timeline.
    if (event_->write_prepared()) return;
    follow_access();
    refused.emit();
}

void writer_watch::note_refusal() {
    if (is_read_only()) refused.emit();
}

}  // namespace vistels
