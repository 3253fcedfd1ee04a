// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

// Collections
inline constexpr failure_of<a_path, a_text> collection_has_no_such_vistel{
    "collection has no such vistel", "The collection \"%1\" has no vistel \"%2\"."};
inline constexpr failure_of<a_path> collection_has_no_vistels{"collection has no vistels",
                                                              "The collection \"%1\" has no vistels."};
inline constexpr failure_of<a_path, a_cause> collection_was_not_changed{"collection was not changed",
                                                                        "\"%1\" was not changed: %2"};
inline constexpr failure_of<a_cause> movie_data_stayed{
    "movie data stayed", "The vistel is closed; its movie data stayed in its place: %1"};
inline constexpr failure_of<a_path, a_cause> no_vistel_can_be_shown{"no vistel can be shown",
                                                                    "No vistel of \"%1\" can be shown: %2"};
inline constexpr failure_of<a_path> frames_did_not_come{
    "frames did not come", "The vistels of \"%1\" did not show their frames in time."};
inline constexpr failure_of<a_path> playing_was_cancelled{"playing was cancelled",
                                                          "Playing \"%1\" was cancelled."};
inline constexpr failure_of<a_path> seeking_was_cancelled{"seeking was cancelled",
                                                          "Seeking in \"%1\" was cancelled."};
inline constexpr failure_of<a_path> showing_was_cancelled{"showing was cancelled",
                                                          "Showing \"%1\" was cancelled."};
inline constexpr failure_of<a_path> demo_without_media{
    "demo without media", "The demo event in \"%1\" was not made: this program was built without media."};

// Timelines
inline constexpr failure_of<a_path> filtering_was_cancelled{"filtering was cancelled",
                                                            "Filtering \"%1\" was cancelled."};
inline constexpr failure_of<a_text> timeline_has_no_clip{"timeline has no clip",
                                                         "The timeline has no clip \"%1\"."};
inline constexpr failure_of<a_path, a_text> source_has_no_clip{"source has no clip",
                                                               "\"%1\" has no clip \"%2\"."};
inline constexpr failure_of<a_path> journal_may_hold_edits{
    "journal may hold edits",
    "\"%1\" may hold unsaved edits of the timeline there; open that timeline first."};
inline constexpr failure_of<a_path, a_cause> timeline_has_a_fault{"timeline has a fault", "\"%1\": %2"};

// Lists of numbers
inline constexpr failure_of<a_text> text_is_no_number{"text is no number", "\"%1\" is no number."};

}  // namespace vistels
