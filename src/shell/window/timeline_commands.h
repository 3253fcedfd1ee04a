// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPoint>

namespace vistels {

class event_session;
class timeline_binder;
class timeline_view;
class window_actions;
enum class command;

// The window's commands for clips, rows and the scale: they act on the event's current timeline pane. Main
// thread.
class timeline_commands : public QObject {
    Q_OBJECT
  public:
    // Both must outlive this.
    timeline_commands(const window_actions& actions, event_session& session);

    // A menu for what is selected in it, and playing by a double click. The view must not outlive this.
    void serve(timeline_view& view);

  private:
    void show_menu(timeline_view& view, QPoint at, bool for_clips);
    template <class does>
    void on_view(command which, does what);
    template <class does>
    void on_binder(command which, does what);

    const window_actions& actions_;
    event_session& session_;
};

}  // namespace vistels
