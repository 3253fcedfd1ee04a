// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/code_commands.h"

#include <QAction>
#include <QInputDialog>
#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "app/event/open_event.h"
#include "app/settings/code_window_settings.h"
#include "logger/press_engine.h"
#include "shell/event/event_notices.h"
#include "shell/event/event_session.h"
#include "shell/event/presser_binder.h"
#include "shell/panes/code_window/link_words.h"
#include "shell/window/dry_run_panel.h"
#include "shell/window/presser_panel.h"
#include "shell/window/window_actions.h"
#include "video/synchronised_playback.h"

namespace vistels {

namespace {

constexpr double longest_margin_seconds = 600;
constexpr std::size_t most_buttons_in_script = 12;

presser_binder& add_presser(event_session& session) {
    auto made = std::make_unique<presser_binder>(session);
    presser_binder& added = *made;
    session.attach(std::move(made));
    return added;
}

}  // namespace

code_commands::code_commands(QWidget& window, window_actions& actions, event_session& session,
                             home_places places)
    : window_(window),
      actions_(actions),
      session_(session),
      places_(std::move(places)),
      settings_(load_press_settings(places_)),
      presser_settings_(load_test_press_settings(places_)),
      presser_(add_presser(session)),
      pressing_ended_(presser_.ended.connect([this] { turn_presser_off(); })) {
    const auto on = [&](command which, auto does) {
        connect(actions_[which], &QAction::triggered, this, does);
    };
    on(command::release_buttons, [this] { session_.release_buttons(); });
    const auto sets = [&](command which, bool press_settings::*flag) {
        on(which, [this, flag](bool checked) {
            press_settings coming = settings_;
            coming.*flag = checked;
            choose(coming);
        });
    };
    sets(command::bring_qualifiers_inside, &press_settings::bring_qualifiers_inside_clip);
    on(command::margin_beside_clips, [this] { ask_margin(); });
    sets(command::dont_save_live_clips, &press_settings::dont_save_live_clips);
    sets(command::disable_triggers, &press_settings::disable_triggers);
    on(command::press_automatically, [this] { ask_presser(); });
    on(command::dry_run, [this] { ask_dry_run(); });
    show_settings();
}

void code_commands::set_settings(const press_settings& settings) {
    settings_ = settings;
    if (open_event* event = session_.shown_event()) event->logger().set_settings(settings);
    show_settings();
}

void code_commands::choose(const press_settings& settings) {
    set_settings(settings);
    session_.notices().tell_not_remembered(save_press_settings(places_, settings));
    Q_EMIT settings_chosen(settings);
}

void code_commands::ask_margin() {
    auto* panel = new QInputDialog(&window_);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->setObjectName(QStringLiteral("margin_beside_clips"));
    panel->setWindowTitle(tr("Margin Beside Clips"));
    panel->setLabelText(tr("A qualifier pressed this many seconds beside a clip is brought inside it:"));
    panel->setInputMode(QInputDialog::DoubleInput);
    panel->setDoubleDecimals(1);
    panel->setDoubleRange(0, longest_margin_seconds);
    panel->setDoubleValue(settings_.margin_padding_seconds);
    connect(panel, &QInputDialog::doubleValueSelected, this, [this](double seconds) {
        press_settings coming = settings_;
        coming.margin_padding_seconds = seconds;
        choose(coming);
    });
    panel->open();
}

void code_commands::set_presser(const test_press_settings& settings, bool presses_there) {
    take_presser(settings, !presses_there && presser_.is_on());
}

void code_commands::resume_pressing() {
    take_presser(presser_settings_, true);
}

void code_commands::stop_pressing() {
    if (presser_.is_on()) turn_presser_off();
}

void code_commands::turn_presser_off() {
    test_press_settings off = presser_settings_;
    off.presses_buttons = false;
    choose_presser(off, false);
}

void code_commands::choose_presser(const test_press_settings& settings, bool presses_here) {
    take_presser(settings, presses_here);
    session_.notices().tell_not_remembered(save_test_press_settings(places_, settings));
    Q_EMIT presser_chosen(settings, presses_here);
}

void code_commands::take_presser(const test_press_settings& settings, bool presses_here) {
    presser_settings_ = settings;
    test_press_settings here = settings;
    here.presses_buttons = settings.presses_buttons && presses_here;
    presser_.set_settings(here);
}

void code_commands::ask_presser() {
    test_press_settings here = presser_settings_;
    here.presses_buttons = presser_.is_on();
    auto* asked = new presser_panel(here, &window_);
    asked->setAttribute(Qt::WA_DeleteOnClose);
    connect(asked, &QDialog::accepted, this, [this, asked] {
        test_press_settings coming = asked->chosen();
        const bool presses_here = coming.presses_buttons;
        // What is not on here may be on in another window.
        if (!presses_here && !presser_.is_on()) coming.presses_buttons = presser_settings_.presses_buttons;
        choose_presser(coming, presses_here);
    });
    asked->open();
}

// The script that is there at first presses all buttons with links, or else the first button.
void code_commands::ask_dry_run() {
    open_event* const event = session_.shown_event();
    if (!event) return;
    const auto& buttons = event->logger().buttons();
    std::vector<button_record> first;
    std::copy_if(buttons.begin(), buttons.end(), std::back_inserter(first),
                 [](const auto& one) { return !one->action_links().empty(); });
    if (first.empty() && !buttons.empty()) first.push_back(buttons.front());
    first.resize(std::min(first.size(), most_buttons_in_script));
    const double now = std::floor(event->playback().collection_time());
    const auto wanted = [this] {
        dry_run run;
        open_event* const open = session_.shown_event();
        if (!open) return run;
        run.timeline = open->timeline().snapshot();
        run.buttons = open->logger().buttons();
        run.settings = settings_;
        run.earliest_seconds = open->playback().first_time();
        return run;
    };
    if (!dry_runs_) dry_runs_ = std::make_unique<serial_queue>("dry runs");
    auto* panel =
        new dry_run_panel(wanted, press_lines(first, now), link_problems(buttons, link_graph(buttons)),
                          places_.temporary_folder(), session_.loop(), *dry_runs_, &window_);
    panel->setAttribute(Qt::WA_DeleteOnClose);
    panel->open();
}

void code_commands::show_settings() {
    actions_[command::bring_qualifiers_inside]->setChecked(settings_.bring_qualifiers_inside_clip);
    actions_[command::margin_beside_clips]->setEnabled(settings_.bring_qualifiers_inside_clip);
    actions_[command::dont_save_live_clips]->setChecked(settings_.dont_save_live_clips);
    actions_[command::disable_triggers]->setChecked(settings_.disable_triggers);
}

}  // namespace vistels
