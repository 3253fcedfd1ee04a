// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <string>

#include "shell/event/undo_commands.h"
#include "util/job_list.h"

namespace vistels {

class event_session;
class history_window;
class window_actions;

// The window's commands that concern the open event as a whole: saving, undo, what its buttons hold, and the
// transport; and what they show of its state. Main thread.
class event_commands : public QObject {
    Q_OBJECT
  public:
    // All must outlive this. `jobs` are those of the event.
    event_commands(window_actions& actions, event_session& session, job_group& jobs);

  private:
    void connect_event();
    void connect_transport();
    void ask_steps();
    void show_history();
    void show_state();

    window_actions& actions_;
    event_session& session_;
    undo_commands steps_;
    QPointer<history_window> history_;
};

}  // namespace vistels
