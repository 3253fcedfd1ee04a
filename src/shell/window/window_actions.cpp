// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/window/window_actions.h"

#include <QActionGroup>
#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QWidget>
#include <array>

namespace vistels {

namespace {

struct action_line {
    command which;
    const char* menu;
    const char* name;  // object name
    const char* words;
    const char* keys;  // alternatives separated by blanks
    const char* tip;
    bool needs_event = true;
    bool checkable = false;
    bool begins_group = false;
};

// In the order of `command`, which is also that of the menus.
constexpr action_line action_lines[] = {
    {command::new_window, "File", "new_window", "New Window", "Ctrl+Alt+N",
     "Open another window, for another event", false},
    {command::new_collection, "File", "new_collection", "New Collection from Movies…", "Ctrl+N",
     "Make a collection in the home vault from movie files", false},
    {command::new_empty_collection, "File", "new_empty_collection", "New Collection…", "",
     "Make a collection without movies: code by the clock, and add movies later", false},
    {command::open_folder, "File", "open_folder", "Open…", "Ctrl+O", "Open a collection's folder or a vault",
     false},
    {command::show_folder, "File", "show_folder", "Show in Files", "", "Show the event's folder", true, false,
     true},
    {command::save, "File", "save", "Save Now", "Ctrl+S", "Save now; the program also saves by itself"},
    {command::close_window, "File", "close_window", "Close Window", "Ctrl+W",
     "Save and close this window; the last one ends the program", false, false, true},
    {command::quit, "File", "quit", "Quit", "Ctrl+Q",
     "Save and close all windows; they come back at the next start", false},
    {command::undo, "Edit", "undo", "Undo", "Ctrl+Z", "Take back the last change", false},
    {command::redo, "Edit", "redo", "Redo", "Ctrl+Shift+Z Ctrl+Y", "Do again what was taken back", false},
    {command::undo_history, "Edit", "undo_history", "Undo History…", "Ctrl+Alt+Z",
     "All steps that can be taken back or done again: go to any of them"},
    {command::delete_clips, "Edit", "delete_clips", "Delete Clips", "Delete Backspace",
     "Delete the selected clips", true, false, true},
    {command::merge_clips, "Edit", "merge_clips", "Merge Clips", "Ctrl+J",
     "Make one clip of the selected ones, with all their qualifiers and notes"},
    {command::duplicate_clips, "Edit", "duplicate_clips", "Duplicate Clips", "Ctrl+D",
     "Copy the selected clips to behind themselves"},
    {command::split_clips, "Edit", "split_clips", "Split Overlap", "Ctrl+K",
     "Part the selected clip from the one that it overlaps or touches, or two selected ones"},
    {command::split_at_playhead, "Edit", "split_at_playhead", "Split at Playhead", "Ctrl+Shift+D",
     "Make two of each selected clip at the playhead"},
    {command::cut_clips, "Edit", "cut_clips", "Cut Clips", "Ctrl+X",
     "Put the selected clips on the clipboard and delete them", true, false, true},
    {command::copy_clips, "Edit", "copy_clips", "Copy Clips", "Ctrl+C",
     "Put the selected clips on the clipboard"},
    {command::paste_clips, "Edit", "paste_clips", "Paste Clips", "Ctrl+V",
     "Put the clips of the clipboard at the playhead"},
    {command::select_all, "Edit", "select_all", "Select All Clips", "Ctrl+A",
     "Select all clips that are not hidden"},
    {command::select_none, "Edit", "select_none", "Select None", "Ctrl+Shift+A", "Select no clip"},
    {command::side_bar, "View", "side_bar", "Side Bar", "Ctrl+B", "Show or hide the side bar", false, true},
    {command::inspector, "View", "inspector", "Inspector", "Ctrl+I", "Show or hide the inspector", false,
     true},
    {command::all_vistels, "View", "all_vistels", "All Vistels", "Ctrl+0", "Show all vistels as laid out",
     true, false, true},
    {command::next_vistel, "View", "next_vistel", "Enlarge Next Vistel", "Ctrl+E",
     "Enlarge one vistel after another"},
    {command::playback_health, "View", "playback_health", "Playback Health", "",
     "For each vistel frames shown and dropped, how long one takes, and how far it is from the clock", true,
     true},
    {command::theme_desktop, "View", "theme_desktop", "Colours of the Desktop", "",
     "Dark or light as the desktop is", false, true, true},
    {command::theme_dark, "View", "theme_dark", "Dark", "", "Dark colours", false, true},
    {command::theme_light, "View", "theme_light", "Light", "", "Light colours", false, true},
    {command::full_screen, "View", "full_screen", "Full Screen", "F11", "Fill the screen", false, true, true},
    {command::play, "Play", "play", "Play or Pause", "Space", "Play or pause"},
    {command::shuttle_back, "Play", "shuttle_back", "Play Backwards", "J", "Play backwards; again: faster"},
    {command::pause, "Play", "pause", "Pause", "K", "Pause"},
    {command::shuttle_on, "Play", "shuttle_on", "Play Forwards", "L", "Play; again: faster"},
    {command::slower_back, "Play", "slower_back", "Play Slowly Backwards", "Shift+J",
     "Play backwards at half the rate; again: slower"},
    {command::slower_on, "Play", "slower_on", "Play Slowly", "Shift+L",
     "Play at half the rate; again: slower"},
    {command::frame_back, "Play", "frame_back", "One Frame Back", "Left", "One frame back", true, false,
     true},
    {command::frame_on, "Play", "frame_on", "One Frame On", "Right", "One frame on"},
    {command::frames_back, "Play", "frames_back", "Several Frames Back", "Alt+Shift+Left",
     "As many frames back as Steps and Lead-In says"},
    {command::frames_on, "Play", "frames_on", "Several Frames On", "Alt+Shift+Right",
     "As many frames on as Steps and Lead-In says"},
    {command::second_back, "Play", "second_back", "One Second Back", "Shift+Left", "One second back"},
    {command::second_on, "Play", "second_on", "One Second On", "Shift+Right", "One second on"},
    {command::steps, "Play", "steps", "Steps and Lead-In…", "",
     "How many frames such steps go, and how long before its start a clip is played"},
    {command::to_start, "Play", "to_start", "To the Beginning", "Home", "Go to the beginning of the event"},
    {command::to_end, "Play", "to_end", "To the End", "End", "Go to the end of the event"},
    {command::rate_half, "Play", "rate_half", "Half Rate", "Alt+1", "Play at half rate", true, false, true},
    {command::rate_one, "Play", "rate_one", "Normal Rate", "Alt+2", "Play at the normal rate"},
    {command::rate_two, "Play", "rate_two", "Double Rate", "Alt+3", "Play at double rate"},
    {command::loop, "Play", "loop", "Loop", "Ctrl+L", "Play the selected clip, or the event, again and again",
     true, true, true},
    {command::mute, "Play", "mute", "Mute", "M", "Sound off and on", true, true},
    {command::louder, "Play", "louder", "Louder", "Ctrl+Up", "More volume"},
    {command::softer, "Play", "softer", "Softer", "Ctrl+Down", "Less volume"},
    {command::keep_pitch, "Play", "keep_pitch", "Pitch Correction", "",
     "The sound is as high at other rates as at the normal one", true, true},
    {command::volumes, "Play", "volumes", "Volumes…", "", "The volumes of this event and of Vistels"},
    {command::release_buttons, "Code", "release_buttons", "Release All Buttons", "Shift+Esc",
     "Let every button that is down come up"},
    {command::bring_qualifiers_inside, "Code", "bring_qualifiers_inside",
     "Bring Qualifiers Inside Clips When Marking", "",
     "A qualifier that is pressed beside a clip goes to the nearest one, at a time within it", false, true,
     true},
    {command::margin_beside_clips, "Code", "margin_beside_clips", "Margin Beside Clips…", "",
     "How far beside a clip such a qualifier may be pressed", false},
    {command::dont_save_live_clips, "Code", "dont_save_live_clips", "Do Not Save Live Clips", "",
     "Clips are put on record when their buttons come up; what grows when the machine fails is lost", false,
     true},
    {command::disable_triggers, "Code", "disable_triggers", "Disable Triggers", "",
     "The playhead passes triggers of buttons without pressing them", false, true},
    {command::press_automatically, "Code", "press_automatically", "Press Buttons Automatically…", "",
     "Press buttons of the code window at random, to try it out", true, false, true},
    {command::dry_run, "Code", "dry_run", "Dry Run…", "", "Try out on a copy what presses of buttons set off",
     true},
    {command::zoom_in, "Timeline", "zoom_in", "Zoom In",
     "Ctrl++ Ctrl+=", "Show less of the timeline, larger"},
    {command::zoom_out, "Timeline", "zoom_out", "Zoom Out", "Ctrl+-", "Show more of the timeline"},
    {command::zoom_fit, "Timeline", "zoom_fit", "Whole Event", "Ctrl+9", "Show the whole event"},
    {command::clip_before, "Timeline", "clip_before", "Clip Before", "Ctrl+Left",
     "Go to the start of the clip before", true, false, true},
    {command::clip_after, "Timeline", "clip_after", "Clip After", "Ctrl+Right",
     "Go to the start of the next clip"},
    {command::mark_in, "Timeline", "mark_in", "Start Clip Here", "I",
     "The selected clips start at the playhead", true, false, true},
    {command::mark_out, "Timeline", "mark_out", "End Clip Here", "O",
     "The selected clips end at the playhead"},
    {command::play_clip, "Timeline", "play_clip", "Play Clip", "Shift+Space", "Play the selected clip"},
    {command::draw_clips, "Timeline", "draw_clips", "Draw Clips", "Ctrl+Alt+D",
     "A drag beside clips draws a clip", true, true},
    {command::new_row, "Timeline", "new_row", "New Row", "Ctrl+Shift+R", "A row below the chosen ones", true,
     false, true},
    {command::compact_rows, "Timeline", "compact_rows", "Compact Rows", "Ctrl+Shift+K",
     "Show the rows chosen among their names as one row", true, false, true},
    {command::expand_rows, "Timeline", "expand_rows", "Expand Row", "Ctrl+Shift+E",
     "Show the rows again that were compacted into the chosen one"},
    {command::filter_field, "Filter", "filter_field", "Filter…", "Ctrl+F",
     "Type what clips have to have: words, or a formula"},
    {command::apply_filter, "Filter", "apply_filter", "Apply and Remember", "",
     "Filter by what was typed, and keep it in the list of patterns (Return in the filter field)"},
    {command::clear_filter, "Filter", "clear_filter", "Clear Filter", "Ctrl+Alt+F", "All clips pass again"},
    {command::hide_filtered_out, "Filter", "hide_filtered_out", "Hide Filtered-Out Clips", "Ctrl+H",
     "Hide the clips that do not pass the filter instead of dimming them", true, true, false},
    {command::next_passing, "Filter", "next_passing", "Next Matching Clip", "F3",
     "Go to the start of the next clip that passes the filter", true, false, true},
    {command::previous_passing, "Filter", "previous_passing", "Previous Matching Clip", "Shift+F3",
     "Go to the start of the clip before that passes the filter"},
    {command::play_passing, "Filter", "play_passing", "Play All Matching", "Ctrl+P",
     "Play the clips that pass the filter, one after another; again: stop", true, true},
    {command::select_passing, "Filter", "select_passing", "Select All Matching", "Ctrl+Alt+A",
     "Select the clips that pass the filter"},
    {command::new_vault, "Vaults", "new_vault", "Create New Vault…", "Ctrl+Shift+N",
     "Make a vault for collections", false},
    {command::add_vault, "Vaults", "add_vault", "Add An Existing Vault To Sidebar…", "Ctrl+Shift+O",
     "List a vault that is there already; a vault's folder can also be dropped on the side bar", false},
    {command::choose_focus_vault, "Vaults", "choose_focus_vault", "Choose Focus Vault…", "Ctrl+Shift+F",
     "Choose the vault that new items are saved into", false, false, true},
    {command::focus_this_vault, "Vaults", "focus_this_vault", "Set Focus To This Vault", "",
     "New items are saved into the vault chosen in the side bar", false},
    {command::show_in_files, "Vaults", "show_in_files", "Show Chosen in Files", "",
     "Show what is chosen in the side bar in the file manager", false},
    {command::remove_vault, "Vaults", "remove_vault", "Remove Vault from Side Bar", "",
     "Take the chosen vault from the list; its files stay where they are", false},
    {command::vault_warning, "Vaults", "vault_warning", "Vault Warnings…", "",
     "When a vault counts as nearly full, and whether unavailable ones are listed", false, false, true},
    {command::show_unavailable, "Vaults", "show_unavailable", "Show Unavailable Vaults", "",
     "List vaults whose volume is not connected, in grey", false, true},
    {command::find_content, "Vaults", "find_content", "Find in Side Bar", "Ctrl+Shift+B",
     "Find an item of the side bar by its name", false, false, true},
    {command::tab_code, "Window", "tab_code", "Code", "Ctrl+1", "Video, code window and timeline", false},
    {command::tab_review, "Window", "tab_review", "Review", "Ctrl+2", "Video and timeline", false},
    {command::jobs, "Window", "jobs", "Tasks…", "Ctrl+Shift+T",
     "What the program is doing, how far it is, and to cancel it", false, false, true},
    {command::minimize, "Window", "minimize", "Minimize", "Ctrl+M", "Put the window away", false, false,
     true},
    {command::next_window, "Window", "next_window", "Next Window", "Ctrl+Tab",
     "Bring the next window to the front", false},
    {command::keys, "Help", "keys", "Keys", "Shift+F1",
     "What the keys do; hold F1 to see those of the code window’s buttons", false},
    {command::about, "Help", "about", "About Vistels", "", "About this program", false, false, true},
};

constexpr bool are_in_order() {
    std::size_t place = 0;
    for (const action_line& one : action_lines) {
        if (static_cast<std::size_t>(one.which) != place++) return false;
    }
    return true;
}
static_assert(are_in_order());

const char* const menu_order[] = {"File",     "Edit",   "View",   "Play",   "Code",
                                  "Timeline", "Filter", "Vaults", "Window", "Help"};

QList<QKeySequence> key_sequences(const char* keys) {
    QList<QKeySequence> all;
    for (const QString& one : QString::fromLatin1(keys).split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        all << QKeySequence(one);
    }
    return all;
}

}  // namespace

window_actions::window_actions(QWidget& window) : QObject(&window) {
    for (const auto& line : action_lines) {
        auto* action = new QAction(tr(line.words), this);
        action->setObjectName(QLatin1String(line.name));
        action->setShortcuts(key_sequences(line.keys));
        action->setToolTip(tr(line.tip));
        action->setStatusTip(tr(line.tip));
        action->setCheckable(line.checkable);
        // A held key repeats only where that is of use.
        const bool steps = line.which >= command::frame_back && line.which <= command::second_on;
        action->setAutoRepeat(steps || line.which == command::clip_before ||
                              line.which == command::clip_after || line.which == command::next_passing ||
                              line.which == command::previous_passing || line.which == command::undo ||
                              line.which == command::redo);
        window.addAction(action);
        actions_.push_back(action);
    }
    auto* themes = new QActionGroup(this);
    for (const command one : {command::theme_desktop, command::theme_dark, command::theme_light}) {
        themes->addAction((*this)[one]);
    }
    set_event_open(false);
}

QAction* window_actions::operator[](command which) const {
    return actions_[static_cast<std::size_t>(which)];
}

void window_actions::fill(QMenuBar& bar) const {
    for (const char* title : menu_order) {
        QMenu* menu = bar.addMenu(tr(title));
        menu->setObjectName(QStringLiteral("menu.") + QLatin1String(title));
        menu->setToolTipsVisible(true);
        for (const auto& line : action_lines) {
            if (qstrcmp(line.menu, title) != 0) continue;
            if (line.begins_group && !menu->isEmpty()) menu->addSeparator();
            menu->addAction((*this)[line.which]);
        }
    }
}

void window_actions::set_event_open(bool open) {
    for (const auto& line : action_lines) {
        if (line.needs_event) (*this)[line.which]->setEnabled(open);
    }
}

}  // namespace vistels
