// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/program/build_watch.h"

#include <utility>

#include "app/start/start_failures.h"
#include "shell/kit/failure_words.h"

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
        const failure found = check_for_newer_build(places_, running_build_, executable_);
        if (!found.is(newer_build_is_installed)) return;
        loop_.post(guard_.guarded([this, found] {
            if (std::exchange(last_told_, found) == found) return;
            const QString words = words_of(found).simplified();
            Q_EMIT told({user_message::tone::good,
                         tr("A newer build is installed"),
                         words,
                         {},
                         {{tr("Continue"), {}}}});
        }));
    });
}

}  // namespace vistels
