// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <memory>

#include "app/settings/places.h"
#include "util/signal.h"

class QMenu;

namespace vistels {

class event_session;
class filter_control;
class timeline_binder;
class window_actions;

// The window's commands for filters: they act on the filter of the event's current timeline pane. Whether
// what is filtered out is hidden is one choice for all timelines, and remembered. Main thread.
class filter_commands : public QObject {
    Q_OBJECT
  public:
    // Both must outlive this.
    filter_commands(window_actions& actions, event_session& session, home_places places);

    // Puts in what the filter's menu offers beside its actions.
    void fill(QMenu& menu);
    // What is filtered out is hidden in all timelines, or no longer.
    void set_hides(bool hides);
    // A filter that nothing passes is taken away; false: there is none.
    bool clear_if_nothing_passes();
    void apply(const QString& pattern);

  Q_SIGNALS:
    // By the user, here.
    void hides_chosen(bool hides);
    // The list of remembered filters changed.
    void patterns_changed();

  private:
    void connect_actions();
    void follow_timelines();
    void keep_hides(bool hides);
    void show_state();
    timeline_binder* shown() const;

    window_actions& actions_;
    event_session& session_;
    const home_places places_;
    std::unique_ptr<QObject> following_;  // its connections are those to the timelines
    connection panes_changed_;
};

}  // namespace vistels
