// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

// Why a call of the system failed.
inline constexpr failure_of<> volume_is_full{"volume is full", "there is no space left on the volume"};
inline constexpr failure_of<> volume_is_read_only{"volume is read only", "the volume is read-only"};
inline constexpr failure_of<> access_is_denied{"access is denied", "you are not allowed to"};
inline constexpr failure_of<> nothing_is_there{"nothing is there", "there is no such file or folder"};
inline constexpr failure_of<> volume_has_an_error{"volume has an error",
                                                  "the volume reports an input or output error"};
inline constexpr failure_of<> too_many_files_are_open{"too many files are open", "too many files are open"};
// In the system's own words.
inline constexpr failure_of<a_text> system_refuses{"system refuses", "%1"};

// The reason of an error number (errno).
failure system_failure(int error_number);

// What could not be done with a file or folder, and why.
inline constexpr failure_of<a_path, a_cause> file_cannot_be_read{"file cannot be read",
                                                                 "\"%1\" cannot be read: %2."};
inline constexpr failure_of<a_path, a_cause> file_could_not_be_made{"file could not be made",
                                                                    "\"%1\" could not be made: %2."};
inline constexpr failure_of<a_path, a_cause> file_could_not_be_written{"file could not be written",
                                                                       "\"%1\" could not be written: %2."};
inline constexpr failure_of<a_path, a_cause> file_could_not_be_saved{"file could not be saved",
                                                                     "\"%1\" could not be saved: %2."};
// The new content stands there, but may not last.
inline constexpr failure_of<a_path, a_cause> file_may_not_be_saved{"file may not be saved",
                                                                   "\"%1\" may not be saved: %2."};
inline constexpr failure_of<a_path, a_cause> file_could_not_be_synced{"file could not be synced",
                                                                      "\"%1\" could not be synced: %2."};
inline constexpr failure_of<a_path, a_cause> file_could_not_be_kept{"file could not be kept",
                                                                    "\"%1\" could not be kept: %2."};
inline constexpr failure_of<a_path, a_cause> file_could_not_be_set_aside{
    "file could not be set aside", "\"%1\" is damaged and could not be set aside: %2."};
inline constexpr failure_of<a_path, a_cause> file_could_not_be_copied{"file could not be copied",
                                                                      "\"%1\" could not be copied: %2."};
inline constexpr failure_of<a_path, a_cause> file_cannot_be_listed{"file cannot be listed",
                                                                   "\"%1\" cannot be listed: %2."};
inline constexpr failure_of<a_path, a_cause> file_cannot_be_looked_through{
    "file cannot be looked through", "\"%1\" cannot be looked through: %2."};
inline constexpr failure_of<a_path> file_is_missing{"file is missing", "\"%1\" is missing."};
inline constexpr failure_of<a_path> file_is_missing_or_no_folder{"file is missing or no folder",
                                                                 "\"%1\" is missing or is no folder."};

inline constexpr failure_of<> name_is_no_folder{"name is no folder",
                                                "something that is no folder has that name"};
inline constexpr failure_of<a_path, a_cause> file_was_left_alone{
    "file was left alone", "\"%1\" could not be saved: %2. It was left alone."};
inline constexpr failure_of<> folder_has_that_name{"folder has that name", "a folder has that name"};
inline constexpr failure_of<> what_is_no_file_has_that_name{"what is no file has that name",
                                                            "what has that name is no plain file"};

// %1, after which a version by another program was kept.
inline constexpr failure_of<a_cause, a_text> another_version_was_kept{
    "another version was kept", "%1 A version by another program was kept as \"%2\"."};

}  // namespace vistels
