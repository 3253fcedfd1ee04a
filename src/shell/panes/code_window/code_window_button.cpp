// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/code_window/code_window_button.h"

#include <QApplication>
#include <QEnterEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <utility>

#include "shell/keys/event_stamp.h"
#include "shell/kit/theme.h"
#include "shell/kit/theme_time_text.h"
#include "util/clock.h"

namespace vistels {
namespace {

constexpr int mouse_holder = -1;
constexpr int key_holder = -2;
constexpr QPointF centre(0.5, 0.5);

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
    setContextMenuPolicy(Qt::PreventContextMenu);
    for (QTimer* one : {&lingers_, &ping_time_, &blocked_time_}) {
        one->setSingleShot(true);
        connect(one, &QTimer::timeout, this, [this] { update(); });
    }
    // What assistive programs ask for is a press and its release.
    connect(this, &QAbstractButton::clicked, this, [this] {
        const double now = steady_clock().seconds();
        hold(key_holder, centre, now);
        release(key_holder, now);
    });
    show_words();
}

void code_window_button::set_button(code_button button) {
    if (button == button_) return;
    button_ = std::move(button);
    words_.reset();
    setText(button_.name);
    show_words();
    update();
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
    if (state_.found_none) {
        words += tr("\nThere was no clip to put it on");
        description += tr(", no clip to put it on");
    }
    if (state_.is_latched) words += tr("\nHeld down until its next press");
    if (state_.waits) {
        words += tr("\nGoes to the next qualifier");
        description += tr(", goes to the next qualifier");
    }
    if (!state_.output_problem.isEmpty()) {
        words += tr("\nIts formula cannot be counted: %1").arg(state_.output_problem);
        description += tr(", its formula cannot be counted: %1").arg(state_.output_problem);
    }
    if (state_.is_down) description += state_.is_latched ? tr(", held down") : tr(", down");
    if (!link_words_.isEmpty()) {
        words += QLatin1Char('\n') + link_words_.join(QLatin1Char('\n'));
        description += QStringLiteral(". ") + link_words_.join(QLatin1Char(' '));
    }
    setToolTip(words);
    setAccessibleDescription(description);
}

void code_window_button::set_state(const code_button_state& state) {
    if (state == state_) return;
    const bool goes_down = state.is_down && !state_.is_down;
    if (goes_down) {
        since_down_.start();
        lingers_.stop();
        if (!is_pressing_) show_ping(centre);
    }
    if (!state.is_down && state_.is_down) {
        const qint64 left = theme::current().motion.momentary - since_down_.elapsed();
        if (left > 0) lingers_.start(static_cast<int>(left));
    }
    if (!state.is_down && !button_.shows_clock) time_.clear();
    state_ = state;
    show_words();
    update();
}

void code_window_button::set_now(double seconds) {
    const bool shows_down_time = state_.is_down && (button_.shows_down_time || !button_.shows_clock);
    if (!shows_down_time && !button_.shows_clock) return;
    const QString text = shows_down_time
                             ? time_text(std::max(0.0, seconds - state_.down_since), time_form::run_time)
                             : time_text(seconds, time_form::ruler);
    if (text == time_) return;
    time_ = text;
    update();
}

void code_window_button::set_picture(const QImage& picture) {
    picture_ = picture;
    update();
}

void code_window_button::set_link_words(const QStringList& words) {
    if (words == link_words_) return;
    link_words_ = words;
    show_words();
}

void code_window_button::show_blocked() {
    blocked_time_.start(theme::current().motion.ping);
    update();
}

std::optional<QPointF> code_window_button::ping() const {
    return ping_time_.isActive() ? std::optional(ping_place_) : std::nullopt;
}

void code_window_button::show_ping(const QPointF& place) {
    if (!button_.shows_ping) return;
    ping_place_ = place;
    ping_time_.start(theme::current().motion.ping);
    update();
}

QPointF code_window_button::place_of(const QPointF& at) const {
    if (button_.fires_in_centre) return centre;
    const QRectF face = QRectF(rect()).adjusted(margin(), margin(), -margin(), -margin());
    return {std::clamp((at.x() - face.left()) / face.width(), 0.0, 1.0),
            std::clamp((at.y() - face.top()) / face.height(), 0.0, 1.0)};
}

void code_window_button::press(const QPointF& place, double clock_seconds, bool latches) {
    is_pressing_ = true;
    show_ping(place);
    Q_EMIT went_down(clock_seconds, place, latches);
    is_pressing_ = false;
}

void code_window_button::hold(int holder, const QPointF& place, double clock_seconds) {
    const bool is_first = holders_.empty();
    if (holders_.insert(holder).second && is_first) press(place, clock_seconds, false);
}

void code_window_button::release(int holder, double clock_seconds) {
    if (holder == key_holder) qApp->removeEventFilter(this);
    if (holders_.erase(holder) > 0 && holders_.empty()) Q_EMIT went_up(clock_seconds);
}

void code_window_button::touch(int id, const QPointF& at, double clock_seconds) {
    hold(id, place_of(at), clock_seconds);
}

void code_window_button::lift(int id, double clock_seconds) {
    release(id, clock_seconds);
}

void code_window_button::let_go() {
    if (std::exchange(holders_, {}).empty()) return;
    Q_EMIT went_up(steady_clock().seconds());
}

void code_window_button::mousePressEvent(QMouseEvent* event) {
    const bool latches =
        event->button() == Qt::RightButton ||
        (event->button() == Qt::LeftButton && event->modifiers().testFlag(Qt::ShiftModifier));
    if (latches) {
        press(place_of(event->position()), moment_of(*event), true);
    } else if (event->button() == Qt::LeftButton) {
        hold(mouse_holder, place_of(event->position()), moment_of(*event));
    }
}

void code_window_button::mouseMoveEvent(QMouseEvent* event) {
    event->accept();
}

void code_window_button::mouseReleaseEvent(QMouseEvent* event) {
    if (event->button() == Qt::LeftButton) release(mouse_holder, moment_of(*event));
}

void code_window_button::keyPressEvent(QKeyEvent* event) {
    if (presses(*event)) {
        if (!event->isAutoRepeat()) hold(key_holder, centre, moment_of(*event));
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
    } else if (!event->isAutoRepeat()) {
        release(key_holder, moment_of(*event));
    }
}

void code_window_button::focusInEvent(QFocusEvent* event) {
    QAbstractButton::focusInEvent(event);
    Q_EMIT attention_changed();
}

// The press may put the focus elsewhere, for its note: the key is held until it comes up.
void code_window_button::focusOutEvent(QFocusEvent* event) {
    if (event->reason() == Qt::ActiveWindowFocusReason) {
        release(key_holder, steady_clock().seconds());
    } else if (holders_.contains(key_holder)) {
        qApp->installEventFilter(this);
    }
    QAbstractButton::focusOutEvent(event);
    Q_EMIT attention_changed();
}

bool code_window_button::eventFilter(QObject* watched, QEvent* event) {
    const bool is_key = event->type() == QEvent::KeyPress || event->type() == QEvent::KeyRelease;
    const auto* widget = qobject_cast<const QWidget*>(watched);
    if (!is_key || !widget || widget->window() != window() || !presses(*static_cast<QKeyEvent*>(event)))
        return false;
    const auto& key = *static_cast<QKeyEvent*>(event);
    if (event->type() == QEvent::KeyRelease && !key.isAutoRepeat()) release(key_holder, moment_of(key));
    if (!holders_.contains(key_holder)) qApp->removeEventFilter(this);
    return true;
}

void code_window_button::hideEvent(QHideEvent* event) {
    let_go();
    QAbstractButton::hideEvent(event);
}

void code_window_button::resizeEvent(QResizeEvent* event) {
    words_.reset();
    QAbstractButton::resizeEvent(event);
}

// Other fonts, with the theme or without.
void code_window_button::changeEvent(QEvent* event) {
    words_.reset();
    QAbstractButton::changeEvent(event);
}

void code_window_button::enterEvent(QEnterEvent*) {
    update();
    Q_EMIT attention_changed();
}
void code_window_button::leaveEvent(QEvent*) {
    update();
    Q_EMIT attention_changed();
}

void code_window_button::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    code_button_look shown;
    shown.state = state_;
    shown.state.is_down = looks_down();
    shown.state.is_blocked = looks_blocked();
    shown.time = time_;
    shown.picture = picture_.isNull() ? nullptr : &picture_;
    shown.ping = ping();
    shown.is_hovered = underMouse();
    shown.has_focus = hasFocus();
    shown.is_enabled = isEnabled();
    const QRectF face = QRectF(rect()).adjusted(margin(), margin(), -margin(), -margin());
    if (!words_) words_ = code_button_layout_of(button_, face);
    shown.words = &*words_;
    paint_code_button(painter, theme::current(), button_, face, shown);
}

}  // namespace vistels
