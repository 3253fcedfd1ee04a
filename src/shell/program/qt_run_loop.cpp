// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/program/qt_run_loop.h"

#include <QMetaObject>
#include <QTimer>
#include <chrono>
#include <cmath>
#include <utility>

namespace vistels {

qt_run_loop::qt_run_loop() = default;
qt_run_loop::~qt_run_loop() = default;

void qt_run_loop::post(std::function<void()> work) {
    QMetaObject::invokeMethod(this, std::move(work), Qt::QueuedConnection);
}

run_loop::timer_id qt_run_loop::start_timer(double delay_seconds, bool repeat, std::function<void()> work) {
    const timer_id id = ++last_timer_;
    auto timer = std::make_unique<QTimer>();
    timer->setTimerType(Qt::PreciseTimer);
    timer->setSingleShot(!repeat);
    timer->setInterval(std::chrono::milliseconds(std::lround(delay_seconds * 1000)));
    connect(timer.get(), &QTimer::timeout, this, [this, id, repeat, work = std::move(work)] {
        // The work may end this very timer, and with it the closure that it runs in.
        const auto run = work;
        if (!repeat) stop_timer(id);
        run();
    });
    timer->start();
    timers_.emplace(id, std::move(timer));
    return id;
}

void qt_run_loop::stop_timer(timer_id timer) {
    const auto found = timers_.find(timer);
    if (found == timers_.end()) return;
    // It may be the timer whose signal is being delivered.
    found->second->stop();
    found->second.release()->deleteLater();
    timers_.erase(found);
}

}  // namespace vistels
