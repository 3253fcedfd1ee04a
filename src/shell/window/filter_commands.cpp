// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/filter_commands.h"

#include <QAction>
#include <QMenu>
#include <utility>

#include "app/settings/settings.h"
#include "shell/event/event_session.h"
#include "shell/event/filter_control.h"
#include "shell/event/timeline_binder.h"
#include "shell/filter/filter_entry.h"
#include "shell/filter/filter_field.h"
#include "shell/filter/formula_menu.h"
#include "shell/filter/pattern_menu.h"
#include "shell/panes/timeline/timeline_view.h"
#include "shell/window/window_actions.h"

namespace vistels {

filter_commands::filter_commands(window_actions& actions, event_session& session, home_places places)
    : actions_(actions), session_(session), places_(std::move(places)) {
    connect_actions();
    panes_changed_ = session.binders().changed.connect([this] { follow_timelines(); });
    connect(&session, &event_session::facts_changed, this, &filter_commands::show_state);
    connect(&session, &event_session::closed, this, &filter_commands::show_state);
    follow_timelines();
}

timeline_binder* filter_commands::shown() const {
    return session_.binders().current<timeline_binder>();
}

void filter_commands::connect_actions() {
    const auto on = [&](command which, auto does) {
        connect(actions_[which], &QAction::triggered, this, [this, does](bool checked) {
            if (timeline_binder* one = shown()) does(*one, checked);
        });
    };
    on(command::filter_field, [](timeline_binder& one, bool) { one.view().filter().focus(); });
    on(command::apply_filter, [](timeline_binder& one, bool) { one.view().filter().apply(); });
    on(command::clear_filter, [](timeline_binder& one, bool) { one.filter_text().clear(); });
    on(command::hide_filtered_out,
       [](timeline_binder& one, bool hides) { one.filter().choose_hides(hides); });
    on(command::next_passing, [](timeline_binder& one, bool) { one.filter().go_to_clip(1); });
    on(command::previous_passing, [](timeline_binder& one, bool) { one.filter().go_to_clip(-1); });
    on(command::play_passing, [](timeline_binder& one, bool plays) { one.filter().play_all(plays); });
}

void filter_commands::follow_timelines() {
    following_ = std::make_unique<QObject>();
    for (timeline_binder* one : session_.binders().all_of<timeline_binder>()) {
        connect(&one->filter(), &filter_control::changed, following_.get(), [this] { show_state(); });
        connect(&one->filter(), &filter_control::hides_chosen, following_.get(),
                [this](bool hides) { keep_hides(hides); });
        connect(&one->filter_text(), &filter_entry::text_changed, following_.get(), [this] { show_state(); });
        connect(&one->filter_text(), &filter_entry::patterns_changed, following_.get(),
                [this] { Q_EMIT patterns_changed(); });
    }
    show_state();
}

void filter_commands::keep_hides(bool hides) {
    set_hides(hides);
    session_.notices().tell_not_remembered(save_filtered_out_clips(places_, {hides}));
    Q_EMIT hides_chosen(hides);
}

void filter_commands::set_hides(bool hides) {
    for (timeline_binder* one : session_.binders().all_of<timeline_binder>()) one->filter().set_hides(hides);
}

void filter_commands::apply(const QString& pattern) {
    if (timeline_binder* one = shown()) one->filter_text().apply(pattern);
}

bool filter_commands::clear_if_nothing_passes() {
    timeline_binder* one = shown();
    if (!one || !one->filter().is_on() || one->filter().passing_count() > 0) return false;
    one->filter_text().clear();
    return true;
}

// What they offer follows the text, the timeline and what was applied: they are made when they are wanted.
void filter_commands::fill(QMenu& menu) {
    QAction* next = actions_[command::hide_filtered_out];
    const auto add = [&](const char* name, const QString& words) {
        auto* action = new QAction(words, &menu);
        action->setObjectName(QLatin1String(name));
        menu.insertAction(next, action);
        return action;
    };
    menu.insertSeparator(next);
    QAction* patterns = add("filter_patterns", tr("Filters Used Before"));
    QAction* insert = add("filter_insert", tr("Insert into Filter"));
    menu.insertSeparator(next);
    connect(&menu, &QMenu::aboutToShow, this, [this, patterns, insert] {
        timeline_binder* one = session_.is_open() ? shown() : nullptr;
        for (QAction* each : {patterns, insert}) {
            each->setEnabled(one != nullptr);
            delete each->menu();
        }
        if (!one) return;
        patterns->setMenu(new pattern_menu(one->view().filter()));
        insert->setMenu(new formula_menu(one->view().filter()));
    });
}

void filter_commands::show_state() {
    timeline_binder* one = shown();
    const bool has_text = one && !one->filter_text().text().isEmpty();
    const bool is_on = one && one->filter().is_on();
    const bool plays = one && one->filter().plays_all();
    const bool some_pass = one && one->filter().passing_count() > 0;
    actions_[command::apply_filter]->setEnabled(has_text);
    actions_[command::clear_filter]->setEnabled(has_text || is_on);
    actions_[command::hide_filtered_out]->setChecked(one && one->filter().hides());
    actions_[command::play_passing]->setChecked(plays);
    actions_[command::play_passing]->setEnabled(plays || some_pass);
    actions_[command::select_passing]->setEnabled(some_pass);
}

}  // namespace vistels
