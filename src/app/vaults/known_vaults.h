// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "app/settings/places.h"
#include "util/result.h"

namespace vistels {

// The home vault, then those that the user added, in the order in which they were. Those whose volume is away
// are listed too. Any thread.
std::vector<std::string> known_vaults(const home_places& places);

struct known_vault {
    std::string path;        // without symbolic links
    bool was_known = false;  // it stood in the list before
};
// Adds an existing vault: a folder whose name ends in ".VVault" and that can be listed. One that is known
// already, by this path or by another, is not listed twice.
result<known_vault> add_known_vault(const home_places& places, const std::string& vault);
// Takes a vault from the list; its folder stays as it is. One that is not listed is an error. The home vault
// stays. When it was the focus vault,
// the home vault becomes that.
result<void> remove_known_vault(const home_places& places, const std::string& vault);

struct focus_vault {
    std::string path;
    failure problem;  // why it is not the vault that was chosen; none when it is
};
// The vault into which new items are saved: the one that was chosen, or the home vault while that one cannot
// be reached. The choice itself stays stored, so that it holds again when its volume is back.
focus_vault focus_vault_of(const home_places& places);
// Chooses it; a vault that is not in the list is added to it. A bookmark of another vault is dropped.
result<void> choose_focus_vault(const home_places& places, const std::string& vault);

// "Cup" for "/a/Cup.VVault".
std::string vault_name(const std::string& vault);

// True when both name one folder. Folders that are away are compared by their paths.
bool is_same_folder(const std::string& a, const std::string& b);

}  // namespace vistels
