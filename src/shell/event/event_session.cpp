// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/event_session.h"

#include <algorithm>
#include <utility>

#include "logger/press_engine.h"
#include "util/wait_watch.h"

namespace vistels {

event_session::event_session(run_loop& loop) : loop_(loop), notices_(loop) {
    lasting_.push_back(player_.volumes_changed.connect([this] { Q_EMIT facts_changed(); }));
    lasting_.push_back(player_.looping_changed.connect([this] { Q_EMIT facts_changed(); }));
}

event_session::~event_session() {
    close();
    binders_.clear();
}

void event_session::show(std::unique_ptr<open_event> event) {
    close();
    event_ = std::move(event);
    event_->begin();
    reach_ = std::make_unique<event_reach>(*event_);
    pictures_ = std::make_unique<picture_wishes>(*event_);
    connect_event();
    player_.set_event(event_.get());
    notices_.set_event(event_.get());
    for (event_binder* one : binders_.all()) one->show(event_.get());
    pictures_->settle();
    Q_EMIT opened();
    notices_.tell_opening();
    Q_EMIT facts_changed();
}

void event_session::when_saved(std::function<void()> then) {
    when_saved_.disconnect();
    saved_guard_.drop();
    if (!event_) return then();
    event_->playback().pause();
    for (event_binder* one : binders_.all()) one->end_work();
    release_buttons();
    event_->save_soon();
    const auto is_done = [this] { return !event_->has_unsaved_edits() || event_->timeline().is_read_only(); };
    if (is_done()) return then();
    when_saved_ = event_->save_ended.connect([this, is_done, then](const failure& problem) {
        if (!problem && !is_done()) return;
        loop_.post(saved_guard_.guarded(then));
        when_saved_.disconnect();
    });
}

void event_session::close() {
    if (!event_) return;
    when_saved_.disconnect();
    saved_guard_.drop();
    const expected_waits closing("an event is saved and closes");
    event_->playback().pause();
    release_buttons();
    connections_.clear();
    notices_.set_event(nullptr);
    for (event_binder* one : binders_.all()) one->show(nullptr);
    player_.set_event(nullptr);
    pictures_.reset();
    reach_.reset();
    notices_.tell(event_->save_all());
    event_.reset();
    Q_EMIT closed();
}

void event_session::connect_event() {
    const auto tell_facts = [this] { Q_EMIT facts_changed(); };
    connections_.push_back(event_->playback().state_changed.connect(tell_facts));
    connections_.push_back(event_->collection_changed.connect(tell_facts));
    connections_.push_back(event_->undo().changed.connect(tell_facts));
    connections_.push_back(event_->timeline().changed.connect([this](const change_set& change) {
        if (!(change.kinds & (change_set::clips_changed | change_set::live_changed))) return;
        player_.follow_selection();
        Q_EMIT facts_changed();
    }));
}

void event_session::attach(std::unique_ptr<event_binder> one) {
    event_binder& attached = *one;
    binders_.add(std::move(one));
    if (event_) attached.show(event_.get());
}

void event_session::detach(const pane& shown_in) {
    for (event_binder* one : binders_.all()) {
        if (one->shown_in() == &shown_in) return binders_.remove(*one);
    }
}

QString event_session::name() const {
    return event_ ? QString::fromStdString(event_->name()) : QString();
}

std::string event_session::folder() const {
    return event_ ? event_->folder() : std::string();
}

QString event_session::fact() const {
    if (!event_) return {};
    const auto cameras = event_->collection().vistels().size();
    const auto live =
        event_->timeline().timeline().live_clips().size() + event_->logger().unsaved_growing().size();
    QString fact = cameras == 1 ? tr("1 camera") : tr("%1 cameras").arg(cameras);
    if (cameras == 0) fact = event_->has_collection() ? tr("No camera") : tr("No pictures");
    if (live > 0) return fact + (live == 1 ? tr(" · 1 live clip") : tr(" · %1 live clips").arg(live));
    const auto clips = event_->timeline().timeline().clip_count();
    return fact + (clips == 1 ? tr(" · 1 clip") : tr(" · %1 clips").arg(clips));
}

bool event_session::has_all_pictures() const {
    return event_ && std::all_of(binders_.all().begin(), binders_.all().end(),
                                 [](const event_binder* one) { return one->is_complete(); });
}

void event_session::keep_volumes() {
    if (!event_) return;
    notices_.tell(player_.keep_volumes());
    Q_EMIT application_volume_chosen(event_->application_volume());
}

void event_session::choose_pitch(pitch_algorithm pitch) {
    if (!event_) return;
    notices_.tell(event_->choose_pitch(pitch));
    Q_EMIT pitch_chosen(pitch);
}

void event_session::take_pitch(pitch_algorithm pitch) {
    if (!event_) return;
    event_->playback().set_pitch(pitch);
    Q_EMIT facts_changed();
}

void event_session::set_shows_health(bool shows) {
    if (shows == shows_health_) return;
    shows_health_ = shows;
    Q_EMIT shows_health_changed(shows);
}

void event_session::set_sound_vistel(const std::string& vistel) {
    if (event_) notices_.tell(event_->set_sound_vistel(vistel));
}

void event_session::save() {
    if (event_) event_->save_soon();
}

void event_session::save_in_background() {
    if (event_) event_->timeline().save_soon();
}

void event_session::release_buttons() {
    if (!event_) return;
    for (event_binder* one : binders_.all()) one->let_go();
    event_->logger().release_all(event_->playback().collection_time());
}

}  // namespace vistels
