// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <string>

namespace vistels {

class settings_store;

// Where the application keeps what is its own.
struct home_places {
    std::string home_vault;    // ".../Home Vault.VVault"
    std::string state_folder;  // ".../Home Folder.VVault", also the folder of the settings
    std::string trash = {};    // the user's trash; empty: that of each volume
    std::string desktop = {};  // the folder that the user's desktop shows
    // Keeps the settings in memory; null: each is read from its file and written into it when it is asked
    // for.
    std::shared_ptr<settings_store> settings = {};

    // Data of vistels that is kept on this machine only.
    std::string local_vistels() const;
    // What can be made again.
    std::string temporary_folder() const;
};

// All lie in `home` when it is not empty, else in the folder that VISTELS_HOME names, else the vault
// in the user's documents folder and the state in the user's data folder ("$XDG_DATA_HOME/vistels",
// "~/.local/share/vistels"), beside which the desktop's trash lies. Nothing is looked up but the user's
// folders, nothing is made.
home_places usual_home_places(const std::string& home = {});

// The path from the root, without "." and "..", and without a slash at its end. Nothing is looked up.
std::string absolute_path(const std::string& path);

}  // namespace vistels
