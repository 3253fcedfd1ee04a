// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <memory>
#include <vector>

#include "app/settings/places.h"
#include "shell/event/event_binder.h"
#include "util/signal.h"

namespace vistels {

class clip_view;
class event_session;
class filter_control;
class filter_entry;
class pane_tick;
class read_only_mark;
class timeline_view;

// Shows the event's timeline in a pane: clips, playhead, the filter with its text and commands, and whether
// it can be changed. Main thread.
class timeline_binder final : public QObject, public event_binder {
  public:
    // View and session must outlive this.
    timeline_binder(timeline_view& view, event_session& session, const home_places& places);
    ~timeline_binder() override;

    void show(open_event* event) override;
    pane* shown_in() override;

    timeline_view& view() { return view_; }
    // What is filtered and selected in the pane; null: no event is open. Of several panes that show one event
    // one has the event's main view, the others views of their own.
    clip_view* shown() { return shown_; }
    signal<> shown_changed;
    // The text of its filter, which other fields may show as well.
    filter_entry& filter_text() { return *text_; }
    filter_control& filter() { return *filter_; }
    // Of those selected in it the first that is seen; else the one that an inspector alone shows.
    void play_selected();
    // The start or the end of the selected clips is moved to the playhead.
    void mark_clip(bool start);

  private:
    void connect_view();
    clip_view* take_view();
    void lead_player();
    void show_reach();
    void show_growing();
    void show_triggers();

    timeline_view& view_;
    event_session& session_;
    open_event* event_ = nullptr;
    clip_view* shown_ = nullptr;
    std::unique_ptr<clip_view> own_;  // null: it shows the main one
    read_only_mark* read_only_;       // in the pane's header
    std::unique_ptr<filter_entry> text_;
    std::unique_ptr<filter_control> filter_;
    std::unique_ptr<pane_tick> tick_;
    std::vector<connection> lasting_;
    connection reach_changed_;
    connection growing_changed_;
    connection buttons_changed_;
    connection rows_changed_;
    bool shows_growing_ = false;
    bool shows_triggers_ = false;
};

}  // namespace vistels
