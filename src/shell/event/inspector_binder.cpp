// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/inspector_binder.h"

#include "app/event/open_event.h"
#include "shell/event/binder_list.h"
#include "shell/event/event_notices.h"
#include "shell/event/event_session.h"
#include "shell/event/filter_control.h"
#include "shell/event/timeline_binder.h"
#include "shell/panes/inspector/inspector_view.h"
#include "shell/panes/timeline/timeline_view.h"

namespace vistels {

inspector_binder::inspector_binder(inspector_view& view, event_session& session)
    : view_(view), session_(session) {
    connect(&view_, &inspector_view::failed, this,
            [&session](const QString& why) { session.notices().refuse_change(why); });
    connect(&view_, &inspector_view::play_asked, this,
            [this] { followed_ ? followed_->play_selected() : session_.player().play_clip(); });
    panes_changed_ = session.binders().changed.connect([this] { follow_timeline(); });
    follow_timeline();
}

inspector_binder::~inspector_binder() {
    view_.set_filter(nullptr);
}

pane* inspector_binder::shown_in() {
    return &view_;
}

void inspector_binder::show(open_event* event) {
    event_ = event;
    show_view();
}

void inspector_binder::show_view() {
    if (!event_) return view_.set_view(nullptr, {});
    clip_view* const shown = followed_ ? followed_->shown() : &event_->view();
    view_.set_view(shown, [&playback = event_->playback()] { return playback.collection_time(); });
}

void inspector_binder::follow_timeline() {
    auto* now = session_.binders().current<timeline_binder>();
    if (now == followed_) return;
    followed_ = now;
    following_ = std::make_unique<QObject>();
    shown_changed_.disconnect();
    view_.set_filter(now ? &now->filter_text() : nullptr);
    if (now) shown_changed_ = now->shown_changed.connect([this] { show_view(); });
    show_view();
    if (!now) return;
    filter_control* filter = &now->filter();
    const auto show_filter = [this, filter] { view_.show_filter(filter->is_on(), filter->hides()); };
    connect(filter, &filter_control::verdicts_changed, following_.get(), show_filter);
    connect(&now->view(), &timeline_view::selection_changed, following_.get(), [this] { view_.refresh(); });
    show_filter();
    view_.refresh();
}

}  // namespace vistels
