// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QPointer>
#include <memory>

#include "shell/event/event_binder.h"

class QWidget;

namespace vistels {

class event_session;
class key_router;
class refresh_rate;

// Connects a window to the event that its panes show: keys bound to buttons code while the window is the
// active one, with a code window in it or without, and the event ticks at the rate of the window's screen.
// Main thread.
class window_binder final : public QObject, public event_binder {
  public:
    // Both must outlive this.
    window_binder(QWidget& window, event_session& session);
    ~window_binder() override;

    void show(open_event* event) override;
    void let_go() override;

  private:
    void press(const std::string& button, double clock_seconds);

    event_session& session_;
    open_event* event_ = nullptr;
    std::unique_ptr<key_router> keys_;
    QPointer<refresh_rate> rate_;  // of the screen
};

}  // namespace vistels
