// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "app/settings/code_window_settings.h"
#include "shell/event/event_binder.h"
#include "util/posted_work_guard.h"
#include "util/signal.h"

namespace vistels {

class automatic_presser;
class event_session;

// Presses buttons of the event at random while that is turned on (automatic_presser), and tells the user so,
// with a way to stop it, as long as it does. It is turned on for one event: when that is left for another one
// it is off. Main thread.
class presser_binder final : public event_binder {
  public:
    // Off. The session must outlive this.
    explicit presser_binder(event_session& session);
    ~presser_binder() override;

    void show(open_event* event) override;
    void end_work() override;

    // In force at once: `presses_buttons` turns it on and off here. While no event is open it is turned on
    // for the next.
    void set_settings(const test_press_settings& settings);
    bool is_on() const { return settings_.presses_buttons; }

    // The user stopped it by what is told, or another event is shown: it is off now.
    signal<> ended;

  private:
    void make_presser();
    void turn_off();
    void tell();

    event_session& session_;
    open_event* event_ = nullptr;
    test_press_settings settings_;
    bool event_is_left_ = false;  // the one for which it is on
    std::unique_ptr<automatic_presser> presser_;
    connection changed_;
    posted_work_guard guard_;
};

}  // namespace vistels
