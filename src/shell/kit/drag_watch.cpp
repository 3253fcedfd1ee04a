// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/kit/drag_watch.h"

#include <QApplication>
#include <QEvent>
#include <QWidget>
#include <utility>

#include "shell/kit/escape_key.h"

namespace vistels {

drag_watch::drag_watch(QWidget& view, std::function<void()> give_up)
    : view_(view), give_up_(std::move(give_up)) {}

void drag_watch::begin() {
    qApp->installEventFilter(this);
}

void drag_watch::end() {
    qApp->removeEventFilter(this);
}

bool drag_watch::eventFilter(QObject* watched, QEvent* event) {
    if (accept_escape(event)) {
        if (event->type() == QEvent::KeyPress) give_up_();
        return true;
    }
    const bool goes = event->type() == QEvent::WindowDeactivate || event->type() == QEvent::Hide;
    if (goes && watched == &view_) give_up_();
    return false;
}

}  // namespace vistels
