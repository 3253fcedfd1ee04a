// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/content_list.h"

#include <algorithm>
#include <set>

#include "timeline/sxy_Save_Load.h"
#include "util/file_system.h"

namespace vistels {

namespace {

std::string vault_name(const std::string& path) {
    std::string name = path_name(path);
    const std::string ending = vault_ending;
    if (name.ends_with(ending)) name.resize(name.size() - ending.size());
    return name;
}

// The collection whose folder is, or holds, `folder`; empty when there is none.
std::string collection_around(const std::set<std::string>& collections, const std::string& folder) {
    for (std::string at = folder; at.size() > 1 && at != "."; at = path_folder(at)) {
        if (collections.contains(at)) return at;
    }
    return {};
}

void list_items(content_vault& vault, const vault_content& content) {
    std::set<std::string> collections;
    for (const auto& item : content.items) {
        if (item.kind == item_kind::collection) collections.insert(item.full_file_path);
    }
    for (const auto& item : content.items) {
        content_item one{item.kind, item.file_name_, item.full_file_path, {}, -1};
        one.opens = collection_around(collections, item.full_file_path);
        const bool belongs = item.kind != item_kind::collection && !one.opens.empty();
        if (belongs && item.kind != item_kind::markup) continue;
        if (belongs) one.name = path_name(one.opens);
        vault.items.push_back(std::move(one));
    }
    std::stable_sort(vault.items.begin(), vault.items.end(), [](const auto& a, const auto& b) {
        return a.kind != b.kind ? a.kind < b.kind : natural_before(a.name, b.name);
    });
}

}  // namespace

std::vector<content_vault> read_content(const home_places& places) {
    std::vector<content_vault> vaults;
    for (const auto& path : known_vaults(places)) {
        content_vault vault{vault_name(path), path, path == places.home_vault, {}, {}};
        if (const auto content = scan_vault(path)) {
            list_items(vault, content.value());
        } else {
            vault.problem = content.message();
        }
        vaults.push_back(std::move(vault));
    }
    return vaults;
}

void count_clips(std::vector<content_vault>& vaults) {
    for (auto& vault : vaults) {
        for (auto& item : vault.items) {
            if (item.kind != item_kind::collection && item.kind != item_kind::timeline) continue;
            const auto loaded = load_timeline(item.path);
            if (!loaded) continue;
            item.count = 0;
            for (const auto& row : loaded.value().content.rows) {
                item.count += static_cast<long long>(row->clips().size());
            }
        }
    }
}

const char* group_heading(item_kind kind) {
    switch (kind) {
        case item_kind::collection:
            return "Collections";
        case item_kind::timeline:
            return "Timelines";
        case item_kind::composer:
            return "Composers";
        case item_kind::markup:
            return "Code windows";
        case item_kind::table:
            return "Clip tables";
        case item_kind::matrix:
            return "Matrices";
    }
    return "";
}

}  // namespace vistels
