// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPointF>
#include <QTimer>
#include <memory>
#include <optional>
#include <vector>

#include "shell/event/event_binder.h"
#include "util/posted_work_guard.h"
#include "util/serial_queue.h"
#include "util/signal.h"

namespace vistels {

class code_window_view;
class event_session;
class pane_tick;

// Shows the event's code window in a pane and presses its buttons; while the event can only be read every
// press is refused and told. The pictures of its buttons are read on a queue and shown when they are there.
// Where the user scrolls it to is kept with it. Main thread.
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
    void keep_scroll();
    void read_look();

    code_window_view& view_;
    event_session& session_;
    open_event* event_ = nullptr;
    std::unique_ptr<pane_tick> tick_;
    std::vector<connection> of_view_;
    std::optional<QPointF> scrolled_to_;  // not kept yet
    QTimer keeps_scroll_;
    std::vector<std::string> pictures_read_;  // what they go by
    std::vector<connection> of_event_;
    posted_work_guard guard_;
    std::unique_ptr<serial_queue> queue_;  // made when it is first wanted; after what its work uses
};

}  // namespace vistels
