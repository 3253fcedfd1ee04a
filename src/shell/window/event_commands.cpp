// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/event_commands.h"

#include <QAction>
#include <QDesktopServices>
#include <QUrl>

#include "shell/event/collection_binder.h"
#include "shell/event/event_session.h"
#include "shell/kit/failure_words.h"
#include "shell/panes/collection/collection_pane.h"
#include "shell/panes/collection/transport_bar.h"
#include "shell/window/history_window.h"
#include "shell/window/steps_panel.h"
#include "shell/window/window_actions.h"

namespace vistels {

namespace {

constexpr double second = 1;

// "Undo" with the name of the step.
QString words_with(const QString& verb, const std::string& name) {
    return name.empty() ? verb : verb + QLatin1Char(' ') + words_of_term(name);
}

}  // namespace

event_commands::event_commands(window_actions& actions, event_session& session, job_group& jobs)
    : actions_(actions), session_(session), steps_(session, jobs) {
    connect_event();
    connect_transport();
    connect(&session, &event_session::facts_changed, this, &event_commands::show_state);
    connect(&session, &event_session::closed, this, &event_commands::show_state);
    show_state();
}

void event_commands::connect_event() {
    const auto on = [&](command which, auto does) {
        connect(actions_[which], &QAction::triggered, this, does);
    };
    on(command::show_folder,
       [this] { QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(session_.folder()))); });
    on(command::save, [this] { session_.save(); });
    on(command::undo, [this] { steps_.undo(); });
    on(command::redo, [this] { steps_.redo(); });
    on(command::undo_history, [this] { show_history(); });
}

void event_commands::show_history() {
    if (!history_) {
        history_ = new history_window(session_, qobject_cast<QWidget*>(actions_.parent()));
        history_->setAttribute(Qt::WA_DeleteOnClose);
        connect(history_, &history_window::asked, this, [this](std::size_t done) { steps_.go_to(done); });
    }
    history_->show();
    history_->raise();
    history_->activateWindow();
}

void event_commands::connect_transport() {
    event_player& player = session_.player();
    const auto on = [&](command which, auto does) {
        connect(actions_[which], &QAction::triggered, this, does);
    };
    on(command::play, [&player] { player.play_or_pause(); });
    on(command::shuttle_back, [&player] { player.shuttle(-1); });
    on(command::pause, [&player] { player.pause(); });
    on(command::shuttle_on, [&player] { player.shuttle(1); });
    on(command::slower_back, [&player] { player.play_slower(-1); });
    on(command::slower_on, [&player] { player.play_slower(1); });
    on(command::frame_back, [&player] { player.step(-1); });
    on(command::frame_on, [&player] { player.step(1); });
    on(command::frames_back, [&player] { player.step_several(-1); });
    on(command::frames_on, [&player] { player.step_several(1); });
    on(command::steps, [this] { ask_steps(); });
    on(command::second_back, [&player] { player.jump(-second); });
    on(command::second_on, [&player] { player.jump(second); });
    on(command::to_start, [&player] { player.to_start(); });
    on(command::to_end, [&player] { player.to_end(); });
    on(command::rate_half, [&player] { player.set_rate(0.5); });
    on(command::rate_one, [&player] { player.set_rate(1); });
    on(command::rate_two, [&player] { player.set_rate(2); });
    on(command::loop, [&player](bool loops) { player.set_looping(loops); });
    on(command::mute, [&player](bool mutes) { player.set_muted(mutes); });
    const auto change_volume = [this](int steps) {
        session_.player().change_volume(steps);
        session_.keep_volumes();
    };
    on(command::louder, [change_volume] { change_volume(1); });
    on(command::softer, [change_volume] { change_volume(-1); });
    on(command::keep_pitch, [this](bool keeps) {
        session_.choose_pitch(keeps ? pitch_algorithm::time_domain : pitch_algorithm::varispeed);
    });
    on(command::volumes, [this] {
        if (auto* shown = session_.binders().current<collection_binder>()) shown->view().bar().show_volumes();
    });
    on(command::all_vistels, [&player] { player.enlarge({}); });
    on(command::playback_health, [this](bool shows) { session_.set_shows_health(shows); });
    connect(&session_, &event_session::shows_health_changed, actions_[command::playback_health],
            &QAction::setChecked);
    on(command::next_vistel, [&player] { player.enlarge_next(); });
}

void event_commands::ask_steps() {
    const open_event* const event = session_.shown_event();
    if (!event) return;
    auto* asked =
        new steps_panel(load_step_settings(event->places()), qobject_cast<QWidget*>(actions_.parent()));
    asked->setAttribute(Qt::WA_DeleteOnClose);
    connect(asked, &QDialog::accepted, this, [this, asked, places = event->places()] {
        session_.notices().tell_not_remembered(save_step_settings(places, asked->chosen()));
    });
    asked->open();
}

void event_commands::show_state() {
    actions_.set_event_open(session_.is_open());
    open_event* event = session_.shown_event();
    const bool can_undo = event && event->undo().can_undo();
    const bool can_redo = event && event->undo().can_redo();
    actions_[command::undo]->setEnabled(can_undo);
    actions_[command::redo]->setEnabled(can_redo);
    actions_[command::undo]->setText(
        words_with(tr("Undo"), can_undo ? event->undo().undo_name() : std::string()));
    actions_[command::redo]->setText(
        words_with(tr("Redo"), can_redo ? event->undo().redo_name() : std::string()));
    actions_[command::loop]->setChecked(session_.player().is_looping());
    actions_[command::mute]->setChecked(session_.player().is_muted());
    actions_[command::keep_pitch]->setChecked(event &&
                                              event->playback().pitch() == pitch_algorithm::time_domain);
}

}  // namespace vistels
