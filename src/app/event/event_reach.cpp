// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/event_reach.h"

#include <algorithm>
#include <cmath>

#include "app/event/open_event.h"

namespace vistels {

namespace {

// By so much the range of a clock without pictures grows.
constexpr double end_step_seconds = 60;

}  // namespace

event_reach::event_reach(open_event& event)
    : event_(event),
      now_(read()),
      task_(event.playback().ticks(), tick_step::views, [this] { follow_clock(); }) {
    synchronised_playback& playback = event.playback();
    connections_.push_back(playback.state_changed.connect([this] { refresh(); }));
    connections_.push_back(playback.pictures_changed.connect([this] { follow_clock(); }));
    connections_.push_back(event.collection_changed.connect([this] { refresh(); }));
    connections_.push_back(event.timeline().changed.connect([this](const change_set& change) {
        if (change.kinds & (change_set::clips_changed | change_set::live_changed)) follow_clock();
    }));
    refresh();
}

event_reach::range event_reach::read() const {
    const double pictures = event_.end_seconds();
    const double last = std::max(pictures, event_.last_clip_end_seconds());
    if (!event_.runs_on_clock()) return {event_.start_seconds(), last, pictures};
    const double end = std::max(1.0, std::ceil(last / end_step_seconds)) * end_step_seconds;
    return {event_.start_seconds(), end, end};
}

void event_reach::refresh() {
    task_.set_running(event_.runs_on_clock() && event_.playback().is_playing());
    now_ = read();
    changed.emit();
}

// It only grows by that.
void event_reach::follow_clock() {
    if (!event_.runs_on_clock()) return;
    const range wanted = read();
    if (wanted.end <= now_.end) return;
    now_ = wanted;
    changed.emit();
}

}  // namespace vistels
