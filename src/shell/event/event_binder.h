// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

namespace vistels {

class open_event;
class pane;

// Connects one pane, or what else a window has for an event, to the event that a session shows. It owns every
// connection it makes; when it goes nothing of it is left at the pane. Main thread.
class event_binder {
  public:
    virtual ~event_binder() = default;

    // Null: none is open. The event outlives its being shown.
    virtual void show(open_event* event) = 0;
    // Null: it connects no pane.
    virtual pane* shown_in() { return nullptr; }
    // All that is to be seen of the event is there, or is known to be missing.
    virtual bool is_complete() const { return true; }
    // Lets go of the buttons that a hand holds down by it.
    virtual void let_go() {}
    // The event is about to be closed: nothing is begun on it any more.
    virtual void end_work() {}
};

}  // namespace vistels
