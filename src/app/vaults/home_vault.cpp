// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vaults/home_vault.h"

#include <filesystem>

#include "app/settings/vault_preferences.h"
#include "app/vaults/vault_failures.h"
#include "app/vaults/vault_scan.h"
#include "util/file_system.h"
#include "util/property_list.h"

namespace vistels {

namespace {

namespace fs = std::filesystem;

constexpr const char* information_name = "home vault information.plist";
constexpr const char* id_key = "ID for this file:";
constexpr const char* path_key = "path";

struct noted_vault {
    std::string path;
    std::string id;
};

noted_vault read_note(const home_places& places) {
    const auto stored = read_settings(places, home_vault_file);
    const auto* path = stored.find(path_key);
    return {path ? path_from(*path) : std::string(), stored.text_or_empty(id_key)};
}

// Looks `levels` folders deep; what is hidden, in a vault or in the trash is passed over.
template <class Is_it>
std::string find_below(const std::string& folder, int levels, const std::string& trash, const Is_it& is_it) {
    std::string deeper;
    for (const auto& name : names_in_folder(folder)) {
        const std::string path = path_join(folder, name);
        std::error_code ignored;
        if (name.starts_with('.') || path == trash || fs::is_symlink(path, ignored) || !is_folder(path))
            continue;
        if (name.ends_with(vault_ending)) {
            if (is_it(path)) return path;
        } else if (levels > 1 && deeper.empty()) {
            deeper = find_below(path, levels - 1, trash, is_it);
        }
    }
    return deeper;
}

}  // namespace

bool is_home_vault(const std::string& folder) {
    return path_name(folder).ends_with(vault_ending) && file_exists(path_join(folder, information_name));
}

std::string home_vault_id(const std::string& folder) {
    return read_dictionary_or_empty(path_join(folder, information_name)).text_or_empty(id_key);
}

std::string moved_home_vault(const home_places& usual) {
    constexpr int deepest = 3;
    const auto noted = read_note(usual);
    const auto is_it = [&](const std::string& folder) {
        return is_home_vault(folder) && (noted.id.empty() || home_vault_id(folder) == noted.id);
    };
    if (!noted.path.empty() && is_it(noted.path)) return noted.path;
    for (const auto& added : load_added_vaults(usual).paths) {
        if (is_it(added)) return added;
    }
    return find_below(path_folder(usual.home_vault), deepest, usual.trash, is_it);
}

home_places find_home_places(const std::string& home) {
    auto places = usual_home_places(home);
    if (!file_exists(places.home_vault)) {
        if (std::string moved = moved_home_vault(places); !moved.empty())
            places.home_vault = std::move(moved);
    }
    return places;
}

failure note_home_vault(const home_places& places) {
    const auto before = read_note(places);
    const std::string id = home_vault_id(places.home_vault);
    if (id.empty() || (before.path == places.home_vault && before.id == id)) return {};
    property_dictionary stored;
    stored.add(path_key, stored_path(places.home_vault));
    stored.add(id_key, id);
    if (auto saved = write_settings(places, home_vault_file, stored); !saved) return saved.error();
    // Of a copy there is nothing to tell: what was noted is still in its place.
    if (before.path.empty() || before.path == places.home_vault || is_folder(before.path)) {
        return {};
    }
    return before.id == id ? home_vault_was_found_again(places.home_vault)
                           : home_vault_is_another(before.path, places.home_vault);
}

}  // namespace vistels
