// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

// What a recovery of broken-off writes found, and what it did.
inline constexpr failure_of<a_path> file_was_put_back{"file was put back",
                                                      "\"%1\" was put back from its copy."};
inline constexpr failure_of<a_path, a_text> file_was_put_back_for_a_torn_one{
    "file was put back for a torn one",
    "\"%1\" was put back from its copy. The torn file was kept as \"%2\"."};
inline constexpr failure_of<a_path, a_cause> file_could_not_be_put_back{"file could not be put back",
                                                                        "\"%1\" could not be put back: %2."};
inline constexpr failure_of<a_path> file_cannot_be_read_now{
    "file cannot be read now", "\"%1\" cannot be read now. Nothing was changed."};

// How a file stands, without an end of the sentence: %1 of what follows.
inline constexpr failure_of<a_path> file_gone{"file gone", "\"%1\" is missing"};
inline constexpr failure_of<a_path> file_torn{"file torn", "\"%1\" is damaged"};
inline constexpr failure_of<a_cause> no_whole_copy_was_found{
    "no whole copy was found", "%1 and no whole copy of it was found. Nothing was changed."};
inline constexpr failure_of<a_cause, a_text> strange_copy_was_kept{
    "strange copy was kept",
    "%1. A copy that an earlier save left is not what was saved last and was kept as \"%2\"."};
inline constexpr failure_of<a_cause, a_text> old_copy_was_kept{
    "old copy was kept", "%1. A copy that an earlier save left is older than a day and was kept as \"%2\"."};
inline constexpr failure_of<a_cause, a_text> part_of_a_save_was_kept{
    "part of a save was kept", "%1: a save of it broke off. What was written of it was kept as \"%2\"."};

}  // namespace vistels
