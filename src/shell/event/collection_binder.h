// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <memory>
#include <vector>

#include "app/settings/places.h"
#include "shell/event/event_binder.h"
#include "shell/event/vistel_pictures.h"
#include "util/signal.h"

namespace vistels {

class align_control;
class collection_commands;
class collection_pane;
class event_session;
class pane_tick;
class view_offset_keeper;

// Shows the event's vistels in a pane, with the transport under them, and brings them into step there. Main
// thread.
class collection_binder final : public QObject, public event_binder {
  public:
    // All must outlive this. What the user asks for in the pane `commands` do.
    collection_binder(collection_pane& view, event_session& session, collection_commands& commands,
                      const home_places& places);
    ~collection_binder() override;

    void show(open_event* event) override;
    pane* shown_in() override;
    bool is_complete() const override { return pictures_.are_complete(); }

    collection_pane& view() { return view_; }
    align_control& alignment() { return *alignment_; }
    // Whether a vistel's name is drawn behind its number.
    void set_shows_names(bool shows) { pictures_.set_shows_names(shows); }

  private:
    void connect_transport();
    void connect_view(collection_commands& commands);
    void connect_event();
    void show_range();
    void show_playing();
    void show_volume();
    void tick();

    collection_pane& view_;
    event_session& session_;
    const home_places places_;
    open_event* event_ = nullptr;
    vistel_pictures pictures_;
    std::unique_ptr<align_control> alignment_;
    std::unique_ptr<view_offset_keeper> offset_kept_;
    std::unique_ptr<pane_tick> tick_;
    std::vector<connection> lasting_;
    std::vector<connection> connections_;  // of the event
};

}  // namespace vistels
