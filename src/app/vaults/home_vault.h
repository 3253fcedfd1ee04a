// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "app/settings/places.h"
#include "app/settings/settings_file.h"
#include "util/result.h"

namespace vistels {

// Where the home vault was last, and its identity.
inline constexpr settings_file home_vault_file{"System", "home vault.plist"};

// A folder is the home vault when its name ends in ".VVault" and it holds "home vault information.plist".
bool is_home_vault(const std::string& folder);
// "ID for this file:" in that file; empty when there is none.
std::string home_vault_id(const std::string& folder);

// Where the home vault lies that is not in its usual place, which `usual` names: where it was last, among the
// added vaults, or in the folders around the usual place. Only the one whose identity is noted counts, where
// one is. Empty: nowhere, so that a new one is to be made in the usual place.
std::string moved_home_vault(const home_places& usual);

// usual_home_places, with the home vault where it was moved when it is not in its usual place. Nothing is
// made.
home_places find_home_places(const std::string& home = {});

// Notes where the home vault is and which it is. What there is to tell: that it could not be noted, or, when
// the one noted before is gone from its place, that it was found in another place or that there is a new one.
failure note_home_vault(const home_places& places);

}  // namespace vistels
