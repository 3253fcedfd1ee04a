// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/save_moments.h"

#include <QGuiApplication>

namespace vistels {

save_moments::save_moments(std::function<void()> in_background, std::function<void()> at_once,
                           QObject* parent)
    : QObject(parent),
      in_background_(std::move(in_background)),
      at_once_(std::move(at_once)),
      sleep_([this] { at_once_(); }) {
    connect(qGuiApp, &QGuiApplication::applicationStateChanged, this, &save_moments::follow);
    connect(qGuiApp, &QCoreApplication::aboutToQuit, this, [this] { at_once_(); });
    // The desktop waits for the answer, so this may take its time.
    connect(
        qGuiApp, &QGuiApplication::commitDataRequest, this, [this] { at_once_(); }, Qt::DirectConnection);
    connect(
        qGuiApp, &QGuiApplication::saveStateRequest, this, [this] { at_once_(); }, Qt::DirectConnection);
}

void save_moments::follow(Qt::ApplicationState state) {
    switch (state) {
        case Qt::ApplicationActive:
            return;
        case Qt::ApplicationInactive:
            return in_background_();
        case Qt::ApplicationHidden:
        case Qt::ApplicationSuspended:
            return at_once_();
    }
}

}  // namespace vistels
