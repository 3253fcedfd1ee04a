// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <vector>

#include "util/display_tick.h"
#include "util/signal.h"

namespace vistels {

class event_player;
class open_event;

// Lets a pane show the time of its event: at each display tick while the event plays or a button waits for
// its time or the disk, and when the time, or what there is to show, is set otherwise. Main thread.
class pane_tick {
  public:
    // Event and player must outlive this.
    pane_tick(open_event& event, event_player& player, std::function<void()> show);
    pane_tick(const pane_tick&) = delete;
    pane_tick& operator=(const pane_tick&) = delete;

  private:
    void tick();
    void run_while_needed();

    open_event& event_;
    const std::function<void()> show_;
    tick_task task_;
    std::vector<connection> connections_;
};

}  // namespace vistels
