// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDBusUnixFileDescriptor>
#include <QObject>
#include <functional>

namespace vistels {

// Tells that the machine is about to sleep, where the desktop's login manager tells it: the machine waits
// until `before_sleep` has returned (for some seconds at most). Without a login manager nothing happens. Main
// thread.
class sleep_watch : public QObject {
    Q_OBJECT
  public:
    explicit sleep_watch(std::function<void()> before_sleep, QObject* parent = nullptr);

  public Q_SLOTS:
    // The login manager's signal: true before sleep, false after waking.
    void about_to_sleep(bool begins);

  private:
    void ask_to_wait();

    const std::function<void()> before_sleep_;
    QDBusUnixFileDescriptor waiting_;  // as long as it is open the machine waits
};

}  // namespace vistels
