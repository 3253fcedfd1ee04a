// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/program/termination_watch.h"

#include <signal.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <utility>

namespace vistels {

termination_watch::termination_watch() {
    sigset_t ending;
    sigemptyset(&ending);
    for (const int one : {SIGINT, SIGTERM, SIGHUP}) sigaddset(&ending, one);
    if (pthread_sigmask(SIG_BLOCK, &ending, nullptr) != 0) return;
    descriptor_ = ::signalfd(-1, &ending, SFD_CLOEXEC | SFD_NONBLOCK);
    // Without a descriptor the signals end the program as they always do.
    if (descriptor_ < 0) pthread_sigmask(SIG_UNBLOCK, &ending, nullptr);
}

termination_watch::~termination_watch() {
    notifier_.reset();
    if (descriptor_ >= 0) ::close(descriptor_);
}

void termination_watch::start(std::function<void()> asked_to_end) {
    if (descriptor_ < 0) return;
    notifier_ = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(),
                     [descriptor = descriptor_, asked_to_end = std::move(asked_to_end)] {
                         signalfd_siginfo told;
                         while (::read(descriptor, &told, sizeof told) > 0) {
                         }
                         asked_to_end();
                     });
}

}  // namespace vistels
