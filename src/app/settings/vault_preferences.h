// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/settings/places.h"
#include "app/settings/settings_file.h"
#include "util/result.h"

namespace vistels {

// The files of the folder "Vault preferences", one struct each: read whole, written whole. What is missing or
// of the wrong type leaves the default; keys that are not known stay in the file. Any thread may load.

// "minimum free space for vault for warning.plist"
struct minimum_free_space_setting {
    int percent = 10;  // 1 to 99; another value that is stored counts as the default
};
minimum_free_space_setting load_minimum_free_space(const home_places& places);
// A percentage outside 1 to 99 is an error.
result<void> save_minimum_free_space(const home_places& places, minimum_free_space_setting setting);

// "show unavailable vaults.plist"
struct show_unavailable_vaults_setting {
    bool shown = true;  // vaults whose volume is away are listed
};
show_unavailable_vaults_setting load_show_unavailable_vaults(const home_places& places);
result<void> save_show_unavailable_vaults(const home_places& places, show_unavailable_vaults_setting setting);

// "focus vault.plist"
struct focus_vault_setting {
    std::string path;                     // empty: the home vault
    std::optional<std::string> bookmark;  // bytes that name the same path, kept as they are
    bool operator==(const focus_vault_setting&) const = default;
};
focus_vault_setting load_focus_vault_setting(const home_places& places);
result<void> save_focus_vault_setting(const home_places& places, const focus_vault_setting& setting);

// "create_new_vault_settings.plist": what the panel for a new vault shows first.
struct create_new_vault_settings {
    std::string parent_folder;  // in which the last vault was made; empty: none yet
    std::string vault_name;     // of the last vault
    bool operator==(const create_new_vault_settings&) const = default;
};
create_new_vault_settings load_create_new_vault_settings(const home_places& places);
result<void> save_create_new_vault_settings(const home_places& places,
                                            const create_new_vault_settings& settings);

// "set focus to new vault.plist"
struct set_focus_to_new_vault_setting {
    bool set = false;  // a vault that was made becomes the focus vault
};
set_focus_to_new_vault_setting load_set_focus_to_new_vault(const home_places& places);
result<void> save_set_focus_to_new_vault(const home_places& places, set_focus_to_new_vault_setting setting);

// "vaults.plist": the vaults that the user added, in the order of the side bar, without the home vault.
struct added_vaults_setting {
    std::vector<std::string> paths;
};
added_vaults_setting load_added_vaults(const home_places& places);
result<void> save_added_vaults(const home_places& places, const added_vaults_setting& setting);

// All files above.
const std::vector<settings_file>& vault_preference_files();

}  // namespace vistels
