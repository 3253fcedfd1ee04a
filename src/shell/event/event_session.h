// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <memory>
#include <string>
#include <vector>

#include "app/event/event_player.h"
#include "app/event/open_event.h"
#include "shell/event/event_notices.h"
#include "shell/event/vistel_pictures.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/signal.h"

namespace vistels {

class code_window_view;
class collection_pane;
class filter_control;
class filter_entry;
class inspector_view;
class key_router;
class read_only_mark;
class refresh_rate;
class timeline_view;
class transport_bar;

// The panes that show one event.
struct event_panes {
    collection_pane* collection = nullptr;
    code_window_view* code = nullptr;
    timeline_view* timeline = nullptr;
    inspector_view* inspector = nullptr;
    key_router* keys = nullptr;
    filter_entry* filter = nullptr;
};

// The event that a window shows, connected to the window's panes. Every command is harmless while no event is
// open. Main thread.
class event_session : public QObject {
    Q_OBJECT
  public:
    // Panes and loop must outlive the session.
    event_session(event_panes panes, run_loop& loop);
    ~event_session() override;

    // Opens the event, a collection or a timeline alone, in place of the one that is open. When it cannot be
    // opened that one stays.
    result<void> open(const std::string& folder, const home_places& places);
    // Saves and closes.
    void close();
    bool is_open() const { return event_ != nullptr; }
    filter_control& filter() { return *filter_; }
    // What the user is told about the event.
    event_notices& notices() { return notices_; }
    open_event* shown_event() { return event_.get(); }  // null when none is open
    QString name() const;
    std::string folder() const;
    // For the side bar: "4 cameras · 1 live clip".
    QString fact() const;

    // Every vistel that can be shown shows a picture.
    bool has_all_pictures() const;

    // Its transport, loop and volume.
    event_player& player() { return player_; }
    void keep_volumes();
    void set_sound_vistel(const std::string& vistel);
    // Whether a vistel's name is drawn behind its number.
    void set_shows_names(bool shows);

    void save();
    // Begins to save what is unsaved and does not wait for it.
    void save_in_background();
    void release_buttons();
    void mark_clip(bool start);
    void play_selected_clip();

  Q_SIGNALS:
    void opened();
    void closed();
    // What the undo menu, the saved label or the side bar's line show changed.
    void facts_changed();
    void application_volume_chosen(double volume);

  private:
    void connect_panes();
    void connect_transport(transport_bar& bar);
    void connect_event();
    void connect_keys();
    void show_state();
    void tick();
    void tick_while_needed();
    void show_volume();
    void show_enlarged();
    void show_buttons();
    void show_access();
    double shown_end() const;
    void follow_end(double seconds);

    const event_panes panes_;
    run_loop& loop_;
    event_notices notices_;
    vistel_pictures pictures_;
    read_only_mark* read_only_;   // in the timeline's header
    refresh_rate* refresh_rate_;  // of the screen that shows the event
    std::unique_ptr<filter_control> filter_;
    event_player player_;
    std::unique_ptr<open_event> event_;
    std::vector<connection> lasting_connections_;
    std::vector<connection> connections_;  // of the event that is open
    std::unique_ptr<tick_task> tick_task_;
    double end_shown_ = 0;  // seconds, where the transport ends
};

}  // namespace vistels
