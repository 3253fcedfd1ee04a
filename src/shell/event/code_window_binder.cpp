// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/code_window_binder.h"

#include <utility>

#include "app/event/open_event.h"
#include "shell/event/event_notices.h"
#include "shell/event/event_session.h"
#include "shell/event/pane_tick.h"
#include "shell/event/read_only_guard.h"
#include "shell/panes/code_window/code_window_view.h"

namespace vistels {

code_window_binder::code_window_binder(code_window_view& view, event_session& session)
    : view_(view), session_(session) {}

code_window_binder::~code_window_binder() = default;

pane* code_window_binder::shown_in() {
    return &view_;
}

void code_window_binder::let_go() {
    view_.release_mouse();
}

void code_window_binder::show(open_event* event) {
    tick_.reset();
    access_changed_.disconnect();
    event_ = event;
    if (!event) return view_.set_source(nullptr);
    access_changed_ = event->timeline().access_changed.connect([this] { show_buttons(); });
    show_buttons();
    view_.set_name(session_.name());
    tick_ = std::make_unique<pane_tick>(*event, session_.player(), [this] { view_.tick(); });
}

void code_window_binder::show_buttons() {
    auto buttons = source_of(event_->logger(), event_->timeline(), event_->playback());
    if (event_->timeline().is_read_only()) {
        buttons = refusing(std::move(buttons), [&notices = session_.notices()](const QString& button) {
            notices.refuse_press(button);
        });
    }
    view_.set_source(std::move(buttons));
}

}  // namespace vistels
