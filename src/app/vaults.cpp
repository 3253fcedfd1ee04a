// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vaults.h"

#include <sys/stat.h>
#include <sys/statvfs.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <set>

#include "util/file_system.h"
#include "util/property_list.h"
#include "util/safe_write.h"
#include "util/uuid.h"

namespace vistels {

namespace {

namespace fs = std::filesystem;

constexpr int deepest_folder = 64;

std::string known_vaults_path(const home_places& places) {
    return path_join(path_join(places.state_folder, "Vault preferences"), "vaults.plist");
}

bool is_link(const std::string& path) {
    std::error_code ignored;
    return fs::is_symlink(path, ignored);
}

void scan_folder(const std::string& folder, int depth, vault_content& found) {
    if (depth > deepest_folder) return;
    const auto names = names_in_folder(folder);
    for (std::size_t index = 0; index < item_kinds().size(); ++index) {
        const auto& kind = item_kinds()[index];
        if (std::find(names.begin(), names.end(), kind.marker_file) == names.end()) continue;
        ++found.counts[index];
        found.items.push_back({path_name(folder), folder, kind.kind});
    }
    for (const auto& name : names) {
        const std::string path = path_join(folder, name);
        if (name.starts_with('.') || name.ends_with(vault_ending) || !is_folder(path) || is_link(path))
            continue;
        scan_folder(path, depth + 1, found);
    }
}

// The vaults that the user added, as stored.
std::vector<std::string> added_vaults(const home_places& places) {
    std::vector<std::string> vaults;
    const auto stored = read_dictionary_or_empty(known_vaults_path(places));
    if (const auto* paths = stored.array("vaults")) {
        for (const auto& path : *paths) {
            if (path.text() && !path.text()->empty()) vaults.push_back(*path.text());
        }
    }
    return vaults;
}

result<void> save_added_vaults(const home_places& places, const std::vector<std::string>& vaults) {
    const std::string path = known_vaults_path(places);
    if (auto made = make_folders(path_folder(path)); !made) return made;
    property_array paths;
    for (const auto& vault : vaults) paths.emplace_back(vault);
    property_dictionary stored;
    stored.add("vaults", std::move(paths));
    return safe_write(path, stored);
}

failure no_folder(const std::string& path, int error_number) {
    return failure{"Could not create folder. " +
                   file_failure(path, "could not be made", error_number).message};
}

// Puts a new folder in the place of the vault, and only then deletes what was there.
result<void> replace_vault(const std::string& vault) {
    if (is_home_vault(vault)) return failure{"\"" + vault + "\" is the home vault and cannot be replaced."};
    const std::string aside = path_join(path_folder(vault), ".replaced " + new_uuid());
    auto& files = machine_files();
    if (const int fault = files.rename(vault, aside)) return no_folder(vault, fault);
    if (const int fault = files.make_folder(vault)) {
        files.rename(aside, vault);
        return no_folder(vault, fault);
    }
    std::error_code fault;
    fs::remove_all(aside, fault);
    if (fault) return file_failure(aside, "could not be deleted", fault.value());
    return {};
}

}  // namespace

const std::array<item_kind_names, 6>& item_kinds() {
    static const std::array<item_kind_names, 6> kinds{{
        {item_kind::collection, "video group.plist", "number of collections", "collection"},
        {item_kind::timeline, "chron data.plist", "number of timelines", "timeline"},
        {item_kind::composer, "composer info.plist", "number of composers", "composer"},
        {item_kind::markup, "logger.plist", "number of markups", "markup"},
        {item_kind::table, "Table.plist", "number of tables", "table"},
        {item_kind::matrix, "Matrix.plist", "number of matrices", "matrix"},
    }};
    return kinds;
}

result<vault_content> scan_vault(const std::string& vault) {
    const std::string folder = absolute_path(vault);
    if (!is_folder(folder)) return failure{"\"" + vault + "\" is missing or is no folder."};
    vault_content found;
    scan_folder(folder, 0, found);
    return found;
}

result<std::string> create_vault(const std::string& parent, const std::string& name, bool replace) {
    const bool has_ending =
        name.size() > std::string_view(vault_ending).size() && name.ends_with(vault_ending);
    const std::string bare =
        has_ending ? name.substr(0, name.size() - std::string_view(vault_ending).size()) : name;
    if (bare.empty() || bare.find('/') != std::string::npos) {
        return failure{"Could not create folder. \"" + name + "\" is no name for a vault."};
    }
    const std::string vault = path_join(absolute_path(parent), bare + vault_ending);
    if (!file_exists(vault)) {
        if (auto made = make_folders(path_folder(vault)); !made) {
            return failure{"Could not create folder. " + made.message()};
        }
        if (const int fault = machine_files().make_folder(vault)) return no_folder(vault, fault);
        return vault;
    }
    if (!replace) return failure{"Vault '" + bare + "' already exists. It is \"" + vault + "\"."};
    if (auto replaced = replace_vault(vault); !replaced) return replaced.error();
    return vault;
}

bool is_home_vault(const std::string& folder) {
    return path_name(folder).ends_with(vault_ending) &&
           file_exists(path_join(folder, "home vault information.plist"));
}

std::vector<std::string> known_vaults(const home_places& places) {
    std::vector<std::string> vaults{places.home_vault};
    for (auto& vault : added_vaults(places)) {
        if (std::find(vaults.begin(), vaults.end(), vault) == vaults.end())
            vaults.push_back(std::move(vault));
    }
    return vaults;
}

result<void> add_known_vault(const home_places& places, const std::string& vault) {
    const std::string path = absolute_path(vault);
    auto vaults = added_vaults(places);
    if (path == places.home_vault || std::find(vaults.begin(), vaults.end(), path) != vaults.end()) return {};
    vaults.push_back(path);
    return save_added_vaults(places, vaults);
}

result<void> remove_known_vault(const home_places& places, const std::string& vault) {
    auto vaults = added_vaults(places);
    if (std::erase(vaults, absolute_path(vault)) == 0) return {};
    return save_added_vaults(places, vaults);
}

std::vector<files_Items_Master_list_ITEM_DATA> files_MASTER_LIST(const std::vector<std::string>& vaults,
                                                                 std::vector<std::string>& messages) {
    std::vector<files_Items_Master_list_ITEM_DATA> all;
    std::set<std::pair<std::string, item_kind>> met;
    for (const auto& vault : vaults) {
        const auto content = scan_vault(vault);
        if (!content) continue;  // its volume is away
        for (const auto& item : content.value().items) {
            std::error_code ignored;
            const std::string real = fs::weakly_canonical(item.full_file_path, ignored).string();
            if (met.emplace(real, item.kind).second) {
                all.push_back(item);
            } else {
                messages.push_back("duplicate found 🥁🥁🥁 " + item.full_file_path);
            }
        }
    }
    return all;
}

result<volume_space> space_of(const std::string& path) {
    struct statvfs volume {};
    if (::statvfs(path.c_str(), &volume) != 0)
        return file_failure(path, "cannot be asked for its space", errno);
    const auto block = static_cast<double>(volume.f_frsize);
    return volume_space{static_cast<double>(volume.f_bavail) * block,
                        static_cast<double>(volume.f_blocks) * block};
}

}  // namespace vistels
