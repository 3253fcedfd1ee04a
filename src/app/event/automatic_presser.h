// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <unordered_map>
#include <vector>

#include "app/settings/code_window_settings.h"
#include "logger/button_fired.h"
#include "logger/random_presses.h"
#include "timeline/edits/timeline_edit.h"
#include "util/run_loop.h"
#include "util/signal.h"

namespace vistels {

class open_event;

// Presses the buttons of an open event's code window at random (random_presses), in cycles, to try the code
// window out. It presses as a hand does, at the collection's present time, whether that runs or not, and
// leaves alone what something else holds down; a button that a hand takes over from it is the hand's. While
// the event can only be read, or presses wait to be put on record, it presses nothing. With "delete some
// recent clips" it deletes, now and then, some of those that it made lately and nothing else had a part in,
// as a person does. Main thread.
class automatic_presser {
  public:
    // Off until set_settings(). Both must outlive it.
    automatic_presser(open_event& event, run_loop& loop, std::uint32_t seed);
    // Lets go of what it holds.
    ~automatic_presser();
    automatic_presser(const automatic_presser&) = delete;
    automatic_presser& operator=(const automatic_presser&) = delete;

    // In force at once: `presses_buttons` turns it on, and off. The first cycle begins when the time between
    // two has passed.
    void set_settings(const test_press_settings& settings);

    // It is on, and the event can be written.
    bool is_pressing() const { return is_pressing_; }
    signal<> changed;  // is_pressing()

    // Of the clips made last so many may be deleted.
    static constexpr std::size_t most_recent = 20;

  private:
    void follow();
    void wait_for_next();
    void act();
    void press_some(double now);
    void delete_some();
    void release(const std::vector<std::string>& buttons);
    void take_fired(const button_fired& fired);
    void take_change(const change_set& change);

    open_event& event_;
    run_loop& loop_;
    random_presses presses_;
    test_press_settings settings_;
    bool is_pressing_ = false;
    double next_cycle_ = 0;  // monotonic clock
    run_loop::timer_id timer_ = 0;
    bool acts_ = false;                                   // what changes is its own doing
    std::unordered_map<std::string, std::string> begun_;  // its clips that grow, by their buttons
    std::deque<std::string> recent_;                      // to delete some of; the last one at the end
    connection fired_;
    connection access_;
    connection changed_;
};

}  // namespace vistels
