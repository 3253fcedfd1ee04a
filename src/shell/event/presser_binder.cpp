// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/presser_binder.h"

#include <random>
#include <utility>

#include "app/event/automatic_presser.h"
#include "app/event/open_event.h"
#include "shell/event/event_notices.h"
#include "shell/event/event_session.h"

namespace vistels {

presser_binder::presser_binder(event_session& session) : session_(session) {}

presser_binder::~presser_binder() = default;

void presser_binder::show(open_event* event) {
    end_work();
    event_ = event;
    if (!event_) return;
    const bool is_another = std::exchange(event_is_left_, false);
    if (!is_on()) return;
    if (is_another) return turn_off();
    make_presser();
}

void presser_binder::end_work() {
    event_is_left_ = event_is_left_ || event_;
    presser_.reset();
    tell();
}

void presser_binder::set_settings(const test_press_settings& settings) {
    settings_ = settings;
    if (!event_) return;
    event_is_left_ = false;
    if (!is_on()) {
        presser_.reset();
        return tell();
    }
    if (presser_) return presser_->set_settings(settings);
    make_presser();
}

void presser_binder::make_presser() {
    presser_ = std::make_unique<automatic_presser>(*event_, session_.loop(), std::random_device{}());
    changed_ = presser_->changed.connect([this] { tell(); });
    presser_->set_settings(settings_);
}

void presser_binder::turn_off() {
    test_press_settings off = settings_;
    off.presses_buttons = false;
    set_settings(off);
    ended.emit();
}

// Later, when what opening the event found has been told, which would stand before it.
void presser_binder::tell() {
    guard_.drop();
    if (!presser_ || !presser_->is_pressing()) return session_.notices().tell_pressing_over();
    session_.loop().post(
        guard_.guarded([this] { session_.notices().tell_pressing([this] { turn_off(); }); }));
}

}  // namespace vistels
