// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/code_window/code_window_button.h"

#include <QEnterEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>

#include "shell/keys/event_stamp.h"
#include "shell/kit/theme.h"
#include "shell/kit/theme_time_text.h"
#include "util/clock.h"

namespace vistels {
namespace {

double moment_of(const QInputEvent& event) {
    return event_seconds(event.timestamp(), steady_clock().seconds());
}

bool presses(const QKeyEvent& event) {
    return event.key() == Qt::Key_Return || event.key() == Qt::Key_Enter;
}

}  // namespace

code_window_button::code_window_button(code_button button, QWidget* parent)
    : QAbstractButton(parent), button_(std::move(button)) {
    setObjectName(QStringLiteral("code_button.") + QString::fromStdString(button_.uuid));
    setText(button_.name);
    // By the Tab key only, so that a click leaves the keys where they are.
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    lingers_.setSingleShot(true);
    connect(&lingers_, &QTimer::timeout, this, [this] { update(); });
    // What assistive programs ask for is a press and its release.
    connect(this, &QAbstractButton::clicked, this, [this] {
        const double now = steady_clock().seconds();
        Q_EMIT went_down(now);
        Q_EMIT went_up(now);
    });
    show_words();
}

int code_window_button::margin() {
    const theme_metrics& metrics = theme::current().metrics;
    return metrics.focus_ring + metrics.playhead_gap;
}

QSize code_window_button::sizeHint() const {
    return button_.place.size().toSize() + QSize(2 * margin(), 2 * margin());
}

void code_window_button::show_words() {
    QString words =
        button_.what.isEmpty() ? button_.name : QStringLiteral("%1 – %2").arg(button_.name, button_.what);
    setAccessibleName(button_.name);
    QString description = button_.what;
    if (!button_.key.isEmpty()) {
        words += tr(" (key %1)").arg(button_.key);
        description += tr(", key %1").arg(button_.key);
    }
    if (state_.is_blocked) {
        words += tr("\nBlocked for now by another button");
        description += tr(", blocked");
    }
    if (state_.is_down) description += tr(", down");
    setToolTip(words);
    setAccessibleDescription(description);
}

void code_window_button::set_state(const code_button_state& state) {
    if (state == state_) return;
    if (state.is_down && !state_.is_down) {
        since_down_.start();
        lingers_.stop();
    }
    if (!state.is_down && state_.is_down) {
        const qint64 left = theme::current().motion.momentary - since_down_.elapsed();
        if (left > 0) lingers_.start(static_cast<int>(left));
    }
    if (!state.is_down) time_.clear();
    state_ = state;
    show_words();
    update();
}

void code_window_button::set_now(double seconds) {
    if (!state_.is_down) return;
    const QString text = time_text(std::max(0.0, seconds - state_.down_since), time_form::run_time);
    if (text == time_) return;
    time_ = text;
    update();
}

void code_window_button::hold(double clock_seconds) {
    if (is_held_) return;
    is_held_ = true;
    Q_EMIT went_down(clock_seconds);
}

void code_window_button::let_go() {
    if (!is_held_) return;
    is_held_ = false;
    Q_EMIT went_up(steady_clock().seconds());
}

void code_window_button::mousePressEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) hold(moment_of(*event));
}

void code_window_button::mouseMoveEvent(QMouseEvent* event) {
    event->accept();
}

void code_window_button::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() != Qt::LeftButton || !is_held_) return;
    is_held_ = false;
    Q_EMIT went_up(moment_of(*event));
}

void code_window_button::keyPressEvent(QKeyEvent* event) {
    if (presses(*event)) {
        if (!event->isAutoRepeat()) hold(moment_of(*event));
    } else if (event->key() == Qt::Key_Up || event->key() == Qt::Key_Left) {
        focusNextPrevChild(false);
    } else if (event->key() == Qt::Key_Down || event->key() == Qt::Key_Right) {
        focusNextPrevChild(true);
    } else {
        event->ignore();
    }
}

void code_window_button::keyReleaseEvent(QKeyEvent* event) {
    if (!presses(*event)) {
        event->ignore();
    } else if (!event->isAutoRepeat() && is_held_) {
        is_held_ = false;
        Q_EMIT went_up(moment_of(*event));
    }
}

void code_window_button::focusOutEvent(QFocusEvent* event) {
    let_go();
    QAbstractButton::focusOutEvent(event);
}

void code_window_button::hideEvent(QHideEvent* event) {
    let_go();
    QAbstractButton::hideEvent(event);
}

void code_window_button::enterEvent(QEnterEvent*) {
    update();
}
void code_window_button::leaveEvent(QEvent*) {
    update();
}

void code_window_button::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    code_button_look shown{state_, time_, underMouse(), hasFocus(), isEnabled()};
    shown.state.is_down = looks_down();
    paint_code_button(painter, theme::current(), button_,
                      QRectF(rect()).adjusted(margin(), margin(), -margin(), -margin()), shown);
}

}  // namespace vistels
