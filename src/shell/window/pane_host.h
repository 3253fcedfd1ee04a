// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "app/settings/places.h"
#include "shell/kit/pane.h"

namespace vistels {

class collection_commands;
class event_session;

// The panes of a window: makes those that are wanted, each with the binder that connects it to the session's
// event, and takes them away again. It does not lay them out. Main thread.
class pane_host {
  public:
    // Both must outlive the panes. `commands` do what the user asks for in a collection's pane.
    pane_host(event_session& session, collection_commands& commands, home_places places);
    pane_host(const pane_host&) = delete;
    pane_host& operator=(const pane_host&) = delete;

    // A pane that shows the event, be it open already or not. It belongs to whoever lays it out, and to
    // nobody before that.
    pane& add(pane_kind kind);
    template <class view>
    view& add(pane_kind kind) {
        return static_cast<view&>(add(kind));
    }
    // Lets go of the event; the pane is deleted when the loop is next at rest.
    void remove(pane& one);
    // In the order in which they were added.
    const std::vector<pane*>& panes() const { return panes_; }

  private:
    event_session& session_;
    collection_commands& commands_;
    const home_places places_;
    std::vector<pane*> panes_;
};

}  // namespace vistels
