// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/sleep_watch.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace vistels {

namespace {

// As the manual page org.freedesktop.login1(5) names them.
constexpr const char* service = "org.freedesktop.login1";
constexpr const char* path = "/org/freedesktop/login1";
constexpr const char* manager = "org.freedesktop.login1.Manager";

}  // namespace

sleep_watch::sleep_watch(std::function<void()> before_sleep, QObject* parent)
    : QObject(parent), before_sleep_(std::move(before_sleep)) {
    const bool listens = QDBusConnection::systemBus().connect(service, path, manager, "PrepareForSleep", this,
                                                              SLOT(about_to_sleep(bool)));
    if (listens) ask_to_wait();
}

void sleep_watch::about_to_sleep(bool begins) {
    if (begins) {
        before_sleep_();
        waiting_ = {};
    } else {
        ask_to_wait();
    }
}

void sleep_watch::ask_to_wait() {
    auto message = QDBusMessage::createMethodCall(service, path, manager, "Inhibit");
    message << QStringLiteral("sleep") << QStringLiteral("Vistels") << tr("saves what was coded")
            << QStringLiteral("delay");
    auto* call = new QDBusPendingCallWatcher(QDBusConnection::systemBus().asyncCall(message), this);
    connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        const QDBusPendingReply<QDBusUnixFileDescriptor> reply = *call;
        if (reply.isValid()) waiting_ = reply.value();
        call->deleteLater();
    });
}

}  // namespace vistels
