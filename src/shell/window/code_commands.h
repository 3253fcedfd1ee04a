// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>

#include "app/settings/places.h"
#include "logger/press_settings.h"

class QWidget;

namespace vistels {

class event_session;
class window_actions;

// The window's commands for the code window. What holds for the presses of all code windows is one choice for
// all windows, and remembered. Main thread.
class code_commands : public QObject {
    Q_OBJECT
  public:
    // All must outlive this; `window` is the parent of its panels.
    code_commands(QWidget& window, window_actions& actions, event_session& session, home_places places);

    // Chosen in another window.
    void set_settings(const press_settings& settings);

  Q_SIGNALS:
    // By the user, here.
    void settings_chosen(const vistels::press_settings& settings);

  private:
    void choose(const press_settings& settings);
    void ask_margin();
    void show_settings();

    QWidget& window_;
    window_actions& actions_;
    event_session& session_;
    const home_places places_;
    press_settings settings_;
};

}  // namespace vistels
