// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/collection_binder.h"

#include "app/event/event_reach.h"
#include "app/event/open_event.h"
#include "app/settings/settings.h"
#include "shell/event/align_control.h"
#include "shell/event/collection_commands.h"
#include "shell/event/event_session.h"
#include "shell/event/pane_tick.h"
#include "shell/event/view_offset_keeper.h"
#include "shell/event/vistel_files.h"
#include "shell/kit/pane_header.h"
#include "shell/panes/collection/collection_pane.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/collection/transport_bar.h"

namespace vistels {

collection_binder::collection_binder(collection_pane& view, event_session& session,
                                     collection_commands& commands, const home_places& places)
    : view_(view),
      session_(session),
      places_(places),
      pictures_(view),
      alignment_(std::make_unique<align_control>(view, session.player(), session.notices())),
      offset_kept_(std::make_unique<view_offset_keeper>(view.view(), places)) {
    connect_transport();
    connect_view(commands);
    view_.bar().setEnabled(false);
    connect(&session, &event_session::shows_health_changed, this,
            [this](bool shows) { pictures_.set_shows_health(shows); });
    pictures_.set_shows_health(session.shows_health());
}

collection_binder::~collection_binder() = default;

pane* collection_binder::shown_in() {
    return &view_;
}

void collection_binder::connect_transport() {
    transport_bar& bar = view_.bar();
    event_player& player = session_.player();
    const auto on = [&](auto asked, auto does) { connect(&bar, asked, this, does); };
    on(&transport_bar::play_asked, [&player] { player.play_or_pause(); });
    on(&transport_bar::step_asked, [&player](int frames) { player.step(frames); });
    on(&transport_bar::rate_asked, [&player](double rate) { player.set_rate(rate); });
    on(&transport_bar::loop_asked, [&player](bool loops) { player.set_looping(loops); });
    on(&transport_bar::volume_asked, [&player](double volume) { player.set_volume(volume); });
    on(&transport_bar::application_volume_asked,
       [&player](double volume) { player.set_application_volume(volume); });
    on(&transport_bar::volume_chosen, [this] { session_.keep_volumes(); });
    on(&transport_bar::mute_asked, [&player](bool mutes) { player.set_muted(mutes); });
    on(&transport_bar::seek_asked,
       [&player](double seconds, bool ended) { ended ? player.seek(seconds) : player.scrub(seconds); });
    lasting_.push_back(player.volumes_changed.connect([this] { show_volume(); }));
    lasting_.push_back(player.looping_changed.connect([this] { show_playing(); }));
    lasting_.push_back(player.enlarged_changed.connect(
        [this] { view_.view().set_enlarged(event_ ? event_->enlarged() : std::string()); }));
}

void collection_binder::connect_view(collection_commands& commands) {
    collection_view& view = view_.view();
    event_player& player = session_.player();
    connect(&view, &collection_view::enlarge_asked, this,
            [&player](const QString& vistel) { player.enlarge(vistel.toStdString()); });
    connect(&view_, &collection_pane::all_vistels_asked, this, [&player] { player.enlarge({}); });
    connect(&view, &collection_view::layout_asked, this,
            [&commands, &view](const vistel_arrangement& wanted, const char* name) {
                commands.set_arrangement_as(wanted, name, view.current());
            });
    connect(&view, &collection_view::menu_asked, this,
            [&commands, this](const QString& vistel, const QPoint& global) {
                commands.show_vistel_menu(*this, vistel.toStdString(), global);
            });
    connect(&view, &collection_view::movies_dropped, this,
            [&commands](const QStringList& movies, const QString& vistel) {
                commands.files().add(movies, vistel.toStdString());
            });
    connect(&view_, &collection_pane::more_asked, this,
            [&commands](const QPoint& global) { commands.show_menu(global); });
    connect(alignment_.get(), &align_control::changed, &commands, &collection_commands::show_state);
}

void collection_binder::show(open_event* event) {
    tick_.reset();
    connections_.clear();
    event_ = event;
    pictures_.set_event(event, event ? session_.pictures() : nullptr);
    view_.bar().setEnabled(event != nullptr);
    if (event) {
        connect_event();
        view_.header().set_name(session_.name());
        view_.set_shows_pictures(event->has_collection());
        set_shows_names(load_show_vistel_number_name(places_).shown);
        show_range();
        show_playing();
        tick_ = std::make_unique<pane_tick>(*event, session_.player(), [this] { tick(); });
        offset_kept_->restore();
    } else {
        offset_kept_->keep();
    }
    alignment_->set_event(event);
}

void collection_binder::connect_event() {
    synchronised_playback& playback = event_->playback();
    connections_.push_back(playback.pictures_changed.connect([this] { pictures_.show_pictures(); }));
    connections_.push_back(playback.state_changed.connect([this] { show_playing(); }));
    connections_.push_back(event_->collection_changed.connect([this] { show_playing(); }));
    connections_.push_back(session_.reach()->changed.connect([this] { show_range(); }));
}

void collection_binder::show_range() {
    view_.bar().set_range(session_.reach()->start(), session_.reach()->end());
}

// Whether, how fast and what it plays.
void collection_binder::show_playing() {
    if (!event_) return;
    transport_bar& bar = view_.bar();
    bar.set_playing(event_->playback().is_playing());
    bar.set_rate(event_->playback().rate());
    bar.set_looping(session_.player().is_looping());
    show_volume();
    pictures_.show_vistels();
    pictures_.show_pictures();
}

void collection_binder::show_volume() {
    const event_player& player = session_.player();
    view_.bar().set_volumes(player.volume(), player.application_volume());
    view_.bar().set_muted(player.is_muted());
}

void collection_binder::tick() {
    view_.bar().set_seconds(event_->playback().shown_time());
    view_.bar().set_frame(pictures_.frame_number());
}

}  // namespace vistels
