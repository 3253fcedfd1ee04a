// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <functional>

#include "shell/window/sleep_watch.h"

namespace vistels {

// The moments at which everything is saved without being asked: the program goes to the background, the
// session or the program ends, the machine is about to sleep. Main thread.
class save_moments : public QObject {
    Q_OBJECT
  public:
    // `in_background` begins to save; `at_once` returns when it is done.
    save_moments(std::function<void()> in_background, std::function<void()> at_once,
                 QObject* parent = nullptr);

  private:
    void follow(Qt::ApplicationState state);

    const std::function<void()> in_background_;
    const std::function<void()> at_once_;
    sleep_watch sleep_;
};

}  // namespace vistels
