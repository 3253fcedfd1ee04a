// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The names of edits of a timeline, as the journal and the undo history keep them and as they are translated
// where they are shown. An edit that a button makes has the button's name.
namespace vistels::edit_name {

inline constexpr const char* clip_times = "Clip Times";
inline constexpr const char* stars = "Stars";
inline constexpr const char* clip_colour = "Clip Colour";
inline constexpr const char* remove_qualifier = "Remove Qualifier";
inline constexpr const char* note = "Note";
inline constexpr const char* trim_clip = "Trim Clip";
inline constexpr const char* trim_clips = "Trim Clips";
inline constexpr const char* split_overlap = "Split Overlap";
inline constexpr const char* merge_clips = "Merge Clips";
inline constexpr const char* duplicate_clip = "Duplicate Clip";
inline constexpr const char* duplicate_clips = "Duplicate Clips";
inline constexpr const char* delete_clip = "Delete Clip";
inline constexpr const char* delete_clips = "Delete Clips";
inline constexpr const char* duplicate_row = "Duplicate Row";
inline constexpr const char* delete_row = "Delete Row";
inline constexpr const char* merge_rows = "Merge Rows";
inline constexpr const char* expand_row = "Expand Row";
inline constexpr const char* merge_timelines = "Merge Timelines";
// Clips that were growing when the timeline was closed, or its program died.
inline constexpr const char* closed = "Closed";
inline constexpr const char* recovered = "Recovered";

}  // namespace vistels::edit_name
