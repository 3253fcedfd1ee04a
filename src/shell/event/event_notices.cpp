// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/event_notices.h"

#include <utility>

#include "app/event/open_event.h"
#include "logger/press_engine.h"
#include "shell/event/event_messages.h"
#include "shell/kit/failure_words.h"
#include "shell/kit/theme_time_text.h"
#include "timeline/files/timeline_file_failures.h"

namespace vistels {

namespace {

// What the vistels lack is told when they are seen already.
constexpr double alert_delay_seconds = 0.1;

opening_report report_of(open_event& event) {
    timeline_document& timeline = event.timeline();
    opening_report report;
    report.event = QString::fromStdString(event.name());
    report.folder = event.folder();
    // What the journal of a program at work holds is that program's, and nothing that was put back.
    if (!timeline.is_held_elsewhere()) report.recovered_edits = event.recovered_edits();
    for (const auto& uuid : timeline.finished_clips()) {
        const auto place = timeline.timeline().find_clip(uuid);
        if (const auto row = place ? timeline.timeline().row(place->row) : nullptr) {
            report.finished << event_notices::tr("%1 until %2")
                                   .arg(QString::fromStdString(row->name()),
                                        time_text(place->clip->secs_end(), time_form::ruler));
        }
    }
    report.conflicts = timeline.conflicts();
    for (const auto& message : event.messages()) {
        // That it can only be read is a state, told for itself.
        const bool is_state = message.is(timeline_is_only_read_here) || message.is(timeline_is_only_read);
        if (!is_state) report.messages.push_back(message);
    }
    return report;
}

}  // namespace

event_notices::event_notices(run_loop& loop) : loop_(loop), access_(loop) {}

event_notices::~event_notices() {
    if (alert_timer_ != 0) loop_.stop_timer(alert_timer_);
}

QString event_notices::name() const {
    return event_ ? QString::fromStdString(event_->name()) : QString();
}

void event_notices::set_event(open_event* event) {
    if (alert_timer_ != 0) loop_.stop_timer(std::exchange(alert_timer_, 0));
    connections_.clear();
    // What is so at opening is told with the rest of it.
    access_changed_.disconnect();
    event_ = event;
    access_.set_event(event);
    if (event_) return follow_event();
    tell_access();
    Q_EMIT state_over(QLatin1String(save_failed_key));
}

void event_notices::follow_event() {
    timeline_document& timeline = event_->timeline();
    press_engine& logger = event_->logger();
    access_changed_ = access_.changed.connect([this] {
        if (!access_.is_free()) tell_access();
    });
    connections_.push_back(logger.trouble.connect([this](const failure& why) { tell_trouble(why); }));
    connections_.push_back(
        logger.made_again.connect([this](const std::string& button) { tell_made_again(button); }));
    connections_.push_back(
        event_->save_ended.connect([this](const failure& problem) { tell_save(problem); }));
    connections_.push_back(timeline.access_changed.connect([this] { tell_code_window(); }));
    const auto tell_conflict = [this](const file_conflict& conflict) {
        Q_EMIT told(conflict_message(name(), conflict));
    };
    connections_.push_back(timeline.conflict.connect(tell_conflict));
    connections_.push_back(event_->collection_file().conflict.connect(tell_conflict));
}

void event_notices::tell_opening() {
    if (!event_) return;
    for (auto& message : messages_of_opening(report_of(*event_))) Q_EMIT told(message);
    tell_access();
    tell_code_window();
    if (event_->alerts().empty()) return;
    alert_timer_ = loop_.start_timer(alert_delay_seconds, false, [this] {
        alert_timer_ = 0;
        tell_alerts();
    });
}

void event_notices::tell_code_window() {
    if (event_->timeline().is_read_only() || !event_->code_window_is_linked_elsewhere()) return;
    Q_EMIT told({user_message::tone::warning,
                 tr("The code window of “%1” belongs to another timeline").arg(name()),
                 tr("What you press goes into the timeline that is open here."),
                 {},
                 {{tr("Continue"), {}}, {tr("Link Here"), [this, folder = event_->folder()] {
                                             if (event_ && event_->folder() == folder)
                                                 event_->link_code_window();
                                         }}}});
}

void event_notices::tell_alerts() {
    for (const auto& alert : event_->alerts()) Q_EMIT told(shortage_message(name(), alert));
}

void event_notices::tell_access() {
    if (!access_.is_read_only()) {
        for (const char* over : {read_only_key, refused_press_key, refused_change_key}) {
            Q_EMIT state_over(QLatin1String(over));
        }
        return;
    }
    user_message message = read_only_message(name(), access_.reason());
    message.choices = {{tr("Continue"), {}},
                       {tr("Try Again"), [this] { access_.try_to_write(false); }, true}};
    if (access_.is_held_elsewhere()) {
        // Only a person knows that the other program is not at work on it any more.
        message.choices.push_back({tr("Take Over"), [this] { access_.try_to_write(true); }, true});
        message.detail = tr("Taking over may cost the other program what it has not saved yet.");
    }
    Q_EMIT told(message);
}

void event_notices::tell(const result<void>& done) {
    if (!done) tell_failure(tr("This could not be done"), done.error());
}

void event_notices::tell_failure(const QString& headline, const failure& reason) {
    tell_failure(headline, words_of(reason));
}

void event_notices::tell_failure(const QString& headline, const QString& text) {
    Q_EMIT told({user_message::tone::error, headline, text, {}, {}});
}

void event_notices::tell_good(const QString& headline, const QString& text) {
    Q_EMIT told({user_message::tone::good, headline, text, {}, {}});
}

void event_notices::tell_not_remembered(const result<void>& kept) {
    if (kept) return;
    Q_EMIT told(
        {user_message::tone::warning, tr("The setting is not remembered"), words_of(kept.error()), {}, {}});
}

void event_notices::tell_save(const failure& problem) {
    const QString reason = words_of(problem);
    if (!problem) {
        Q_EMIT state_over(QLatin1String(save_failed_key));
    } else if (event_) {
        Q_EMIT told(save_failed_message(name(), event_->folder(), reason));
    }
    Q_EMIT saved(reason);
}

void event_notices::tell_trouble(const failure& reason) {
    if (!reason) return;
    Q_EMIT told({user_message::tone::error,
                 tr("Presses are kept in memory only"),
                 words_of(reason),
                 tr("They are recorded as soon as that is possible."),
                 {}});
}

void event_notices::tell_made_again(const std::string& button) {
    Q_EMIT told({user_message::tone::warning,
                 tr("A clip of \"%1\" was missing and was made again").arg(QString::fromStdString(button)),
                 tr("It has the times of its press. What was stamped on it while it grew may be gone."),
                 tr("Look at it before you go on."),
                 {}});
}

void event_notices::refuse_press(const QString& button) {
    access_.note_refusal();
    tell_anew(refused_press_message(button, name()));
}

void event_notices::tell_pressing(std::function<void()> stop) {
    Q_EMIT told(pressing_message(name(), std::move(stop)));
}

void event_notices::tell_pressing_over() {
    Q_EMIT state_over(QLatin1String(pressing_key));
}

void event_notices::refuse_change(const QString& reason) {
    access_.note_refusal();
    user_message message{user_message::tone::error, tr("This could not be changed"), reason, {}, {}};
    message.key = QLatin1String(refused_change_key);
    message.comes_first = true;
    tell_anew(message);
}

// Shown again when the user has sent it away before: it answers what was done just now.
void event_notices::tell_anew(const user_message& message) {
    Q_EMIT state_over(message.key);
    Q_EMIT told(message);
}

}  // namespace vistels
