// SPDX-License-Identifier: GPL-3.0-or-later
// The commands of the main window's menus that concern the window itself, and the vaults in its side bar.
#include <QAction>
#include <QMessageBox>

#include "shell/event/event_session.h"
#include "shell/kit/job_button.h"
#include "shell/panes/side_bar/content_side_bar.h"
#include "shell/window/event_opener.h"
#include "shell/window/keys_window.h"
#include "shell/window/main_window.h"
#include "shell/window/super_tab_row.h"
#include "shell/window/vault_commands.h"
#include "shell/window/window_actions.h"
#include "shell/window/window_frame.h"

namespace vistels {

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

void main_window::connect_view_commands() {
    const window_actions& actions = *actions_;
    connect(actions[command::side_bar], &QAction::triggered, frame_,
            [this](bool shown) { frame_->set_shown(window_frame::side::left, shown); });
    connect(actions[command::inspector], &QAction::triggered, frame_,
            [this](bool shown) { frame_->set_shown(window_frame::side::right, shown); });
    connect(actions[command::theme_desktop], &QAction::triggered, this, [this] { choose_theme({}); });
    connect(actions[command::theme_dark], &QAction::triggered, this, [this] { choose_theme("dark"); });
    connect(actions[command::theme_light], &QAction::triggered, this, [this] { choose_theme("light"); });
    connect(actions[command::full_screen], &QAction::triggered, this,
            [this](bool full) { full ? showFullScreen() : showNormal(); });
}

void main_window::connect_window_commands() {
    const window_actions& actions = *actions_;
    connect(actions[command::new_collection], &QAction::triggered, opener_.get(),
            &event_opener::ask_new_collection);
    connect(actions[command::new_empty_collection], &QAction::triggered, opener_.get(),
            &event_opener::ask_new_empty);
    connect(actions[command::open_folder], &QAction::triggered, opener_.get(), &event_opener::ask_open);
    connect(actions[command::close_window], &QAction::triggered, this, &main_window::close_when_saved);
    connect(actions[command::quit], &QAction::triggered, this, &main_window::quit_asked);
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
