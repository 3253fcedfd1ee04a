// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/writer_watch.h"

#include <utility>

#include "app/event/open_event.h"
#include "document/writer_lock.h"
#include "timeline/files/timeline_form.h"
#include "util/wait_watch.h"

namespace vistels {

namespace {

// How often the other program is looked for.
constexpr double watch_seconds = 2;

}  // namespace

void writer_watch::set_event(open_event* event) {
    access_.disconnect();
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
    if (!queue_) queue_ = std::make_unique<serial_queue>("writer watch");
    queue_->forget_waiting();
    queue_->post([this, folder = event_->folder()] {
        const bool is_free = writer_lock::take(folder, timeline_form).ok();
        loop_.post(guard_.guarded([this, folder, is_free] { take_look(folder, is_free); }));
    });
}

void writer_watch::take_look(const std::string& folder, bool is_free) {
    if (!is_free || is_free_ || !is_held_elsewhere() || event_->folder() != folder) return;
    is_free_ = true;
    changed.emit();
}

void writer_watch::try_to_write(bool take_over) {
    if (!event_) return;
    const expected_waits opening("an event opens for changes");
    // A look that is under way holds the other program's place for a moment.
    if (queue_) queue_->drain();
    // What was done is told by the timeline.
    if (event_->try_to_write(take_over)) return;
    follow_access();
    refused.emit();
}

void writer_watch::note_refusal() {
    if (is_read_only()) refused.emit();
}

}  // namespace vistels
