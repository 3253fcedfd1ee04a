// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

// Making and replacing a vault
inline constexpr failure_of<a_text, a_path> vault_exists{"vault exists",
                                                         "Vault '%1' already exists. It is \"%2\"."};
inline constexpr failure_of<a_cause> vault_folder_not_made{"vault folder not made",
                                                           "Could not create folder. %1"};
inline constexpr failure_of<a_cause, a_cause> vault_not_restored{"vault not restored", "%1 %2"};
inline constexpr failure_of<> vault_needs_a_name{"vault needs a name", "A vault needs a name."};
inline constexpr failure_of<a_text> vault_name_holds_a_slash{
    "vault name holds a slash", "\"%1\" is no name for a vault: it holds \"/\"."};
inline constexpr failure_of<a_text> vault_name_is_no_text{
    "vault name is no text", "\"%1\" is no name for a vault: it holds characters that are no text."};
inline constexpr failure_of<a_text, a_text, a_path, a_text> vault_name_is_too_long{
    "vault name is too long",
    "\"%1\" is too long for a name: it has %2 bytes, and in \"%3\" there is room for %4."};
inline constexpr failure_of<a_path> link_cannot_be_replaced{
    "link cannot be replaced", "\"%1\" is a symbolic link and cannot be replaced."};
inline constexpr failure_of<a_path> home_vault_cannot_be_replaced{
    "home vault cannot be replaced", "\"%1\" is the home vault and cannot be replaced."};
inline constexpr failure_of<a_path> state_folder_cannot_be_replaced{
    "state folder cannot be replaced", "\"%1\" holds the application's own state and cannot be replaced."};
inline constexpr failure_of<a_cause, a_path> timeline_of_vault_is_open{"timeline of vault is open",
                                                                       "%1 The timeline in \"%2\" is open."};

// The list of vaults
inline constexpr failure_of<a_path> vault_is_no_folder{"vault is no folder",
                                                       "\"%1\" is no vault: it is no folder."};
inline constexpr failure_of<a_path, a_text> vault_has_another_ending{
    "vault has another ending", "\"%1\" is no vault: its name does not end in \"%2\"."};
inline constexpr failure_of<a_path> vault_is_the_state_folder{
    "vault is the state folder", "\"%1\" holds the application's own state and is no vault for items."};
inline constexpr failure_of<a_path> home_vault_is_always_listed{
    "home vault is always listed", "\"%1\" is the home vault, which is always listed."};
inline constexpr failure_of<a_path> vault_is_not_listed{"vault is not listed", "\"%1\" is not listed."};
inline constexpr failure_of<a_path> chosen_vault_is_away{
    "chosen vault is away", "\"%1\" cannot be reached, so that no new items can be saved there."};
inline constexpr failure_of<a_path, a_path> focus_vault_is_away{
    "focus vault is away",
    "The focus vault \"%1\" cannot be reached. New items are saved in the home vault \"%2\" instead."};
inline constexpr failure_of<a_cause> vault_went_away{"vault went away",
                                                     "A vault can no longer be reached. %1"};
inline constexpr failure_of<> vault_is_not_available{"vault is not available", "It is not available."};
inline constexpr failure_of<a_path> home_vault_was_found_again{"home vault was found again",
                                                               "The home vault was found again as \"%1\"."};
inline constexpr failure_of<a_path, a_path> home_vault_is_another{
    "home vault is another", "The home vault \"%1\" was not found. The home vault is now \"%2\"."};

// Looking through a vault
inline constexpr failure_of<a_path> folder_lies_too_deep{"folder lies too deep",
                                                         "\"%1\" was not looked into: it lies too deep."};
inline constexpr failure_of<a_path, a_cause> folder_cannot_be_looked_into{
    "folder cannot be looked into", "\"%1\" cannot be looked into: %2."};
inline constexpr failure_of<a_path, a_text> more_cannot_be_looked_into{
    "more cannot be looked into", "\"%1\" holds %2 more folders that cannot be looked into."};
inline constexpr failure_of<a_path, a_cause> volume_cannot_be_asked{
    "volume cannot be asked", "\"%1\" cannot be asked for its space: %2."};

// The trash
inline constexpr failure_of<a_path, a_cause> file_could_not_be_moved_to_trash{
    "file could not be moved to trash", "\"%1\" could not be moved to the trash: %2."};
inline constexpr failure_of<a_path, a_cause> file_could_not_be_brought_back{
    "file could not be brought back", "\"%1\" could not be brought back from the trash: %2."};
inline constexpr failure_of<a_path, a_path, a_cause> file_stays_in_trash{
    "file stays in trash", "\"%1\" could not be brought back from the trash, where it is \"%2\": %3."};

}  // namespace vistels
