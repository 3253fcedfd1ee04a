// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The names of edits of a timeline, as the journal and the undo history keep them and as they are translated
// where they are shown. An edit that a button makes has the button's name.
namespace vistels::edit_name {

inline constexpr const char* clip_times = "Clip Times";
inline constexpr const char* stars = "Stars";
inline constexpr const char* clip_colour = "Clip Colour";
inline constexpr const char* add_qualifier = "Add Qualifier";
inline constexpr const char* change_qualifier = "Qualifier";
inline constexpr const char* remove_qualifier = "Remove Qualifier";
inline constexpr const char* note = "Note";
inline constexpr const char* trim_clip = "Trim Clip";
inline constexpr const char* trim_clips = "Trim Clips";
inline constexpr const char* move_clip = "Move Clip";
inline constexpr const char* move_clips = "Move Clips";
inline constexpr const char* roll_joint = "Roll Joint";
inline constexpr const char* split_clip = "Split Clip";
inline constexpr const char* split_clips = "Split Clips";
inline constexpr const char* draw_clip = "Draw Clip";
inline constexpr const char* paste_clip = "Paste Clip";
inline constexpr const char* paste_clips = "Paste Clips";
inline constexpr const char* split_overlap = "Split Overlap";
inline constexpr const char* merge_clips = "Merge Clips";
inline constexpr const char* duplicate_clip = "Duplicate Clip";
inline constexpr const char* duplicate_clips = "Duplicate Clips";
inline constexpr const char* delete_clip = "Delete Clip";
inline constexpr const char* delete_clips = "Delete Clips";
inline constexpr const char* new_row = "New Row";
inline constexpr const char* rename_row = "Rename Row";
inline constexpr const char* row_colour = "Row Colour";
inline constexpr const char* row_category = "Row Category";
inline constexpr const char* row_height = "Row Height";
inline constexpr const char* move_row = "Move Row";
inline constexpr const char* move_rows = "Move Rows";
inline constexpr const char* hide_row = "Hide Row";
inline constexpr const char* hide_rows = "Hide Rows";
inline constexpr const char* show_rows = "Show Hidden Rows";
inline constexpr const char* sort_rows = "Sort Rows";
inline constexpr const char* duplicate_row = "Duplicate Row";
inline constexpr const char* delete_row = "Delete Row";
inline constexpr const char* merge_rows = "Merge Rows";
inline constexpr const char* expand_row = "Expand Row";
inline constexpr const char* merge_timelines = "Merge Timelines";
// Clips that were growing when the timeline was closed, or its program died.
inline constexpr const char* closed = "Closed";
inline constexpr const char* recovered = "Recovered";

}  // namespace vistels::edit_name
