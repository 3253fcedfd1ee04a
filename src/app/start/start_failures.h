// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

inline constexpr failure_of<a_path, a_text> home_vault_has_a_new_identity{
    "home vault has a new identity",
    "\"%1\" was damaged and is kept as \"%2\"; the home vault has a new identity."};

// How the last run ended: %1 of the two that follow.
inline constexpr failure_of<> not_quit_properly{"not quit properly",
                                                "Vistels was not quit properly the last time"};
inline constexpr failure_of<a_text> not_quit_properly_since{
    "not quit properly since", "Vistels was not quit properly the last time (it was started %1)"};
inline constexpr failure_of<a_cause> no_file_was_damaged{
    "no file was damaged",
    "%1.\r\rNo file was damaged. Changes of a timeline that were not saved are brought back when it is "
    "opened."};
// Their paths, each behind a carriage return.
inline constexpr failure_of<a_cause, a_text> files_were_put_back{"files were put back",
                                                                 "%1.\r\rThese files were put back whole:%2"};

inline constexpr failure_of<a_text, a_text> build_is_older{
    "build is older",
    "This version of Vistels is an older build than the previous version that was used.\r\r"
    "Build number of this version  %1.\rPrevious build number used  %2."};
inline constexpr failure_of<a_text, a_text> newer_build_is_installed{
    "newer build is installed",
    "A newer build of Vistels is installed. It is used after Vistels is quit and started again.\r\r"
    "Build number of this version  %1.\rBuild number of the newer version  %2."};

// What cannot be opened
inline constexpr failure_of<a_path> nothing_to_open_is_there{"nothing to open is there",
                                                             "“%1” is not there."};
inline constexpr failure_of<a_path> nothing_that_opens{
    "nothing that opens",
    "“%1” is neither a vault nor a collection, a timeline, a movie or a folder of movies."};

}  // namespace vistels
