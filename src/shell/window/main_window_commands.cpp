// SPDX-License-Identifier: GPL-3.0-or-later
// What each command of the main window's menus does.
#include <QApplication>
#include <QDesktopServices>
#include <QMenuBar>
#include <QMessageBox>
#include <QUrl>

#include "app/settings/settings.h"
#include "shell/event/collection_commands.h"
#include "shell/event/event_session.h"
#include "shell/event/filter_control.h"
#include "shell/event/undo_commands.h"
#include "shell/filter/filter_entry.h"
#include "shell/filter/filter_field.h"
#include "shell/filter/formula_menu.h"
#include "shell/filter/pattern_menu.h"
#include "shell/kit/job_button.h"
#include "shell/panes/code_window/code_window_view.h"
#include "shell/panes/collection/collection_pane.h"
#include "shell/panes/collection/transport_bar.h"
#include "shell/panes/side_bar/content_side_bar.h"
#include "shell/panes/timeline/timeline_view.h"
#include "shell/window/event_opener.h"
#include "shell/window/keys_window.h"
#include "shell/window/main_window.h"
#include "shell/window/super_tab_row.h"
#include "shell/window/vault_commands.h"
#include "shell/window/window_actions.h"
#include "shell/window/window_frame.h"

namespace vistels {

namespace {

constexpr double second = 1;

}  // namespace

void main_window::connect_event_commands() {
    const window_actions& actions = *actions_;
    event_session* session = session_.get();
    connect(actions[command::new_collection], &QAction::triggered, opener_.get(),
            &event_opener::ask_new_collection);
    connect(actions[command::new_empty_collection], &QAction::triggered, opener_.get(),
            &event_opener::ask_new_empty);
    connect(actions[command::open_folder], &QAction::triggered, opener_.get(), &event_opener::ask_open);
    connect(actions[command::show_folder], &QAction::triggered, session, [session] {
        QDesktopServices::openUrl(QUrl::fromLocalFile(QString::fromStdString(session->folder())));
    });
    connect(actions[command::save], &QAction::triggered, session, &event_session::save);
    connect(actions[command::close_window], &QAction::triggered, this, &QWidget::close);
    connect(actions[command::quit], &QAction::triggered, this, &main_window::quit_asked);
    undo_commands* steps = &commands_->steps();
    connect(actions[command::undo], &QAction::triggered, steps, &undo_commands::undo);
    connect(actions[command::redo], &QAction::triggered, steps, &undo_commands::redo);
    connect(actions[command::release_buttons], &QAction::triggered, session, &event_session::release_buttons);
}

void main_window::connect_vault_commands() {
    window_actions& actions = *actions_;
    vault_commands* vaults = vaults_.get();
    const auto on = [&](command which, auto does) {
        connect(actions[which], &QAction::triggered, vaults, does);
    };
    on(command::new_vault, [vaults] { vaults->create(); });
    on(command::add_vault, [vaults] { vaults->add_existing(); });
    on(command::choose_focus_vault, [vaults] { vaults->choose_focus(); });
    on(command::focus_this_vault, [vaults] { vaults->focus_current(); });
    on(command::show_in_files, [vaults] { vaults->show_current(); });
    on(command::remove_vault, [vaults] { vaults->remove_current(); });
    on(command::vault_warning, [this, vaults] {
        vaults->choose_warning();
        (*actions_)[command::show_unavailable]->setChecked(vaults->shows_unavailable());
    });
    on(command::show_unavailable, [vaults](bool shows) { vaults->set_shows_unavailable(shows); });
    on(command::find_content, [this] {
        frame_->set_shown(window_frame::side::left, true);
        content_->find();
    });
    actions[command::show_unavailable]->setChecked(vaults->shows_unavailable());
    const auto all = [&](std::initializer_list<command> wanted) {
        QList<QAction*> list;
        for (const command one : wanted) list << actions[one];
        return list;
    };
    content_side_bar::menu_actions menus;
    menus.make =
        all({command::new_collection, command::new_empty_collection, command::new_vault, command::add_vault});
    menus.all = all({command::new_collection, command::new_empty_collection, command::new_vault,
                     command::add_vault, command::choose_focus_vault, command::vault_warning,
                     command::show_unavailable, command::find_content});
    menus.vault = all({command::focus_this_vault, command::show_in_files, command::remove_vault,
                       command::new_vault, command::add_vault});
    menus.item = all({command::show_in_files});
    content_->set_actions(std::move(menus));
}

void main_window::connect_play_commands() {
    const window_actions& actions = *actions_;
    event_session* session = session_.get();
    const auto on = [&](command which, auto does) {
        connect(actions[which], &QAction::triggered, session, does);
    };
    on(command::play, [session] { session->player().play_or_pause(); });
    on(command::shuttle_back, [session] { session->player().shuttle(-1); });
    on(command::pause, [session] { session->player().pause(); });
    on(command::shuttle_on, [session] { session->player().shuttle(1); });
    on(command::frame_back, [session] { session->player().step(-1); });
    on(command::frame_on, [session] { session->player().step(1); });
    on(command::second_back, [session] { session->player().jump(-second); });
    on(command::second_on, [session] { session->player().jump(second); });
    on(command::to_start, [session] { session->player().to_start(); });
    on(command::to_end, [session] { session->player().to_end(); });
    on(command::rate_half, [session] { session->player().set_rate(0.5); });
    on(command::rate_one, [session] { session->player().set_rate(1); });
    on(command::rate_two, [session] { session->player().set_rate(2); });
    on(command::loop, [session](bool loops) { session->player().set_looping(loops); });
    on(command::mute, [session](bool mutes) { session->player().set_muted(mutes); });
    const auto change_volume = [session](int steps) {
        session->player().change_volume(steps);
        session->keep_volumes();
    };
    on(command::louder, [change_volume] { change_volume(1); });
    on(command::softer, [change_volume] { change_volume(-1); });
    on(command::volumes, [this] { collection_->bar().show_volumes(); });
}

void main_window::connect_timeline_commands() {
    const window_actions& actions = *actions_;
    event_session* session = session_.get();
    connect(actions[command::delete_clips], &QAction::triggered, timeline_, &timeline_view::delete_selected);
    connect(actions[command::merge_clips], &QAction::triggered, timeline_, &timeline_view::merge_selected);
    connect(actions[command::duplicate_clips], &QAction::triggered, timeline_,
            &timeline_view::duplicate_selected);
    connect(actions[command::split_clips], &QAction::triggered, timeline_, &timeline_view::split_selected);
    connect(actions[command::select_all], &QAction::triggered, timeline_, &timeline_view::select_all);
    connect(actions[command::select_none], &QAction::triggered, timeline_, [this] { timeline_->select({}); });
    connect(actions[command::compact_rows], &QAction::triggered, timeline_, &timeline_view::compact_rows);
    connect(actions[command::expand_rows], &QAction::triggered, timeline_, &timeline_view::expand_rows);
    connect(actions[command::zoom_in], &QAction::triggered, timeline_, &timeline_view::zoom_in);
    connect(actions[command::zoom_out], &QAction::triggered, timeline_, &timeline_view::zoom_out);
    connect(actions[command::zoom_fit], &QAction::triggered, timeline_, &timeline_view::zoom_to_fit);
    connect(actions[command::clip_before], &QAction::triggered, session,
            [session] { session->filter().go_to_clip(-1); });
    connect(actions[command::clip_after], &QAction::triggered, session,
            [session] { session->filter().go_to_clip(1); });
    connect(actions[command::mark_in], &QAction::triggered, session, [session] { session->mark_clip(true); });
    connect(actions[command::mark_out], &QAction::triggered, session,
            [session] { session->mark_clip(false); });
    connect(actions[command::play_clip], &QAction::triggered, session, &event_session::play_selected_clip);
}

void main_window::connect_filter_commands() {
    const window_actions& actions = *actions_;
    filter_control* filter = &session_->filter();
    const auto on = [&](command which, auto does) {
        connect(actions[which], &QAction::triggered, filter, does);
    };
    on(command::filter_field, [this] { timeline_->filter().focus(); });
    on(command::apply_filter, [this] { timeline_->filter().apply(); });
    on(command::clear_filter, [this] { filter_->clear(); });
    on(command::hide_filtered_out, [filter](bool hides) { filter->choose_hides(hides); });
    on(command::next_passing, [filter] { filter->go_to_clip(1); });
    on(command::previous_passing, [filter] { filter->go_to_clip(-1); });
    on(command::play_passing, [filter](bool plays) { filter->play_all(plays); });
    on(command::select_passing, [this] { timeline_->select_passing(); });
    filter->set_hides(load_filtered_out_clips(places_).are_hidden);
    connect(filter, &filter_control::changed, this, &main_window::show_filter_state);
    connect(filter, &filter_control::hides_chosen, this, [this](bool hides) {
        const auto saved = save_filtered_out_clips(places_, {hides});
        if (saved) return;
        tell({user_message::tone::warning,
              tr("The setting is not remembered"),
              QString::fromStdString(saved.message()),
              {},
              {}});
    });
    connect(timeline_, &timeline_view::clear_filter_asked, filter_, &filter_entry::clear);
    connect(filter_, &filter_entry::text_changed, this, &main_window::show_filter_state);
    add_filter_menus();
    show_filter_state();
}

// What they offer follows the text, the timeline and what was applied: they are made when they are wanted.
void main_window::add_filter_menus() {
    auto* menu = menuBar()->findChild<QMenu*>(QStringLiteral("menu.Filter"));
    QAction* next = (*actions_)[command::hide_filtered_out];
    const auto add = [&](const char* name, const QString& words) {
        auto* action = new QAction(words, menu);
        action->setObjectName(QLatin1String(name));
        menu->insertAction(next, action);
        return action;
    };
    menu->insertSeparator(next);
    QAction* patterns = add("filter_patterns", tr("Filters Used Before"));
    QAction* insert = add("filter_insert", tr("Insert into Filter"));
    menu->insertSeparator(next);
    connect(menu, &QMenu::aboutToShow, this, [this, patterns, insert] {
        for (QAction* one : {patterns, insert}) {
            one->setEnabled(session_->is_open());
            delete one->menu();
        }
        if (!session_->is_open()) return;
        patterns->setMenu(new pattern_menu(timeline_->filter()));
        insert->setMenu(new formula_menu(timeline_->filter()));
    });
}

void main_window::show_filter_state() {
    const window_actions& actions = *actions_;
    const filter_control& filter = session_->filter();
    const bool can_play = filter.plays_all() || filter.passing_count() > 0;
    actions[command::apply_filter]->setEnabled(!filter_->text().isEmpty());
    actions[command::clear_filter]->setEnabled(!filter_->text().isEmpty() || filter.is_on());
    actions[command::hide_filtered_out]->setChecked(filter.hides());
    actions[command::play_passing]->setChecked(filter.plays_all());
    actions[command::play_passing]->setEnabled(can_play);
    actions[command::select_passing]->setEnabled(filter.passing_count() > 0);
}

void main_window::connect_view_commands() {
    const window_actions& actions = *actions_;
    event_session* session = session_.get();
    connect(actions[command::side_bar], &QAction::triggered, frame_,
            [this](bool shown) { frame_->set_shown(window_frame::side::left, shown); });
    connect(actions[command::inspector], &QAction::triggered, frame_,
            [this](bool shown) { frame_->set_shown(window_frame::side::right, shown); });
    connect(actions[command::all_vistels], &QAction::triggered, session,
            [session] { session->player().enlarge({}); });
    connect(actions[command::next_vistel], &QAction::triggered, session,
            [session] { session->player().enlarge_next(); });
    connect(actions[command::theme_desktop], &QAction::triggered, this, [this] { choose_theme({}); });
    connect(actions[command::theme_dark], &QAction::triggered, this, [this] { choose_theme("dark"); });
    connect(actions[command::theme_light], &QAction::triggered, this, [this] { choose_theme("light"); });
    connect(actions[command::full_screen], &QAction::triggered, this,
            [this](bool full) { full ? showFullScreen() : showNormal(); });
}

void main_window::connect_window_commands() {
    const window_actions& actions = *actions_;
    connect(actions[command::tab_code], &QAction::triggered, this, [this] { show_tab(0); });
    connect(actions[command::tab_review], &QAction::triggered, this, [this] { show_tab(1); });
    connect(actions[command::minimize], &QAction::triggered, this, &QWidget::showMinimized);
    connect(actions[command::new_window], &QAction::triggered, this, &main_window::new_window_asked);
    connect(actions[command::jobs], &QAction::triggered, jobs_button_, &job_button::show_jobs);
    connect(actions[command::next_window], &QAction::triggered, this, &main_window::next_window_asked);
    connect(actions[command::keys], &QAction::triggered, this, [this] {
        auto* window = new keys_window(*actions_, session_->shown_event(), this);
        window->setAttribute(Qt::WA_DeleteOnClose);
        window->open();
    });
    connect(actions[command::about], &QAction::triggered, this, [this] {
        QMessageBox::about(
            this, tr("About Vistels"),
            tr("Vistels %1\n\nVideo analysis of sport: cameras in step, coded by keys and buttons.\n\n"
               "Free software under the GNU General Public License, version 3 or later.")
                .arg(QLatin1String(VISTELS_VERSION)));
    });
}

}  // namespace vistels
