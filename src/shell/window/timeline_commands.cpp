// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/timeline_commands.h"

#include <QAction>

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

}  // namespace vistels
