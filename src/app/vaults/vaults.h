// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>

#include "app/settings/places.h"
#include "app/vaults/home_vault.h"
#include "app/vaults/known_vaults.h"
#include "app/vaults/vault_scan.h"
#include "app/vaults/vault_space.h"
#include "util/file_system.h"
#include "util/result.h"

namespace vistels {

// The path that a vault of that name has in `parent`: white space around the name is left off, the ending
// ".VVault" is added when it is not there. A name that is empty, that no folder can have, or that is too long
// for the volume, is an error.
result<std::string> new_vault_path(const std::string& parent, const std::string& name);

// Makes the vault and the folders above it, and returns its path. What stands there already, of whatever
// kind, is an error: vault_exists.
result<std::string> create_vault(const std::string& parent, const std::string& name,
                                 file_system& files = machine_files());

// The same in the place of one that exists, which goes to the desktop's trash with all it holds: at every
// instant it is in its place or there. When that cannot be done the old vault stays and the failure says why.
// The home vault, the state folder, a link, and a vault that another program changes or has a timeline of
// open for writing, are not replaced. Where there is none it is made.
result<std::string> replace_vault(const home_places& places, const std::string& parent,
                                  const std::string& name, file_system& files = machine_files());

// The command for a new vault: makes it, or with `replace` replaces it, adds it to the list of vaults, and
// makes it the focus vault when the settings say so; parent folder and name are remembered for the next time.
struct new_vault_request {
    std::string parent;
    std::string name;
    bool replace = false;
};
struct new_vault {
    std::string path;
    bool is_focus = false;
    failure problem;  // the vault is made, but not listed, or not the focus: why
};
result<new_vault> create_new_vault(const home_places& places, const new_vault_request& request);

}  // namespace vistels
