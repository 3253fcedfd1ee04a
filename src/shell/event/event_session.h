// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/event/event_player.h"
#include "app/event/event_reach.h"
#include "app/event/open_event.h"
#include "shell/event/binder_list.h"
#include "shell/event/event_notices.h"
#include "shell/event/picture_wishes.h"
#include "util/posted_work_guard.h"
#include "util/result.h"
#include "util/run_loop.h"
#include "util/signal.h"

namespace vistels {

// The event that is open, or none, and the binders that show it in any number of panes. Every command is
// harmless while no event is open. Main thread.
class event_session : public QObject {
    Q_OBJECT
  public:
    // The loop must outlive the session.
    explicit event_session(run_loop& loop);
    ~event_session() override;

    // Shows the event, a collection or a timeline alone, which has not begun, in place of the one that is
    // open, which is closed.
    void show(std::unique_ptr<open_event> event);
    // Stops what the event is doing and saves what is unsaved, in the background; `then` is called when that
    // is done, or could not be, unless the event is closed before. What is asked last counts.
    void when_saved(std::function<void()> then);
    // Closes. What is unsaved is saved, and waited for.
    void close();
    bool is_open() const { return event_ != nullptr; }
    open_event* shown_event() { return event_.get(); }  // null when none is open
    QString name() const;
    std::string folder() const;
    // For the side bar: "4 cameras · 1 live clip".
    QString fact() const;

    // What it binds shows the event from now on, whether one is open or not.
    void attach(std::unique_ptr<event_binder> one);
    // The pane is left without an event.
    void detach(const pane& shown_in);
    binder_list& binders() { return binders_; }
    // Every pane shows all there is, each vistel its picture if it can be shown.
    bool has_all_pictures() const;

    run_loop& loop() { return loop_; }
    // What the user is told about the event.
    event_notices& notices() { return notices_; }
    // Its transport, loop and volume.
    event_player& player() { return player_; }
    // Of the event that is open; null when none is.
    event_reach* reach() { return reach_.get(); }
    picture_wishes* pictures() { return pictures_.get(); }

    void keep_volumes();
    // What becomes of the sound's pitch at other rates, for all events; one that was chosen and saved
    // elsewhere.
    void choose_pitch(pitch_algorithm pitch);
    void take_pitch(pitch_algorithm pitch);
    // Whether the vistels' chips say how they fare in playback.
    void set_shows_health(bool shows);
    bool shows_health() const { return shows_health_; }
    void set_sound_vistel(const std::string& vistel);
    void save();
    // Begins to save what is unsaved and does not wait for it.
    void save_in_background();
    void release_buttons();

  Q_SIGNALS:
    void opened();
    void closed();
    // What the undo menu, the saved label or the side bar's line show changed.
    void facts_changed();
    void application_volume_chosen(double volume);
    void pitch_chosen(pitch_algorithm pitch);
    void shows_health_changed(bool shows);

  private:
    void connect_event();

    run_loop& loop_;
    event_notices notices_;
    event_player player_;
    std::unique_ptr<open_event> event_;
    std::unique_ptr<event_reach> reach_;
    std::unique_ptr<picture_wishes> pictures_;
    std::vector<connection> lasting_;
    std::vector<connection> connections_;  // of the event that is open
    connection when_saved_;                // the same
    posted_work_guard saved_guard_;
    bool shows_health_ = false;
    binder_list binders_;
};

}  // namespace vistels
