// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

// An open event
inline constexpr failure_of<a_cause> general_code_window_is_shown{
    "general code window is shown", "%1 A general code window is shown instead."};
inline constexpr failure_of<> step_cannot_be_read{"step cannot be read", "no step"};

// Changes of a collection
inline constexpr failure_of<a_text> vistel_is_gone{"vistel is gone", "The collection has no vistel \"%1\"."};
inline constexpr failure_of<a_text> parts_changed_meanwhile{"parts changed meanwhile",
                                                            "The movie parts of \"%1\" changed meanwhile."};
inline constexpr failure_of<> gap_is_negative{"gap is negative", "A gap must be 0 seconds or longer."};
inline constexpr failure_of<> gap_is_too_long{"gap is too long", "A gap must not be longer than 30 years."};
inline constexpr failure_of<> gap_is_before_no_part{
    "gap is before no part", "A gap must be 0 seconds or longer, before one of the movie parts."};
inline constexpr failure_of<a_text> no_movie_is_missing{"no movie is missing",
                                                        "No movie of \"%1\" is missing any more."};
inline constexpr failure_of<a_text> offset_is_no_number{"offset is no number",
                                                        "The offset of \"%1\" is no number."};
inline constexpr failure_of<a_text> offset_is_too_long{
    "offset is too long", "The offset of \"%1\" is too long: more than 30 years."};
inline constexpr failure_of<> moment_needs_two_vistels{"moment needs two vistels",
                                                       "The moment must be seen in two vistels."};
inline constexpr failure_of<a_term> padding_was_not_done{
    "padding was not done", "\"%1\" was not done: the collection changed meanwhile."};

// Closing a vistel
inline constexpr failure_of<a_text> vistel_is_another_users{
    "vistel is another users",
    "You did not create '%1'.\r\rIf you click 'Close Vistel' this will close the vistel and move the movie "
    "data to the trash.  The movie data will then not be available for others."};
inline constexpr failure_of<a_text> vistel_data_is_shared{
    "vistel data is shared",
    "The data of the vistel \"%1\" is shown by another vistel of the collection, too."};

}  // namespace vistels
