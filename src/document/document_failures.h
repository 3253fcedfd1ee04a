// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

inline constexpr failure_of<> held_back{"held back",
                                        "It was not saved: what belongs to it could not be saved."};
inline constexpr failure_of<> other_not_open{"other not open", "What else it changes is not open."};
inline constexpr failure_of<a_term, a_cause> edit_could_not_be_done{"edit could not be done",
                                                                    "\"%1\" could not be done: %2"};

// The journal of the document in a folder.
inline constexpr failure_of<a_path> journal_has_no_segment_left{"journal has no segment left",
                                                                "The journal in \"%1\" has no segment left."};

// Another program wrote as well, and its version has a name of its own: a file_conflict.
inline constexpr failure_of<a_path, a_text> file_of_another_was_kept{
    "file of another was kept",
    "\"%1\" was changed by another program while it was open here. That version was kept as \"%2\"; the one "
    "in this window was saved."};
inline constexpr failure_of<a_path, a_text> changes_of_another_were_kept{
    "changes of another were kept", "Changes that do not fit \"%1\" were kept as \"%2\"."};

// Who has the lock.
inline constexpr failure_of<> another_program{"another program", "another program"};
inline constexpr failure_of<a_text, a_text, a_text> process_of_a_user{"process of a user",
                                                                      "process %1 of %2 on \"%3\""};
inline constexpr failure_of<a_path, a_cause> lock_could_not_be_taken_over{
    "lock could not be taken over", "\"%1\" could not be taken over: %2."};

}  // namespace vistels
