// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <memory>

#include "app/settings/code_window_settings.h"
#include "app/settings/places.h"
#include "logger/press_settings.h"
#include "util/serial_queue.h"
#include "util/signal.h"

class QWidget;

namespace vistels {

class event_session;
class presser_binder;
class window_actions;

// The window's commands for the code window. What holds for the presses of all code windows is one choice for
// all windows, and remembered; so is how buttons are pressed automatically, which they are in one window at a
// time, the one where it was turned on. Main thread.
class code_commands : public QObject {
    Q_OBJECT
  public:
    // All must outlive this; `window` is the parent of its panels.
    code_commands(QWidget& window, window_actions& actions, event_session& session, home_places places);

    // Chosen in another window.
    void set_settings(const press_settings& settings);
    // The same; `presses_there`: in that window buttons are pressed from now on.
    void set_presser(const test_press_settings& settings, bool presses_there);
    // Buttons are pressed here, in the event that is open or else in the next, when that was remembered.
    void resume_pressing();
    // No more, when they are pressed here.
    void stop_pressing();

  Q_SIGNALS:
    // By the user, here.
    void settings_chosen(const vistels::press_settings& settings);
    // The same, or an event that was pressed into was left.
    void presser_chosen(const vistels::test_press_settings& settings, bool presses_here);

  private:
    void choose(const press_settings& settings);
    void ask_margin();
    void ask_presser();
    void ask_dry_run();
    void turn_presser_off();
    void choose_presser(const test_press_settings& settings, bool presses_here);
    void take_presser(const test_press_settings& settings, bool presses_here);
    void show_settings();

    QWidget& window_;
    window_actions& actions_;
    event_session& session_;
    const home_places places_;
    press_settings settings_;
    test_press_settings presser_settings_;  // on: in some window
    presser_binder& presser_;
    connection pressing_ended_;
    std::unique_ptr<serial_queue> dry_runs_;  // made when the first is wanted
};

}  // namespace vistels
