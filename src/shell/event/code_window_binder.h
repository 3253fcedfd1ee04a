// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>

#include "shell/event/event_binder.h"
#include "util/signal.h"

namespace vistels {

class code_window_view;
class event_session;
class pane_tick;

// Shows the event's code window in a pane and presses its buttons; while the event can only be read every
// press is refused and told. Main thread.
class code_window_binder final : public event_binder {
  public:
    // View and session must outlive this.
    code_window_binder(code_window_view& view, event_session& session);
    ~code_window_binder() override;

    void show(open_event* event) override;
    pane* shown_in() override;
    void let_go() override;

    code_window_view& view() { return view_; }

  private:
    void show_buttons();

    code_window_view& view_;
    event_session& session_;
    open_event* event_ = nullptr;
    std::unique_ptr<pane_tick> tick_;
    connection access_changed_;
};

}  // namespace vistels
