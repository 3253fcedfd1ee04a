// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <cstddef>
#include <memory>
#include <vector>

#include "app/event/clip_playlist.h"
#include "app/event/clip_view.h"
#include "util/run_loop.h"
#include "util/signal.h"

namespace vistels {

class event_player;
class open_event;
class timeline_view;

// The filter of a timeline's pane: brings what it lets through onto the timeline, and does the commands that
// go from clip to clip. Every command is harmless while no event is open. Main thread.
class filter_control : public QObject {
    Q_OBJECT
  public:
    // All must outlive it.
    filter_control(timeline_view& timeline, event_player& player, run_loop& loop);
    ~filter_control() override;

    // Null: none is open. Both must outlive their use here; `view` is the one that the timeline shows.
    void set_event(open_event* event, clip_view* view);

    bool is_on() const;
    // The clips that pass; without a filter all.
    std::size_t passing_count() const;
    // The clip that passes and starts next after (direction > 0) or before the playhead: selected, in view,
    // and the playhead at its start.
    void go_to_clip(int direction);

    bool hides() const { return hides_; }
    void set_hides(bool hides);
    // By the user: hides_chosen() follows, so that it is remembered.
    void choose_hides(bool hides);

    // Plays the clips that pass, one after another: from the selected one on when the playhead is in it, else
    // from the first. Each is selected while it plays. Pausing, seeking, Escape and another filter end it;
    // going to the clip before or after goes on with that one.
    void play_all(bool plays);
    bool plays_all() const;

  Q_SIGNALS:
    // What the commands show of its state.
    void changed();
    // Other clips pass than before, or what is filtered out is hidden, or no longer.
    void verdicts_changed();
    void hides_chosen(bool hides);

  protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

  private:
    void follow(bool are_new);
    void show(bool are_new);  // the verdicts
    std::size_t first_to_play() const;
    void play_from(std::size_t index);
    void follow_list();

    timeline_view& timeline_;
    event_player& player_;
    run_loop& loop_;
    open_event* event_ = nullptr;
    clip_filtering* filtering_ = nullptr;  // of the view
    filter_standing shown_;
    bool hides_ = false;
    std::vector<connection> connections_;
    std::unique_ptr<clip_playlist> list_;
    std::vector<playlist_clip> clips_;  // of the list that plays, from the first that passes
    std::size_t playing_ = 0;           // in clips_
};

}  // namespace vistels
