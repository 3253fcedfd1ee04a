// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/timeline_binder.h"

#include <algorithm>
#include <utility>

#include "app/event/event_reach.h"
#include "app/event/open_event.h"
#include "app/settings/settings.h"
#include "logger/press_engine.h"
#include "shell/event/binder_list.h"
#include "shell/event/event_notices.h"
#include "shell/event/event_session.h"
#include "shell/event/filter_control.h"
#include "shell/event/pane_tick.h"
#include "shell/event/read_only_guard.h"
#include "shell/filter/filter_entry.h"
#include "shell/kit/pane_header.h"
#include "shell/panes/timeline/timeline_state.h"
#include "shell/panes/timeline/timeline_view.h"

namespace vistels {

namespace {

trigger_effect effect_of(const trigger_event_ITEM& trigger) {
    const std::string_view type = trigger.trigger_Type.str();
    if (type == going_down_trigger) return trigger_effect::goes_down;
    return type == going_up_trigger ? trigger_effect::goes_up : trigger_effect::none;
}

std::vector<button_trigger> triggers_of(const press_engine& logger) {
    const std::vector<row_pointer> rows = logger.rows_of_all();
    std::vector<button_trigger> all;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const markup_Button_Item& button = *logger.buttons()[i];
        if (!button.has_triggers()) continue;
        const auto look = button.display().button_colour;
        for (const trigger_event_ITEM& trigger : button.triggers()) {
            const auto& colour = trigger.trigger_colour_24 ? trigger.trigger_colour_24 : look;
            all.push_back({rows[i] ? rows[i]->uuid() : shared_text(), QString::fromStdString(button.name()),
                           trigger.trigger_Time, effect_of(trigger),
                           colour ? std::optional(to_qt(*colour)) : std::nullopt});
        }
    }
    return all;
}

}  // namespace

timeline_binder::timeline_binder(timeline_view& view, event_session& session, const home_places& places)
    : view_(view),
      session_(session),
      read_only_(new read_only_mark(&view)),
      text_(std::make_unique<filter_entry>(places, session.loop())),
      filter_(std::make_unique<filter_control>(view, session.player(), session.loop())) {
    view_.header().add_first_control(read_only_);
    view_.set_filter(text_.get());
    filter_->set_hides(load_filtered_out_clips(places).are_hidden);
    connect_view();
}

timeline_binder::~timeline_binder() {
    view_.set_filter(nullptr);
    delete read_only_;
}

pane* timeline_binder::shown_in() {
    return &view_;
}

void timeline_binder::connect_view() {
    event_notices& notices = session_.notices();
    connect(&view_, &timeline_view::failed, this,
            [&notices](const QString& why) { notices.refuse_change(why); });
    connect(&view_, &timeline_view::selection_changed, this, &timeline_binder::lead_player);
    lasting_.push_back(session_.binders().changed.connect([this] { lead_player(); }));
    connect(&view_, &timeline_view::clear_filter_asked, text_.get(), &filter_entry::clear);
    connect(text_.get(), &filter_entry::failed, this,
            [&notices](const QString& headline, const QString& message) {
                notices.tell_failure(headline, message);
            });
    // Several timelines may show one event, which plays one list of clips at a time.
    connect(filter_.get(), &filter_control::changed, this, [this] {
        const auto all = session_.binders().all_of<timeline_binder>();
        session_.player().set_plays_list(
            std::any_of(all.begin(), all.end(), [](auto* one) { return one->filter().plays_all(); }));
    });
    writer_watch& access = notices.access();
    connect(read_only_, &read_only_mark::try_again_asked, this, [&access] { access.try_to_write(false); });
    lasting_.push_back(access.changed.connect([this, &access] { read_only_->show_access(access); }));
    lasting_.push_back(access.refused.connect([this] { read_only_->flash(); }));
    read_only_->show_access(access);
}

void timeline_binder::show(open_event* event) {
    tick_.reset();
    reach_changed_.disconnect();
    growing_changed_.disconnect();
    buttons_changed_.disconnect();
    rows_changed_.disconnect();
    if (!event) filter_->set_event(nullptr, nullptr);
    if (shown_) session_.player().forget_selection(shown_->selection());
    event_ = event;
    shown_ = event ? take_view() : nullptr;
    view_.set_timeline(shown_, event ? &session_.player().commands() : nullptr);
    text_->set_source(event ? &shown_->filtering() : nullptr, event ? &event->timeline() : nullptr);
    shown_changed.emit();
    if (!event) return own_.reset();
    filter_->set_event(event, shown_);
    reach_changed_ = session_.reach()->changed.connect([this] { show_reach(); });
    show_reach();
    growing_changed_ = event->logger().fired.connect([this](const button_fired&) { show_growing(); });
    show_growing();
    buttons_changed_ = event->logger().buttons_changed.connect([this] { show_triggers(); });
    rows_changed_ = event->timeline().changed.connect([this](const change_set& change) {
        if ((change.kinds & change_set::rows_changed) != 0) show_triggers();
    });
    show_triggers();
    tick_ = std::make_unique<pane_tick>(*event, session_.player(), [this] { view_.tick(); });
}

// The main one, unless another pane shows that.
clip_view* timeline_binder::take_view() {
    for (timeline_binder* one : session_.binders().all_of<timeline_binder>()) {
        if (one == this || one->shown_ != &event_->view()) continue;
        own_ = std::make_unique<clip_view>(event_->timeline(), session_.loop(), view_kind::further);
        return own_.get();
    }
    return &event_->view();
}

// What is selected in the timeline that was used last is played.
void timeline_binder::lead_player() {
    const bool leads = session_.binders().current<timeline_binder>() == this;
    if (leads && shown_) session_.player().follow_selection(shown_->selection());
}

void timeline_binder::show_reach() {
    view_.set_reach(session_.reach()->start(), session_.reach()->pictures_end());
}

// Those that are put on record when they end.
void timeline_binder::show_growing() {
    auto growing = event_->logger().unsaved_growing();
    if (growing.empty() && !shows_growing_) return;
    shows_growing_ = !growing.empty();
    view_.set_unsaved_growing(std::move(growing));
}

// Of the buttons, where their clips go.
void timeline_binder::show_triggers() {
    press_engine& logger = event_->logger();
    const auto has_any = [](const button_record& one) { return one->has_triggers(); };
    const std::vector<button_record>& buttons = logger.buttons();
    std::vector<button_trigger> all;
    if (std::any_of(buttons.begin(), buttons.end(), has_any)) all = triggers_of(logger);
    if (all.empty() && !shows_triggers_) return;
    shows_triggers_ = !all.empty();
    view_.state().set_triggers(std::move(all));
}

void timeline_binder::play_selected() {
    const auto seen = view_.state().selected();
    if (!seen.empty()) return session_.player().play_clip(seen.front());
    const auto all = shown_ ? shown_->selection().clips() : std::vector<clip_place>();
    if (!all.empty()) session_.player().play_clip(all.front().clip->id());
}

void timeline_binder::mark_clip(bool start) {
    if (event_) view_.trim_selected(start, event_->playback().collection_time());
}

}  // namespace vistels
