// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QObject>
#include <QTimer>

#include "app/settings/places.h"
#include "app/start/build_check.h"
#include "shell/kit/message_bar.h"
#include "util/posted_work_guard.h"
#include "util/run_loop.h"
#include "util/serial_queue.h"

namespace vistels {

// Notices when a newer build is installed while this one runs, and tells it once for each. Files are looked
// at on a queue of its own. Main thread.
class build_watch : public QObject {
    Q_OBJECT
  public:
    // `loop` must outlive it. Looks every `seconds`.
    build_watch(home_places places, double running_build, running_executable executable, run_loop& loop,
                double seconds = 60);

  Q_SIGNALS:
    void told(const vistels::user_message& message);

  private:
    void look();

    const home_places places_;
    const double running_build_;
    const running_executable executable_;
    run_loop& loop_;
    QTimer timer_;
    posted_work_guard guard_;
    failure last_told_;
    serial_queue queue_{"build"};
};

}  // namespace vistels
