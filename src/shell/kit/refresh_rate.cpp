// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/refresh_rate.h"

#include <QEvent>
#include <QScreen>
#include <QWidget>

namespace vistels {

refresh_rate::refresh_rate(QWidget& widget) : QObject(&widget), widget_(widget) {
    widget_.installEventFilter(this);
    follow_screen();
}

double refresh_rate::hertz() const {
    return screen_ ? screen_->refreshRate() : 0;
}

// A widget learns of its window's new screen by an event of its own; a window by moving.
bool refresh_rate::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::ParentChange:
        case QEvent::Show:
        case QEvent::Move:
        case QEvent::ScreenChangeInternal:
            follow_screen();
            break;
        default:
            break;
    }
    return QObject::eventFilter(watched, event);
}

void refresh_rate::follow_screen() {
    if (QWidget* window = widget_.window(); window != window_) {
        if (window_ && window_ != &widget_) window_->removeEventFilter(this);
        window_ = window;
        if (window_ != &widget_) window_->installEventFilter(this);
    }
    QScreen* screen = widget_.screen();
    if (screen == screen_) return;
    if (screen_) disconnect(screen_, nullptr, this, nullptr);
    screen_ = screen;
    if (!screen) return;
    connect(screen, &QScreen::refreshRateChanged, this, [this] { Q_EMIT changed(hertz()); });
    Q_EMIT changed(hertz());
}

}  // namespace vistels
