// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QKeyEvent>

namespace vistels {

// Whether the event is a press of Escape, or asks whether one is wanted; such an event is accepted.
inline bool accept_escape(QEvent* event) {
    const bool is_key = event->type() == QEvent::KeyPress || event->type() == QEvent::ShortcutOverride;
    if (!is_key || static_cast<QKeyEvent*>(event)->key() != Qt::Key_Escape) return false;
    event->accept();
    return true;
}

}  // namespace vistels
