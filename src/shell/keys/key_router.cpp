// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/keys/key_router.h"

#include <QAbstractSpinBox>
#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QTextEdit>
#include <algorithm>
#include <utility>

#include "shell/keys/event_stamp.h"

namespace vistels {

namespace {

bool is_text_field(const QWidget* widget) {
    if (const auto* line = qobject_cast<const QLineEdit*>(widget)) return !line->isReadOnly();
    if (const auto* text = qobject_cast<const QTextEdit*>(widget)) return !text->isReadOnly();
    if (const auto* plain = qobject_cast<const QPlainTextEdit*>(widget)) return !plain->isReadOnly();
    if (const auto* box = qobject_cast<const QComboBox*>(widget)) return box->isEditable();
    return qobject_cast<const QAbstractSpinBox*>(widget) != nullptr;
}

// The key as a thing on the keyboard: its letter may have changed by the time it is released (Shift).
std::uint64_t physical_key(const QKeyEvent& event) {
    if (event.nativeScanCode() != 0) return event.nativeScanCode();
    return (std::uint64_t{1} << 32) | static_cast<std::uint32_t>(event.key());
}

// Longer than the two halves of a repeat are apart, shorter than anyone notices; the release counts from its
// own time stamp all the same. With what a timer takes longer, which is up to a millisecond, 12.
constexpr int pending_milliseconds = 11;

bool is_arrow(const QKeyEvent& event) {
    return event.key() >= Qt::Key_Left && event.key() <= Qt::Key_Down;
}

}  // namespace

key_router::key_router(QWidget& window, const clock& time) : window_(&window), time_(time) {
    pending_time_.setSingleShot(true);
    pending_time_.setTimerType(Qt::PreciseTimer);
    connect(&pending_time_, &QTimer::timeout, this, &key_router::finish_releases);
    qApp->installEventFilter(this);
}

key_router::~key_router() {
    release_all();
}

void key_router::set_code(code_keys code) {
    release_all();
    code_ = std::move(code);
}

void key_router::release_all() {
    finish_releases();
    const double now = time_.seconds();
    for (const auto& [key, buttons] : std::exchange(held_, {})) {
        for (const auto& button : buttons) code_.release(button, now);
    }
}

bool key_router::eventFilter(QObject* watched, QEvent* event) {
    switch (event->type()) {
        case QEvent::WindowDeactivate:
            if (watched == window_) {
                release_all();
                if (code_.window_left) code_.window_left(time_.seconds());
            }
            return false;
        case QEvent::ShortcutOverride:
            if (!is_unmarked_repeat(*static_cast<QKeyEvent*>(event))) finish_releases();
            return takes_keys_of(watched) && override_shortcut(*static_cast<QKeyEvent*>(event));
        case QEvent::KeyPress:
            return (takes_keys_of(watched) || repeats_held(watched, *static_cast<QKeyEvent*>(event))) &&
                   press(*static_cast<QKeyEvent*>(event));
        case QEvent::MouseButtonPress:
            finish_releases();
            end_typing(watched);
            return false;
        case QEvent::KeyRelease:
            // Also when the focus has gone into a text field since: what is held must come up.
            return watched->isWidgetType() && release(*static_cast<QKeyEvent*>(event));
        default:
            return false;
    }
}

bool key_router::takes_keys_of(QObject* watched) const {
    if (!code_.buttons_for || !window_ || !watched->isWidgetType()) return false;
    const auto* widget = static_cast<const QWidget*>(watched);
    if (widget->window() != window_ || QApplication::activePopupWidget()) return false;
    return window_->isActiveWindow() && !is_text_field(QApplication::focusWidget());
}

// A key that is held goes on repeating when its press has put the focus into a text field.
bool key_router::repeats_held(QObject* watched, const QKeyEvent& event) const {
    if (!watched->isWidgetType()) return false;
    const std::uint64_t key = physical_key(event);
    const bool is_pending = std::any_of(pending_.begin(), pending_.end(),
                                        [key](const pending_release& one) { return one.key == key; });
    return held_.contains(key) || (is_pending && is_unmarked_repeat(event));
}

void key_router::end_typing(QObject* watched) const {
    QWidget* typing = QApplication::focusWidget();
    if (!typing || !is_text_field(typing) || !watched->isWidgetType()) return;
    const auto* clicked = static_cast<const QWidget*>(watched);
    const bool inside = clicked == typing || typing->isAncestorOf(clicked);
    if (!inside && clicked->window() == window_ && typing->window() == window_) typing->clearFocus();
}

// Keeps a bound key from being taken for a shortcut of a menu; the press follows as an event of its own.
bool key_router::override_shortcut(QKeyEvent& event) {
    const bool repeats = is_unmarked_repeat(event) && !is_arrow(event);
    if (!repeats && code_.buttons_for(event).empty()) return false;
    event.accept();
    return true;
}

bool key_router::press(QKeyEvent& event) {
    const std::uint64_t key = physical_key(event);
    if (is_unmarked_repeat(event)) {
        // The key never came up: what it pressed stays down.
        const auto pending = std::find_if(pending_.begin(), pending_.end(),
                                          [&](const pending_release& one) { return one.key == key; });
        if (pending == pending_.end()) return !is_arrow(event);
        held_.emplace(key, std::move(pending->buttons));
        pending_.erase(pending);
        return true;
    }
    finish_releases();
    if (held_.contains(key)) return true;
    std::vector<std::string> buttons = code_.buttons_for(event);
    if (event.isAutoRepeat()) return !buttons.empty();
    const double at = event_seconds(event.timestamp(), time_.seconds());
    if (buttons.empty()) return !event.modifiers() && takes_unbound(event.key(), at);
    held_.emplace(key, buttons);
    for (const auto& button : buttons) code_.press(button, at);
    return true;
}

bool key_router::takes_unbound(int key, double at) const {
    if (key == Qt::Key_Tab) return code_.tab && code_.tab(at);
    return key == Qt::Key_Escape && code_.escape && code_.escape(at);
}

// Some window systems send a held key as release and press over and over, both with one time stamp, and Qt
// does not always see that they belong together. So a release waits for a moment whether such a press
// follows.
bool key_router::release(QKeyEvent& event) {
    const std::uint64_t key = physical_key(event);
    if (event.isAutoRepeat()) return held_.contains(key);
    last_key_ = key;
    last_stamp_ = event.timestamp();
    const auto held = held_.find(key);
    if (held == held_.end()) return false;
    const double at = event_seconds(event.timestamp(), time_.seconds());
    pending_.push_back({key, event.timestamp(), at, std::move(held->second)});
    held_.erase(held);
    if (event.timestamp() == 0) {
        finish_releases();
    } else {
        pending_time_.start(pending_milliseconds);
    }
    return true;
}

bool key_router::is_unmarked_repeat(const QKeyEvent& event) const {
    return last_stamp_ != 0 && event.timestamp() == last_stamp_ && physical_key(event) == last_key_ &&
           !event.isAutoRepeat();
}

void key_router::finish_releases() {
    pending_time_.stop();
    for (const auto& one : std::exchange(pending_, {})) {
        for (const auto& button : one.buttons) code_.release(button, one.at);
    }
}

}  // namespace vistels
