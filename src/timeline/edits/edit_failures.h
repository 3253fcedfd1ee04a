// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

// Why an edit cannot be planned, applied or read.
inline constexpr failure_of<> what_it_changes_is_gone{"what it changes is gone",
                                                      "what it changes is no longer there."};
inline constexpr failure_of<a_term> recorded_change_cannot_be_read{
    "recorded change cannot be read", "The recorded change \"%1\" has a part that cannot be read."};

// Rows
inline constexpr failure_of<> row_is_gone{"row is gone", "The row is no longer there."};
inline constexpr failure_of<> row_has_a_growing_clip{"row has a growing clip",
                                                     "A clip of the row is still being marked."};
inline constexpr failure_of<> row_to_copy_is_gone{"row to copy is gone",
                                                  "The row that was to be copied is no longer there."};
inline constexpr failure_of<> row_to_merge_is_gone{"row to merge is gone",
                                                   "A row that was to be merged is no longer there."};
inline constexpr failure_of<> too_few_rows_to_merge{"too few rows to merge",
                                                    "Choose two rows or more to merge them."};
inline constexpr failure_of<> row_needs_a_name{"row needs a name", "A row needs a name."};
inline constexpr failure_of<> row_was_not_merged{"row was not merged", "This row was not merged of others."};

// Clips
inline constexpr failure_of<> clip_to_change_is_gone{"clip to change is gone",
                                                     "A clip that was to be changed is no longer there."};
inline constexpr failure_of<> growing_clip_cannot_change{
    "growing clip cannot change", "A clip that is still being marked cannot be changed yet."};
inline constexpr failure_of<> clip_to_copy_is_gone{"clip to copy is gone",
                                                   "A clip that was to be copied is no longer there."};
inline constexpr failure_of<> growing_clip_cannot_be_copied{
    "growing clip cannot be copied", "A clip that is still being marked cannot be copied yet."};
inline constexpr failure_of<> clip_copied_to_no_time{"clip copied to no time",
                                                     "A clip cannot be copied to a time that is none."};
inline constexpr failure_of<> clip_trimmed_to_no_time{"clip trimmed to no time",
                                                      "A clip cannot be trimmed to a time that is none."};
inline constexpr failure_of<> clip_moved_to_no_time{"clip moved to no time",
                                                    "A clip cannot be moved to a time that is none."};
inline constexpr failure_of<> no_clip_lies_here{"no clip lies here",
                                                "None of the selected clips lies at the playhead."};
inline constexpr failure_of<> clip_starts_behind_its_end{"clip starts behind its end",
                                                         "A clip cannot start where it has ended already."};
inline constexpr failure_of<> clip_ends_before_its_start{"clip ends before its start",
                                                         "A clip cannot end before it has started."};
inline constexpr failure_of<> qualifier_is_gone{"qualifier is gone",
                                                "The qualifier is no longer on the clip."};
inline constexpr failure_of<> qualifier_needs_a_name{"qualifier needs a name",
                                                     "A qualifier needs a name."};
inline constexpr failure_of<> too_few_clips_to_merge{"too few clips to merge",
                                                     "Select two clips or more to merge them."};
inline constexpr failure_of<> neither_one_clip_nor_two{"neither one clip nor two",
                                                       "Select one clip, or two, to split an overlap."};
inline constexpr failure_of<> no_clip_overlaps{"no clip overlaps",
                                               "No other clip of the row overlaps this one."};
inline constexpr failure_of<> clips_do_not_overlap{"clips do not overlap", "These clips do not overlap."};
inline constexpr failure_of<> clip_too_short_to_split{
    "clip too short to split", "These clips cannot be split: one of them is too short."};
inline constexpr failure_of<> clip_of_note_is_gone{"clip of note is gone",
                                                   "The clip that the note belongs to is no longer there."};

// Two copies of a timeline
inline constexpr failure_of<> merged_clip_still_grows{
    "merged clip still grows", "A clip that the other copy changes is still being marked."};
inline constexpr failure_of<> timelines_are_no_copies{
    "timelines are no copies",
    "These are two timelines, not two copies of one. Import the other one instead."};

}  // namespace vistels
