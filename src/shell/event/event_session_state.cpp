// SPDX-License-Identifier: GPL-3.0-or-later
// What lasts in a session: saving that fails, a timeline that can only be read, a clock without pictures.
#include <algorithm>
#include <cmath>

#include "shell/event/event_messages.h"
#include "shell/event/event_session.h"
#include "shell/event/read_only_guard.h"
#include "shell/kit/theme_time_text.h"
#include "shell/panes/code_window/code_window_view.h"
#include "shell/panes/collection/collection_pane.h"
#include "shell/panes/collection/transport_bar.h"
#include "shell/panes/timeline/timeline_view.h"
#include "timeline/files/writer_lock.h"
#include "video/synchronised_playback.h"

namespace vistels {

namespace {

// What the vistels lack is told when they are seen already.
constexpr double alert_delay_seconds = 0.1;
// How often the other program is looked for.
constexpr double watch_seconds = 2;
// By so much the range of a clock without pictures grows, so that what is shown does not move all the time.
constexpr double end_step_seconds = 60;

}  // namespace

void event_session::tell_save(const std::string& problem) {
    const QString reason = QString::fromStdString(problem);
    if (problem.empty()) {
        Q_EMIT state_over(QLatin1String(save_failed_key));
    } else {
        Q_EMIT told(save_failed_message(name(), folder(), reason));
    }
    Q_EMIT saved(reason);
}

void event_session::tell_trouble(const std::string& reason) {
    if (reason.empty()) return;
    Q_EMIT told({user_message::tone::error,
                 tr("Presses are kept in memory only"),
                 QString::fromStdString(reason),
                 tr("They are recorded as soon as that is possible."),
                 {}});
}

void event_session::tell_made_again(const std::string& button) {
    Q_EMIT told({user_message::tone::warning,
                 tr("A clip of \"%1\" was missing and was made again").arg(QString::fromStdString(button)),
                 tr("It has the times of its press. What was stamped on it while it grew may be gone."),
                 tr("Look at it before you go on."),
                 {}});
}

void event_session::save_in_background() {
    if (event_) event_->timeline().save_soon();
}

void event_session::show_opening() {
    timeline_document& timeline = event_->timeline();
    opening_report report;
    report.event = name();
    report.folder = event_->folder();
    // What the journal of a program at work holds is that program's, and nothing that was put back.
    if (!timeline.is_held_elsewhere()) report.recovered_edits = event_->recovered_edits();
    for (const auto& uuid : timeline.finished_clips()) {
        const auto place = timeline.timeline().find_clip(uuid);
        if (const auto row = place ? timeline.timeline().row(place->row) : nullptr) {
            report.finished << tr("%1 until %2")
                                   .arg(QString::fromStdString(row->name()),
                                        time_text(place->clip->secs_end(), time_form::ruler));
        }
    }
    report.conflicts = timeline.conflicts();
    for (const auto& message : event_->messages()) {
        // That it can only be read is a state, told for itself.
        const bool is_state = timeline.is_read_only() && message.starts_with(timeline.read_only_reason());
        if (!is_state) report.messages.push_back(message);
    }
    for (auto& message : messages_of_opening(report)) Q_EMIT told(message);
    show_read_only();
    if (event_->alerts().empty()) return;
    alert_timer_ = loop_.start_timer(alert_delay_seconds, false, [this] {
        alert_timer_ = 0;
        tell_alerts();
    });
}

void event_session::tell_alerts() {
    for (const auto& alert : event_->alerts()) Q_EMIT told(shortage_message(name(), alert));
}

void event_session::try_to_write(bool take_over) {
    if (!event_) return;
    if (const auto done = event_->try_to_write(take_over); done) return;
    show_read_only();
    read_only_->flash();
}

void event_session::show_buttons() {
    auto buttons = source_of(event_->logger(), event_->timeline(), event_->playback());
    if (event_->timeline().is_read_only()) {
        buttons = refusing(std::move(buttons), [this](const QString& button) { refuse_press(button); });
    }
    panes_.code->set_source(std::move(buttons));
}

void event_session::show_read_only() {
    const bool is_read_only = event_ && event_->timeline().is_read_only();
    if (watch_timer_ != 0) loop_.stop_timer(std::exchange(watch_timer_, 0));
    read_only_->setVisible(is_read_only);
    if (!is_read_only) {
        for (const char* over : {read_only_key, refused_press_key, refused_change_key}) {
            Q_EMIT state_over(QLatin1String(over));
        }
        return;
    }
    timeline_document& timeline = event_->timeline();
    read_only_->show_reason(QString::fromStdString(timeline.read_only_reason()));
    user_message message = read_only_message(name(), timeline.read_only_reason());
    message.choices = {{tr("Continue"), {}}, {tr("Try Again"), [this] { try_to_write(false); }, true}};
    if (timeline.is_held_elsewhere()) {
        // Only a person knows that the other program is not at work on it any more.
        message.choices.push_back({tr("Take Over"), [this] { try_to_write(true); }, true});
        message.detail = tr("Taking over may cost the other program what it has not saved yet.");
    }
    Q_EMIT told(message);
    watch_timer_ = loop_.start_timer(watch_seconds, true, [this] { watch_writer(); });
}

void event_session::watch_writer() {
    const bool may_be_free = event_ && event_->timeline().is_held_elsewhere() && !read_only_->is_free();
    if (may_be_free && writer_lock::take(event_->folder())) read_only_->show_free();
}

void event_session::refuse_press(const QString& button) {
    read_only_->flash();
    user_message message = refused_press_message(button, name());
    Q_EMIT state_over(message.key);
    Q_EMIT told(message);
}

void event_session::refuse_change(const QString& reason) {
    if (event_ && event_->timeline().is_read_only()) read_only_->flash();
    user_message message{user_message::tone::error, tr("This could not be changed"), reason, {}, {}};
    message.key = QLatin1String(refused_change_key);
    message.comes_first = true;
    Q_EMIT state_over(message.key);
    Q_EMIT told(message);
}

double event_session::shown_end() const {
    const double last = std::max(event_->end_seconds(), event_->timeline().timeline().last_end());
    if (!event_->runs_on_clock()) return last;
    return std::max(1.0, std::ceil(last / end_step_seconds)) * end_step_seconds;
}

// Where there are no pictures the event is as long as what was coded, or as the clock has run.
void event_session::follow_end(double seconds) {
    const double end = shown_end();
    if (end <= end_shown_ && seconds <= end_shown_) return;
    end_shown_ = end;
    panes_.collection->bar().set_range(event_->start_seconds(), end);
    panes_.timeline->set_reach(event_->start_seconds(), end);
}

}  // namespace vistels
