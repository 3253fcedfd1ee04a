// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings/places.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <string_view>

#include "util/file_system.h"

namespace vistels {

namespace {

constexpr const char* home_vault_name = "Home Vault.VVault";
constexpr const char* state_folder_name = "Home Folder.VVault";

std::string environment(const char* name) {
    const char* value = std::getenv(name);
    return value ? value : "";
}

std::string user_home() {
    std::string home = environment("HOME");
    if (!home.empty()) return home;
    const passwd* entry = ::getpwuid(::getuid());
    return entry && entry->pw_dir ? entry->pw_dir : "/";
}

// The folder that a variable names; relative ones do not count.
std::string folder_from(const char* variable, const std::string& otherwise) {
    std::string folder = environment(variable);
    return folder.starts_with('/') ? folder : path_join(user_home(), otherwise);
}

// The folder of a line such as XDG_DOCUMENTS_DIR="$HOME/Documents" of the desktop's list of the user's
// folders.
std::string user_folder(const std::string& kind, const std::string& name) {
    const std::string otherwise = path_join(user_home(), name);
    const auto list = read_file(path_join(folder_from("XDG_CONFIG_HOME", ".config"), "user-dirs.dirs"));
    if (!list) return otherwise;
    const std::string key = "XDG_" + kind + "_DIR=\"";
    std::string_view left = list.value();
    while (!left.empty()) {
        const std::string_view line = left.substr(0, left.find('\n'));
        left.remove_prefix(line.size() < left.size() ? line.size() + 1 : left.size());
        if (!line.starts_with(key)) continue;
        std::string folder(line.substr(key.size(), line.rfind('"') - key.size()));
        constexpr std::string_view home = "$HOME";
        if (folder.starts_with(home)) folder.replace(0, home.size(), user_home());
        if (folder.starts_with('/')) return folder;
    }
    return otherwise;
}

}  // namespace

std::string home_places::local_vistels() const {
    return path_join(state_folder, "Single Videos Local");
}

std::string home_places::temporary_folder() const {
    return path_join(state_folder, "Temp");
}

std::string absolute_path(const std::string& path) {
    std::error_code ignored;
    const auto absolute = std::filesystem::absolute(path, ignored);
    const auto normal = (ignored ? std::filesystem::path(path) : absolute).lexically_normal();
    return (normal.has_filename() ? normal : normal.parent_path()).string();
}

home_places usual_home_places(const std::string& home) {
    const std::string chosen = home.empty() ? environment("VISTELS_HOME") : home;
    if (!chosen.empty()) {
        const std::string folder = absolute_path(chosen);
        return {path_join(folder, home_vault_name), path_join(folder, state_folder_name),
                path_join(folder, "Trash"), path_join(folder, "Desktop")};
    }
    const std::string data = folder_from("XDG_DATA_HOME", ".local/share");
    return {path_join(user_folder("DOCUMENTS", "Documents"), home_vault_name),
            path_join(path_join(data, "vistels"), state_folder_name), path_join(data, "Trash"),
            user_folder("DESKTOP", "Desktop")};
}

}  // namespace vistels
