// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/program/build_watch.h"

#include <utility>

namespace vistels {

build_watch::build_watch(home_places places, double running_build, running_executable executable,
                         run_loop& loop, double seconds)
    : places_(std::move(places)),
      running_build_(running_build),
      executable_(std::move(executable)),
      loop_(loop) {
    constexpr double milliseconds = 1000;
    connect(&timer_, &QTimer::timeout, this, &build_watch::look);
    timer_.start(static_cast<int>(seconds * milliseconds));
}

void build_watch::look() {
    queue_.post([this] {
        if (!executable_.is_replaced()) return;
        const auto checked = check_for_newer_build(places_, running_build_, executable_);
        if (!checked || checked.value().empty()) return;
        loop_.post(guard_.guarded([this, text = checked.value()] {
            if (std::exchange(last_told_, text) == text) return;
            const QString words = QString::fromStdString(text).simplified();
            Q_EMIT told({user_message::tone::good,
                         tr("A newer build is installed"),
                         words,
                         {},
                         {{tr("Continue"), {}}}});
        }));
    });
}

}  // namespace vistels
