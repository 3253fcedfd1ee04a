// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/program/screenshot.h"

#include <QPixmap>
#include <chrono>
#include <utility>

#include "app/event/clip_filtering.h"
#include "shell/event/event_session.h"
#include "shell/panes/timeline/timeline_view.h"
#include "shell/window/event_opener.h"
#include "shell/window/main_window.h"
#include "video/synchronised_playback.h"

namespace vistels {

namespace {

constexpr auto interval = std::chrono::milliseconds(50);
constexpr int most_looks = 600;
// The pictures stand, and animations are over, when this many looks in a row found nothing under way.
constexpr int enough_looks = 10;

}  // namespace

screenshot::screenshot(main_window& window, screenshot_wish wish, std::function<void(bool)> done)
    : window_(window), wish_(std::move(wish)), done_(std::move(done)) {
    connect(&window.opener(), &event_opener::settled, this, [this] {
        if (!window_.session().is_open()) finish(false);
    });
    timer_.setInterval(interval);
    connect(&timer_, &QTimer::timeout, this, &screenshot::look);
    timer_.start();
}

bool screenshot::is_filtered() {
    clip_filtering& filtering = window_.session().shown_event()->filtering();
    const filter_standing& standing = filtering.standing();
    if (standing.typed != wish_.filter) filtering.apply(wish_.filter);
    return !standing.is_judging;
}

void screenshot::prepare() {
    prepared_ = true;
    event_session& session = window_.session();
    if (wish_.at_seconds >= 0) session.player().seek(wish_.at_seconds);
    const double now = session.shown_event()->playback().collection_time();
    select_clip(now);
    session.player().seek(now);
}

void screenshot::select_clip(double seconds) {
    std::string last;
    double start = -1;
    const clip_view& view = window_.session().shown_event()->view();
    for (const auto& row : view.timeline().rows()) {
        for (const auto& clip : row->clips()) {
            if (clip->secs_start() > seconds || clip->secs_start() <= start) continue;
            if (!view.verdicts().passes(*clip)) continue;
            start = clip->secs_start();
            last = clip->id();
        }
    }
    if (!last.empty()) window_.timeline().select({last});
}

void screenshot::look() {
    event_session& session = window_.session();
    if (!session.is_open()) return;
    if (++looks_ > most_looks) return finish(false);
    if (!session.has_all_pictures()) return;
    if (!is_filtered()) return;
    if (!prepared_) return prepare();
    settled_looks_ = session.shown_event()->playback().is_settled() ? settled_looks_ + 1 : 0;
    if (settled_looks_ < enough_looks) return;
    finish(window_.grab().save(QString::fromStdString(wish_.file)));
}

void screenshot::finish(bool written) {
    timer_.stop();
    done_(written);
}

}  // namespace vistels
