// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/timeline_commands.h"

#include <QAction>
#include <QMenu>

#include "shell/event/event_session.h"
#include "shell/event/filter_control.h"
#include "shell/event/timeline_binder.h"
#include "shell/panes/timeline/timeline_view.h"
#include "shell/window/window_actions.h"

namespace vistels {

template <class does>
void timeline_commands::on_binder(command which, does what) {
    connect(actions_[which], &QAction::triggered, this, [this, what] {
        if (auto* shown = session_.binders().current<timeline_binder>()) what(*shown);
    });
}

template <class does>
void timeline_commands::on_view(command which, does what) {
    on_binder(which, [what](timeline_binder& shown) { what(shown.view()); });
}

timeline_commands::timeline_commands(const window_actions& actions, event_session& session)
    : actions_(actions), session_(session) {
    on_view(command::delete_clips, [](timeline_view& view) { view.delete_selected(); });
    on_view(command::merge_clips, [](timeline_view& view) { view.merge_selected(); });
    on_view(command::duplicate_clips, [](timeline_view& view) { view.duplicate_selected(); });
    on_view(command::split_clips, [](timeline_view& view) { view.split_selected(); });
    on_view(command::split_at_playhead, [](timeline_view& view) { view.split_at_playhead(); });
    on_view(command::cut_clips, [](timeline_view& view) { view.cut_selected(); });
    on_view(command::copy_clips, [](timeline_view& view) { view.copy_selected(); });
    on_view(command::paste_clips, [](timeline_view& view) { view.paste(); });
    on_view(command::new_row, [](timeline_view& view) { view.add_row(); });
    connect(actions_[command::draw_clips], &QAction::toggled, this, [this](bool draws) {
        for (auto* one : session_.binders().all_of<timeline_binder>()) one->view().set_draws(draws);
    });
    on_view(command::select_all, [](timeline_view& view) { view.select_all(); });
    on_view(command::select_none, [](timeline_view& view) { view.select({}); });
    on_view(command::select_passing, [](timeline_view& view) { view.select_passing(); });
    on_view(command::compact_rows, [](timeline_view& view) { view.compact_rows(); });
    on_view(command::expand_rows, [](timeline_view& view) { view.expand_rows(); });
    on_view(command::zoom_in, [](timeline_view& view) { view.zoom_in(); });
    on_view(command::zoom_out, [](timeline_view& view) { view.zoom_out(); });
    on_view(command::zoom_fit, [](timeline_view& view) { view.zoom_to_fit(); });
    on_binder(command::clip_before, [](timeline_binder& shown) { shown.filter().go_to_clip(-1); });
    on_binder(command::clip_after, [](timeline_binder& shown) { shown.filter().go_to_clip(1); });
    on_binder(command::mark_in, [](timeline_binder& shown) { shown.mark_clip(true); });
    on_binder(command::mark_out, [](timeline_binder& shown) { shown.mark_clip(false); });
    on_binder(command::play_clip, [](timeline_binder& shown) { shown.play_selected(); });
}

void timeline_commands::serve(timeline_view& view) {
    view.set_draws(actions_[command::draw_clips]->isChecked());
    connect(&view, &timeline_view::menu_asked, this,
            [this, &view](QPoint at, bool for_clips) { show_menu(view, at, for_clips); });
    connect(&view, &timeline_view::draws_asked, actions_[command::draw_clips], &QAction::setChecked);
    connect(&view, &timeline_view::play_asked, this, [this] { actions_[command::play_clip]->trigger(); });
}

void timeline_commands::show_menu(timeline_view& view, QPoint at, bool for_clips) {
    auto* menu = new QMenu(&view);
    menu->setObjectName(QStringLiteral("timeline.menu"));
    menu->setAttribute(Qt::WA_DeleteOnClose);
    menu->setToolTipsVisible(true);
    const auto add = [&](std::initializer_list<command> all) {
        for (const command one : all) menu->addAction(actions_[one]);
        menu->addSeparator();
    };
    if (for_clips) {
        add({command::play_clip, command::loop});
        add({command::cut_clips, command::copy_clips, command::paste_clips, command::duplicate_clips});
        view.add_to_menu(*menu);
        menu->addSeparator();
        add({command::mark_in, command::mark_out, command::split_at_playhead, command::split_clips,
             command::merge_clips});
        add({command::delete_clips});
    } else {
        add({command::paste_clips, command::new_row, command::draw_clips});
        add({command::select_all, command::select_passing, command::select_none});
        add({command::zoom_in, command::zoom_out, command::zoom_fit});
    }
    menu->popup(at);
}

}  // namespace vistels
