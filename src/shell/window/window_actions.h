// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QAction>
#include <QObject>
#include <vector>

class QMenuBar;
class QWidget;

namespace vistels {

// Everything that the window's menus and keys can do.
enum class command {
    new_window,
    new_collection,
    new_empty_collection,
    open_folder,
    show_folder,
    save,
    close_window,
    quit,
    undo,
    redo,
    undo_history,
    delete_clips,
    merge_clips,
    duplicate_clips,
    split_clips,
    split_at_playhead,
    cut_clips,
    copy_clips,
    paste_clips,
    select_all,
    select_none,
    side_bar,
    inspector,
    all_vistels,
    next_vistel,
    playback_health,
    theme_desktop,
    theme_dark,
    theme_light,
    full_screen,
    play,
    shuttle_back,
    pause,
    shuttle_on,
    slower_back,
    slower_on,
    frame_back,
    frame_on,
    frames_back,
    frames_on,
    second_back,
    second_on,
    steps,
    to_start,
    to_end,
    rate_half,
    rate_one,
    rate_two,
    loop,
    mute,
    louder,
    softer,
    keep_pitch,
    volumes,
    release_buttons,
    bring_qualifiers_inside,
    margin_beside_clips,
    dont_save_live_clips,
    disable_triggers,
    press_automatically,
    dry_run,
    zoom_in,
    zoom_out,
    zoom_fit,
    clip_before,
    clip_after,
    mark_in,
    mark_out,
    play_clip,
    draw_clips,
    new_row,
    compact_rows,
    expand_rows,
    filter_field,
    apply_filter,
    clear_filter,
    hide_filtered_out,
    next_passing,
    previous_passing,
    play_passing,
    select_passing,
    new_vault,
    add_vault,
    choose_focus_vault,
    focus_this_vault,
    show_in_files,
    remove_vault,
    vault_warning,
    show_unavailable,
    find_content,
    tab_code,
    tab_review,
    jobs,
    minimize,
    next_window,
    keys,
    about,
};

// The window's actions: one for each command, each with a name, a tool tip and, mostly, a key. They belong to
// the window and work wherever the focus in it is. Main thread.
class window_actions : public QObject {
    Q_OBJECT
  public:
    explicit window_actions(QWidget& window);

    QAction* operator[](command which) const;
    // Menus in their order, filled.
    void fill(QMenuBar& bar) const;
    const std::vector<QAction*>& all() const { return actions_; }
    // Lists an action of the window's that is made elsewhere with the others.
    void add(QAction* action) { actions_.push_back(action); }
    // Those that need an open event.
    void set_event_open(bool open);

  private:
    std::vector<QAction*> actions_;  // in the order of `command`
};

}  // namespace vistels
