// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/event_session.h"

#include <utility>

#include "logger/press_engine.h"
#include "shell/event/filter_control.h"
#include "shell/event/read_only_guard.h"
#include "shell/filter/filter_entry.h"
#include "shell/keys/key_router.h"
#include "shell/keys/key_strokes.h"
#include "shell/kit/pane_header.h"
#include "shell/kit/refresh_rate.h"
#include "shell/panes/code_window/code_window_view.h"
#include "shell/panes/collection/collection_pane.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/collection/transport_bar.h"
#include "shell/panes/inspector/inspector_view.h"
#include "shell/panes/timeline/timeline_state.h"
#include "shell/panes/timeline/timeline_view.h"
#include "util/file_system.h"
#include "video/synchronised_playback.h"

namespace vistels {

event_session::event_session(event_panes panes, run_loop& loop)
    : panes_(panes),
      loop_(loop),
      notices_(loop),
      pictures_(*panes.collection),
      read_only_(new read_only_mark(panes.timeline)),
      refresh_rate_(new refresh_rate(*panes.collection)),
      filter_(std::make_unique<filter_control>(*panes.timeline, *panes.inspector, loop)) {
    panes_.timeline->header().add_first_control(read_only_);
    connect_panes();
    panes_.collection->bar().setEnabled(false);
}

event_session::~event_session() {
    close();
}

result<void> event_session::open(const std::string& folder, const home_places& places) {
    if (event_ && event_->folder() == folder) return {};
    auto opened_event = open_event::open(folder, places, loop_);
    if (!opened_event) return opened_event.error();
    close();
    event_ = std::move(opened_event).value();
    connect_event();
    Q_EMIT opened();
    notices_.tell_opening();
    Q_EMIT facts_changed();
    return {};
}

void event_session::close() {
    if (!event_) return;
    filter_->set_event(nullptr);
    event_->playback().pause();
    release_buttons();
    connections_.clear();
    notices_.set_event(nullptr);
    panes_.keys->set_code({});
    panes_.code->set_source(nullptr);
    panes_.timeline->set_timeline(nullptr, nullptr);
    panes_.filter->set_source(nullptr, nullptr);
    panes_.inspector->set_document(nullptr, {});
    pictures_.set_event(nullptr);
    panes_.collection->bar().setEnabled(false);
    player_.set_event(nullptr);
    tick_task_.reset();
    notices_.tell(event_->save_all());
    event_.reset();
    Q_EMIT closed();
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
    const auto live = event_->timeline().timeline().live_clips().size();
    QString fact = cameras == 1 ? tr("1 camera") : tr("%1 cameras").arg(cameras);
    if (cameras == 0) fact = event_->has_collection() ? tr("No camera") : tr("No pictures");
    if (live > 0) return fact + (live == 1 ? tr(" · 1 live clip") : tr(" · %1 live clips").arg(live));
    const auto clips = event_->timeline().timeline().clip_count();
    return fact + (clips == 1 ? tr(" · 1 clip") : tr(" · %1 clips").arg(clips));
}

bool event_session::has_all_pictures() const {
    return event_ && pictures_.are_complete();
}

void event_session::connect_panes() {
    connect_transport(panes_.collection->bar());
    connect(refresh_rate_, &refresh_rate::changed, this, [this](double hertz) {
        if (event_) event_->playback().ticks().set_rate(hertz);
    });
    collection_view& view = panes_.collection->view();
    connect(&view, &collection_view::enlarge_asked, this,
            [this](const QString& vistel) { player_.enlarge(vistel.toStdString()); });
    connect(panes_.collection, &collection_pane::all_vistels_asked, this, [this] { player_.enlarge({}); });
    connect(panes_.timeline, &timeline_view::selection_changed, panes_.inspector, &inspector_view::refresh);
    connect(panes_.timeline, &timeline_view::selection_changed, this, [this] { player_.follow_selection(); });
    connect(filter_.get(), &filter_control::changed, this,
            [this] { player_.set_plays_list(filter_->plays_all()); });
    connect(panes_.timeline, &timeline_view::failed, &notices_, &event_notices::refuse_change);
    connect(panes_.inspector, &inspector_view::failed, &notices_, &event_notices::refuse_change);
    connect(read_only_, &read_only_mark::try_again_asked, this,
            [this] { notices_.access().try_to_write(false); });
    lasting_connections_.push_back(notices_.access().changed.connect([this] { show_access(); }));
    lasting_connections_.push_back(notices_.access().refused.connect([this] { read_only_->flash(); }));
    connect(panes_.inspector, &inspector_view::play_asked, this,
            [this](double, double) { play_selected_clip(); });
}

void event_session::connect_transport(transport_bar& bar) {
    const auto on = [&](auto asked, auto does) { connect(&bar, asked, this, does); };
    on(&transport_bar::play_asked, [this] { player_.play_or_pause(); });
    on(&transport_bar::step_asked, [this](int frames) { player_.step(frames); });
    on(&transport_bar::rate_asked, [this](double rate) { player_.set_rate(rate); });
    on(&transport_bar::loop_asked, [this](bool loops) { player_.set_looping(loops); });
    on(&transport_bar::volume_asked, [this](double volume) { player_.set_volume(volume); });
    on(&transport_bar::application_volume_asked,
       [this](double volume) { player_.set_application_volume(volume); });
    on(&transport_bar::volume_chosen, [this] { keep_volumes(); });
    on(&transport_bar::mute_asked, [this](bool mutes) { player_.set_muted(mutes); });
    on(&transport_bar::seek_asked, [this](double seconds, bool) { player_.seek(seconds); });
    lasting_connections_.push_back(player_.sought.connect([this] { tick(); }));
    lasting_connections_.push_back(player_.volumes_changed.connect([this] {
        show_volume();
        Q_EMIT facts_changed();
    }));
    lasting_connections_.push_back(player_.looping_changed.connect([this] { show_state(); }));
    lasting_connections_.push_back(player_.enlarged_changed.connect([this] { show_enlarged(); }));
}

void event_session::connect_event() {
    synchronised_playback& playback = event_->playback();
    timeline_document& timeline = event_->timeline();
    playback.ticks().set_rate(refresh_rate_->hertz());
    tick_task_ = std::make_unique<tick_task>(playback.ticks(), tick_step::views, [this] { tick(); });
    pictures_.set_event(event_.get());
    panes_.timeline->set_timeline(&timeline, &playback);
    notices_.set_event(event_.get());
    panes_.code->set_name(name());
    panes_.inspector->set_document(&timeline, [&playback] { return playback.collection_time(); });
    filter_->set_event(event_.get());
    panes_.filter->set_source(&event_->filtering(), &timeline);
    connect_keys();
    panes_.collection->header().set_name(name());
    connections_.push_back(playback.pictures_changed.connect([this] {
        pictures_.show_pictures();
        if (!tick_task_->is_running()) tick();
    }));
    connections_.push_back(playback.state_changed.connect([this] { show_state(); }));
    connections_.push_back(
        event_->logger().fired.connect([this](const button_fired&) { tick_while_needed(); }));
    connections_.push_back(event_->collection_changed.connect([this] { show_state(); }));
    connections_.push_back(event_->undo().changed.connect([this] { Q_EMIT facts_changed(); }));
    connections_.push_back(timeline.changed.connect([this](const change_set& change) {
        if (!(change.kinds & (change_set::clips_changed | change_set::live_changed))) return;
        player_.follow_selection();
        if (event_->runs_on_clock()) follow_end(event_->playback().collection_time());
        Q_EMIT facts_changed();
    }));
    panes_.collection->bar().setEnabled(true);
    player_.set_event(event_.get());
    show_state();
}

void event_session::connect_keys() {
    press_engine& engine = event_->logger();
    synchronised_playback& playback = event_->playback();
    panes_.keys->set_code({
        [&engine](const QKeyEvent& event) { return engine.buttons_for_key(key_stroke_of(event)); },
        [this, &engine, &playback](const std::string& button, double at) {
            if (!event_->timeline().is_read_only()) {
                engine.press(button, playback.collection_time_at(at));
            } else if (const auto* pressed = engine.button(button)) {
                notices_.refuse_press(QString::fromStdString(pressed->name()));
            }
        },
        [&engine, &playback](const std::string& button, double at) {
            engine.release(button, playback.collection_time_at(at));
        },
        [&engine, &playback](double at) {
            if (engine.down_buttons().empty()) return false;
            engine.tab(playback.collection_time_at(at));
            return true;
        },
        [this](double) { panes_.code->release_mouse(); },
    });
}

// Time runs while the event plays, and while a button waits for its time or for the disk.
void event_session::tick_while_needed() {
    tick_task_->set_running(event_->playback().is_playing() || !event_->logger().down_buttons().empty() ||
                            event_->logger().unrecorded() > 0);
}

// The times and the state of playing, in all panes.
void event_session::show_state() {
    if (!event_) return;
    const synchronised_playback& playback = event_->playback();
    transport_bar& bar = panes_.collection->bar();
    end_shown_ = shown_end();
    bar.set_range(event_->start_seconds(), end_shown_);
    bar.set_playing(playback.is_playing());
    bar.set_rate(playback.rate());
    bar.set_looping(player_.is_looping());
    show_volume();
    panes_.timeline->set_reach(event_->start_seconds(),
                               event_->runs_on_clock() ? end_shown_ : event_->end_seconds());
    pictures_.show_vistels();
    pictures_.show_pictures();
    tick();
    Q_EMIT facts_changed();
}

void event_session::tick() {
    if (!event_) return;
    const double seconds = event_->playback().shown_time();
    if (event_->runs_on_clock()) follow_end(seconds);
    panes_.collection->bar().set_seconds(seconds);
    panes_.collection->bar().set_frame(pictures_.frame_number());
    panes_.timeline->tick();
    panes_.code->tick();
    tick_while_needed();
}

void event_session::show_volume() {
    transport_bar& bar = panes_.collection->bar();
    bar.set_volumes(player_.volume(), player_.application_volume());
    bar.set_muted(player_.is_muted());
}

void event_session::keep_volumes() {
    if (!event_) return;
    notices_.tell(player_.keep_volumes());
    Q_EMIT application_volume_chosen(event_->application_volume());
}

void event_session::show_enlarged() {
    panes_.collection->view().set_enlarged(event_->enlarged());
}

void event_session::set_sound_vistel(const std::string& vistel) {
    if (event_) notices_.tell(event_->set_sound_vistel(vistel));
}

void event_session::set_shows_names(bool shows) {
    pictures_.set_shows_names(shows);
}

void event_session::save() {
    if (!event_) return;
    if (const auto done = event_->save_all(); !done) notices_.tell_save(done.message());
}

void event_session::release_buttons() {
    if (!event_) return;
    panes_.keys->release_all();
    panes_.code->release_mouse();
    event_->logger().release_all(event_->playback().collection_time());
}

void event_session::mark_clip(bool start) {
    if (event_) panes_.timeline->trim_selected(start, event_->playback().collection_time());
}

// Of those selected the first that is seen; else the one that the inspector alone shows.
void event_session::play_selected_clip() {
    if (!event_) return;
    const auto seen = panes_.timeline->state().selected();
    player_.play_clip(seen.empty() ? std::string() : seen.front());
}

}  // namespace vistels
