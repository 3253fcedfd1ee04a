// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <memory>

#include "shell/event/event_binder.h"
#include "util/signal.h"

namespace vistels {

class event_session;
class inspector_view;
class timeline_binder;

// Shows in a pane what is selected in the current timeline's view, and that timeline's filter; without a
// timeline what is selected in the event's main view. Main thread.
class inspector_binder final : public QObject, public event_binder {
  public:
    // View and session must outlive this.
    inspector_binder(inspector_view& view, event_session& session);
    ~inspector_binder() override;

    void show(open_event* event) override;
    pane* shown_in() override;

    inspector_view& view() { return view_; }

  private:
    void follow_timeline();
    void show_view();

    inspector_view& view_;
    event_session& session_;
    open_event* event_ = nullptr;
    timeline_binder* followed_ = nullptr;
    std::unique_ptr<QObject> following_;  // its connections are those to the timeline followed
    connection panes_changed_;
    connection shown_changed_;  // of the timeline followed
};

}  // namespace vistels
