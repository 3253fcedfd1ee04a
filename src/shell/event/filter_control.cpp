// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/filter_control.h"

#include <QApplication>
#include <algorithm>

#include "app/event/event_player.h"
#include "app/event/open_event.h"
#include "app/settings/step_settings.h"
#include "shell/kit/escape_key.h"
#include "shell/panes/timeline/timeline_state.h"
#include "shell/panes/timeline/timeline_view.h"
#include "video/synchronised_playback.h"

namespace vistels {

filter_control::filter_control(timeline_view& timeline, event_player& player, run_loop& loop)
    : timeline_(timeline), player_(player), loop_(loop) {
    connect(&timeline_, &timeline_view::hides_asked, this, &filter_control::choose_hides);
    connect(&timeline_, &timeline_view::play_passing_asked, this, &filter_control::play_all);
}

filter_control::~filter_control() = default;

void filter_control::set_event(open_event* event, clip_view* view) {
    play_all(false);
    connections_.clear();
    list_.reset();
    event_ = event;
    filtering_ = event ? &view->filtering() : nullptr;
    if (event) {
        list_ = std::make_unique<clip_playlist>(player_.commands(), event->playback().ticks(), loop_.time());
        connections_.push_back(list_->changed.connect([this] { follow_list(); }));
        connections_.push_back(filtering_->changed.connect([this](bool are_new) { follow(are_new); }));
    }
    shown_ = filtering_ ? filtering_->standing() : filter_standing();
    show(true);
}

bool filter_control::is_on() const {
    return filtering_ && filtering_->is_on();
}

std::size_t filter_control::passing_count() const {
    return filtering_ ? filtering_->standing().passing : 0;
}

void filter_control::follow(bool are_new) {
    const filter_standing before = std::exchange(shown_, filtering_->standing());
    // What the list plays is no longer what passes.
    if (before.text != shown_.text) play_all(false);
    // What an edit changed is read with the edit; only when all clips were judged anew any may have changed.
    const bool judged_all = before.text != shown_.text || (before.is_judging && !shown_.is_judging);
    show(are_new && judged_all);
}

void filter_control::show(bool are_new) {
    timeline_.show_filter(shown_, are_new);
    if (are_new) Q_EMIT verdicts_changed();
    Q_EMIT changed();
}

void filter_control::go_to_clip(int direction) {
    if (plays_all()) {
        const bool there_is_one = direction < 0 ? playing_ > 0 : playing_ + 1 < clips_.size();
        if (there_is_one) play_from(direction < 0 ? playing_ - 1 : playing_ + 1);
        return;
    }
    const std::string clip = timeline_.state().passing_clip_beside(direction);
    if (!clip.empty()) timeline_.go_to_clip(clip);
}

bool filter_control::plays_all() const {
    return list_ && list_->is_playing();
}

void filter_control::play_all(bool plays) {
    if (plays == plays_all() || !event_) return;
    if (!plays) {
        list_->stop();
        event_->playback().pause();
        return;
    }
    clips_ = clips_that_pass(event_->timeline().timeline(), filtering_->verdicts());
    if (!clips_.empty()) play_from(first_to_play());
    if (!plays_all()) Q_EMIT changed();  // the command that asked for it is not on
}

// Where somebody stopped, or went to, it goes on; but not with the last one alone.
std::size_t filter_control::first_to_play() const {
    const auto selected = timeline_.state().selected();
    if (selected.size() != 1) return 0;
    const auto at = std::find_if(clips_.begin(), clips_.end(),
                                 [&](const playlist_clip& one) { return one.uuid == selected.front(); });
    if (at == clips_.end() || at + 1 == clips_.end()) return 0;
    const double now = event_->playback().collection_time();
    return now < at->start || now >= at->end ? 0 : static_cast<std::size_t>(at - clips_.begin());
}

void filter_control::play_from(std::size_t index) {
    playing_ = index;
    list_->play({clips_.begin() + static_cast<std::ptrdiff_t>(index), clips_.end()}, {},
                load_step_settings(event_->places()).lead_in_seconds);
}

void filter_control::follow_list() {
    const std::string now = list_->current();
    if (now.empty()) {
        qApp->removeEventFilter(this);
        timeline_.show_playing(0, 0);
    } else {
        qApp->installEventFilter(this);
        while (playing_ + 1 < clips_.size() && clips_[playing_].uuid != now) ++playing_;
        timeline_.show_playing(playing_ + 1, clips_.size());
        timeline_.state().show(now);
    }
    Q_EMIT changed();
}

// While the clips play, Escape ends that, wherever the focus is.
bool filter_control::eventFilter(QObject* watched, QEvent* event) {
    const bool is_here =
        watched->isWidgetType() && static_cast<QWidget*>(watched)->window() == timeline_.window();
    if (!is_here || !accept_escape(event)) return QObject::eventFilter(watched, event);
    if (event->type() == QEvent::KeyPress) play_all(false);
    return true;
}

void filter_control::set_hides(bool hides) {
    if (hides == hides_) return;
    hides_ = hides;
    timeline_.set_hides_filtered_out(hides);
    Q_EMIT verdicts_changed();
    Q_EMIT changed();
}

// Without a filter there is nothing to be seen of it, but the wish holds for the next one.
void filter_control::choose_hides(bool hides) {
    set_hides(hides);
    Q_EMIT hides_chosen(hides);
}

}  // namespace vistels
