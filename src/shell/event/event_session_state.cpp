// SPDX-License-Identifier: GPL-3.0-or-later
// What lasts in a session: a timeline that can only be read, a clock without pictures.
#include <algorithm>
#include <cmath>

#include "shell/event/event_session.h"
#include "shell/event/read_only_guard.h"
#include "shell/panes/code_window/code_window_view.h"
#include "shell/panes/collection/collection_pane.h"
#include "shell/panes/collection/transport_bar.h"
#include "shell/panes/timeline/timeline_view.h"
#include "video/synchronised_playback.h"

namespace vistels {

namespace {

// By so much the range of a clock without pictures grows, so that what is shown does not move all the time.
constexpr double end_step_seconds = 60;

}  // namespace

void event_session::save_in_background() {
    if (event_) event_->timeline().save_soon();
}

void event_session::show_buttons() {
    if (!event_) return;
    auto buttons = source_of(event_->logger(), event_->timeline(), event_->playback());
    if (event_->timeline().is_read_only()) {
        buttons =
            refusing(std::move(buttons), [this](const QString& button) { notices_.refuse_press(button); });
    }
    panes_.code->set_source(std::move(buttons));
}

void event_session::show_access() {
    read_only_->show_access(notices_.access());
    show_buttons();
}

double event_session::shown_end() const {
    const double last = std::max(event_->end_seconds(), event_->timeline().timeline().last_end());
    if (!event_->runs_on_clock()) return last;
    return std::max(1.0, std::ceil(last / end_step_seconds)) * end_step_seconds;
}

// Where there are no pictures the event is as long as what was coded, or as the clock has run.
void event_session::follow_end(double seconds) {
    const double end = shown_end();
    if (end <= end_shown_ && seconds <= end_shown_) return;
    end_shown_ = end;
    panes_.collection->bar().set_range(event_->start_seconds(), end);
    panes_.timeline->set_reach(event_->start_seconds(), end);
}

}  // namespace vistels
