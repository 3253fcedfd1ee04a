// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// The names of changes of a collection, as the journal and the undo history keep them and as they are
// translated where they are shown.
namespace vistels::change_name {

inline constexpr const char* add_vistel = "Add Vistel";
inline constexpr const char* add_vistels = "Add Vistels";
inline constexpr const char* duplicate_vistel = "Duplicate Vistel";
inline constexpr const char* remove_vistel = "Remove Vistel";
inline constexpr const char* move_in_order = "Move Collection Vistel";
inline constexpr const char* vistel_name = "Vistel Name";
inline constexpr const char* vistel_for_sound = "Vistel For Sound";
inline constexpr const char* add_overlay = "Add Overlay";
inline constexpr const char* remove_overlay = "Remove Overlay";
inline constexpr const char* append_movies = "Append Movies";
inline constexpr const char* find_movie = "Find Movie";
inline constexpr const char* deinterlace_vistel = "Deinterlace Vistel";
inline constexpr const char* movie_parts = "Movie Parts";
inline constexpr const char* lock_clips = "Lock Clips To Movie Parts";
inline constexpr const char* vistel_offset = "Vistel Offset";
inline constexpr const char* nudge_vistel = "Nudge Vistel";
inline constexpr const char* replace_with_padding = "Replace Vistel Offsets With Padding Movies";
inline constexpr const char* remove_offsets_and_padding =
    "Remove Vistel Offsets And Padding Movies From All Vistels";
inline constexpr const char* restore_offsets =
    "Remove Padding Movies From All Vistels And Replace With Offsets";

// How the vistels stand in the collection's view
inline constexpr const char* move_vistel = "Move Vistel";
inline constexpr const char* resize_vistel = "Resize Vistel";
inline constexpr const char* change_layout = "Change Layout";
inline constexpr const char* bring_to_front = "Bring to Front";
inline constexpr const char* send_to_back = "Send to Back";
inline constexpr const char* show_numbers = "Show Vistel Numbers";
inline constexpr const char* show_missing_starts = "Show Missing Vistel Starts";

}  // namespace vistels::change_name
