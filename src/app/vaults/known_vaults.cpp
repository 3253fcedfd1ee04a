// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vaults/known_vaults.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

#include "app/settings/vault_preferences.h"
#include "app/vaults/vault_failures.h"
#include "app/vaults/vault_scan.h"
#include "util/file_failures.h"
#include "util/file_system.h"

namespace vistels {

namespace {

// The folder's path without symbolic links; as it is when it is away.
std::string real_path(const std::string& path) {
    std::error_code fault;
    const auto real = std::filesystem::canonical(path, fault);
    return fault ? absolute_path(path) : real.string();
}

bool holds(const std::vector<std::string>& vaults, const std::string& vault) {
    return std::any_of(vaults.begin(), vaults.end(),
                       [&vault](const std::string& one) { return is_same_folder(one, vault); });
}

result<void> check_vault(const home_places& places, const std::string& vault) {
    if (!file_exists(vault)) return file_is_missing(vault);
    if (!is_folder(vault)) return vault_is_no_folder(vault);
    if (!vault.ends_with(vault_ending)) {
        return vault_has_another_ending(vault, vault_ending);
    }
    if (is_same_folder(vault, places.state_folder)) {
        return vault_is_the_state_folder(vault);
    }
    if (::access(vault.c_str(), R_OK | X_OK) != 0) return file_cannot_be_listed(vault, system_failure(errno));
    return {};
}

}  // namespace

std::string vault_name(const std::string& vault) {
    std::string name = path_name(vault);
    if (name.ends_with(vault_ending)) name.resize(name.size() - std::string_view(vault_ending).size());
    return name;
}

bool is_same_folder(const std::string& a, const std::string& b) {
    if (a == b) return true;
    file_identity one, other;
    auto& files = machine_files();
    if (files.identity(a, one) != 0 || files.identity(b, other) != 0) return false;
    return one.device == other.device && one.inode == other.inode;
}

std::vector<std::string> known_vaults(const home_places& places) {
    std::vector<std::string> vaults{places.home_vault};
    for (auto& vault : load_added_vaults(places).paths) {
        if (!holds(vaults, vault)) vaults.push_back(std::move(vault));
    }
    return vaults;
}

result<known_vault> add_known_vault(const home_places& places, const std::string& vault) {
    const std::string path = real_path(vault);
    if (is_same_folder(path, places.home_vault)) return known_vault{places.home_vault, true};
    auto added = load_added_vaults(places);
    for (const auto& one : added.paths) {
        if (is_same_folder(one, path)) return known_vault{one, true};
    }
    if (auto checked = check_vault(places, path); !checked) return checked.error();
    added.paths.push_back(path);
    if (auto saved = save_added_vaults(places, added); !saved) return saved.error();
    return known_vault{path, false};
}

result<void> remove_known_vault(const home_places& places, const std::string& vault) {
    const std::string path = real_path(vault);
    if (is_same_folder(path, places.home_vault)) {
        return home_vault_is_always_listed(path);
    }
    auto added = load_added_vaults(places);
    const auto is_meant = [&](const std::string& one) { return one == vault || is_same_folder(one, path); };
    const auto focus = load_focus_vault_setting(places);
    if (!focus.path.empty() && is_meant(focus.path)) {
        if (auto saved = save_focus_vault_setting(places, {}); !saved) return saved;
    }
    if (std::erase_if(added.paths, is_meant) == 0) return vault_is_not_listed(path);
    return save_added_vaults(places, added);
}

focus_vault focus_vault_of(const home_places& places) {
    const std::string chosen = load_focus_vault_setting(places).path;
    if (chosen.empty() || is_same_folder(chosen, places.home_vault)) return {places.home_vault, {}};
    if (is_folder(chosen)) return {chosen, {}};
    return {places.home_vault, focus_vault_is_away(chosen, places.home_vault)};
}

result<void> choose_focus_vault(const home_places& places, const std::string& vault) {
    const auto known = add_known_vault(places, vault);
    if (!known) return known.error();
    const std::string& path = known.value().path;
    if (!is_folder(path)) {
        return chosen_vault_is_away(path);
    }
    auto setting = load_focus_vault_setting(places);
    if (setting.path == path) return {};
    return save_focus_vault_setting(places, {path, std::nullopt});
}

}  // namespace vistels
