// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

// Reading. The first two are causes of file_cannot_be_read.
inline constexpr failure_of<> file_holds_no_timeline{"file holds no timeline", "it does not hold a timeline"};
inline constexpr failure_of<> file_holds_no_notes{"file holds no notes", "it does not hold notes"};
inline constexpr failure_of<a_path> one_clip_was_left_out{
    "one clip was left out", "\"%1\" holds 1 clip without a readable time; it was left out."};
inline constexpr failure_of<a_path, a_text> clips_were_left_out{
    "clips were left out", "\"%1\" holds %2 clips without a readable time; they were left out."};
inline constexpr failure_of<a_cause> notes_are_not_shown{"notes are not shown",
                                                         "%1 The timeline is shown without its notes."};
inline constexpr failure_of<a_path> damaged_file_was_kept{"damaged file was kept",
                                                          "The damaged file was kept as \"%1\"."};
inline constexpr failure_of<a_path> display_settings_were_lost{
    "display settings were lost", "\"%1\" is damaged: the timeline's display settings were lost."};
inline constexpr failure_of<a_path> timeline_copies_are_damaged{
    "timeline copies are damaged", "\"%1\" is missing and its copies are damaged. Nothing was changed."};
inline constexpr failure_of<a_path, a_cause> timeline_was_not_put_back{
    "timeline was not put back", "\"%1\" is missing and was not put back: %2"};

// The journal of the timeline in a folder.
inline constexpr failure_of<a_path> journalled_change_was_damaged{
    "journalled change was damaged",
    "A change of the timeline in \"%1\" was damaged. The changes after it were left out."};
inline constexpr failure_of<a_path> unsaved_changes_do_not_fit{
    "unsaved changes do not fit",
    "The timeline in \"%1\" was changed by another program at the same time. Unsaved changes do not fit it."};

// The lock of the timeline in a folder, and who has it.
inline constexpr failure_of<a_path, a_cause> timeline_is_open_elsewhere{
    "timeline is open elsewhere", "The timeline in \"%1\" is open for writing in %2."};
inline constexpr failure_of<a_cause> timeline_was_taken_over{"timeline was taken over",
                                                             "%1 It was taken over from here."};
inline constexpr failure_of<a_cause, a_text> writer_is_silent{
    "writer is silent",
    "%1 Nothing was heard of it for %2 minutes; when it is no longer running, the timeline can be taken "
    "over."};

// Why it can only be read: somebody else has the lock, or there is no journal.
inline constexpr failure_of<a_cause> timeline_is_only_read_here{
    "timeline is only read here", "%1 It can be looked at here but not changed."};
inline constexpr failure_of<a_cause> timeline_is_only_read{
    "timeline is only read", "%1 The timeline can be looked at but not changed."};

}  // namespace vistels
