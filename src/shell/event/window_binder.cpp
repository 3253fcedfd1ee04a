// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/window_binder.h"

#include <QKeyEvent>

#include "app/event/open_event.h"
#include "logger/press_engine.h"
#include "shell/event/binder_list.h"
#include "shell/event/event_notices.h"
#include "shell/event/event_session.h"
#include "shell/keys/key_router.h"
#include "shell/keys/key_strokes.h"
#include "shell/kit/refresh_rate.h"

namespace vistels {

window_binder::window_binder(QWidget& window, event_session& session)
    : session_(session),
      keys_(std::make_unique<key_router>(window, session.loop().time())),
      rate_(new refresh_rate(window)) {
    connect(rate_, &refresh_rate::changed, this, [this](double hertz) {
        if (event_) event_->playback().ticks().set_rate(hertz);
    });
}

window_binder::~window_binder() {
    delete rate_;
}

void window_binder::let_go() {
    keys_->release_all();
}

void window_binder::show(open_event* event) {
    event_ = event;
    if (!event) return keys_->set_code({});
    press_engine& engine = event->logger();
    synchronised_playback& playback = event->playback();
    playback.ticks().set_rate(rate_->hertz());
    keys_->set_code({
        [&engine](const QKeyEvent& key) { return engine.buttons_for_key(key_stroke_of(key)); },
        [this](const std::string& button, double at) { press(button, at); },
        [&engine, &playback](const std::string& button, double at) {
            engine.release(button, playback.collection_time_at(at));
        },
        [&engine, &playback](double at) {
            if (engine.down_buttons().empty()) return false;
            engine.tab(playback.collection_time_at(at));
            return true;
        },
        [&engine, &playback](double at) { return engine.escape(playback.collection_time_at(at)); },
        [this](double) {
            for (event_binder* one : session_.binders().all()) one->let_go();
        },
    });
}

void window_binder::press(const std::string& button, double clock_seconds) {
    press_engine& engine = event_->logger();
    if (!event_->timeline().is_read_only()) {
        engine.press(button, event_->playback().collection_time_at(clock_seconds));
    } else if (const auto* pressed = engine.button(button)) {
        session_.notices().refuse_press(QString::fromStdString(pressed->name()));
    }
}

}  // namespace vistels
