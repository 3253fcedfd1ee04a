// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "util/display_tick.h"
#include "util/signal.h"

namespace vistels {

class open_event;

// From when to when an open event is shown, in seconds on the collection's clock. Where there are no pictures
// it is as long as what was coded, or as the clock has run, in whole minutes, so that what is shown does not
// move all the time. Main thread.
class event_reach {
  public:
    // The event must outlive this.
    explicit event_reach(open_event& event);
    event_reach(const event_reach&) = delete;
    event_reach& operator=(const event_reach&) = delete;

    double start() const { return now_.start; }
    // Of pictures and clips.
    double end() const { return now_.end; }
    // Of the pictures alone; where there are none, end().
    double pictures_end() const { return now_.pictures_end; }

    signal<> changed;  // may be

  private:
    struct range {
        double start = 0;
        double end = 0;
        double pictures_end = 0;
    };

    range read() const;
    void refresh();
    void follow_clock();

    open_event& event_;
    range now_;
    tick_task task_;  // while a clock without pictures runs
    std::vector<connection> connections_;
};

}  // namespace vistels
