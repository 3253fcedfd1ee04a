// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "app/places.h"
#include "util/result.h"

namespace vistels {

inline constexpr const char* vault_ending = ".VVault";

// What a folder in a vault may be; a folder with several marker files is several items.
enum class item_kind { collection, timeline, composer, markup, table, matrix };

// One table for everything by which kinds are known and shown.
struct item_kind_names {
    item_kind kind;
    const char* marker_file;
    const char* count_key;  // "number of collections"
    const char* type;       // "collection"
};
const std::array<item_kind_names, 6>& item_kinds();

// An entry of the list of everything in the known vaults.
struct files_Items_Master_list_ITEM_DATA {
    std::string file_name_;      // of the folder
    std::string full_file_path;  // of the folder
    item_kind kind = item_kind::collection;
};

struct vault_content {
    std::array<std::size_t, 6> counts{};  // in the order of item_kinds()
    std::vector<files_Items_Master_list_ITEM_DATA> items;
};

// Looks through the vault by marker files; hidden folders and vaults inside are passed over. A folder that
// cannot be listed counts as empty; a `vault` that is no folder is an error. Any thread.
result<vault_content> scan_vault(const std::string& vault);

// Makes "NAME.VVault" in `parent` and returns its path. One that exists is an error unless `replace`: then it
// is deleted with all it holds.
result<std::string> create_vault(const std::string& parent, const std::string& name, bool replace = false);

// Ends in ".VVault" and holds "home vault information.plist".
bool is_home_vault(const std::string& folder);

// The vaults that the user added, home vault first. Those whose volume is away are listed too.
std::vector<std::string> known_vaults(const home_places& places);
result<void> add_known_vault(const home_places& places, const std::string& vault);
result<void> remove_known_vault(const home_places& places, const std::string& vault);

// The list of everything in these vaults. An item met twice is listed once and told in `messages`.
std::vector<files_Items_Master_list_ITEM_DATA> files_MASTER_LIST(const std::vector<std::string>& vaults,
                                                                 std::vector<std::string>& messages);

// Free space of the volume that holds `path`.
struct volume_space {
    double free_bytes = 0;
    double total_bytes = 0;
    double free_percent() const { return total_bytes > 0 ? free_bytes / total_bytes * 100 : 0; }
};
result<volume_space> space_of(const std::string& path);

}  // namespace vistels
