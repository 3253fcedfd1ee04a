// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vaults/content_list.h"

#include <algorithm>
#include <set>

#include "app/vaults/vault_failures.h"
#include "timeline/files/stored_clip_count.h"
#include "util/file_system.h"

namespace vistels {

namespace {

// The one of `owners` that is the folder, or holds it; empty when there is none.
std::string owner_of(const std::set<std::string>& owners, const std::string& folder) {
    for (std::string at = folder; at.size() > 1 && at != "."; at = path_folder(at)) {
        if (owners.contains(at)) return at;
    }
    return {};
}

}  // namespace

std::vector<content_item> items_of(std::span<const files_Items_Master_list_ITEM_DATA> found) {
    std::set<std::string> collections;
    std::set<std::string> timelines;
    for (const auto& item : found) {
        if (item.kind == item_kind::collection) collections.insert(item.full_file_path);
        if (item.kind == item_kind::timeline) timelines.insert(item.full_file_path);
    }
    std::vector<content_item> items;
    for (const auto& item : found) {
        content_item one{item.kind, item.file_name_, item.full_file_path, {}, -1};
        const bool is_timeline = item.kind == item_kind::timeline;
        if (is_timeline && collections.contains(one.path)) continue;
        if (is_timeline || item.kind == item_kind::collection) one.opens = one.path;
        if (item.kind == item_kind::markup) {
            one.opens = owner_of(collections, one.path);
            if (one.opens.empty()) one.opens = owner_of(timelines, one.path);
            if (!one.opens.empty()) one.name = path_name(one.opens);
        }
        items.push_back(std::move(one));
    }
    std::stable_sort(items.begin(), items.end(), [](const auto& a, const auto& b) {
        return a.kind != b.kind ? a.kind < b.kind : natural_before(a.name, b.name);
    });
    return items;
}

content_vault content_of(const listed_vault& listed,
                         std::span<const files_Items_Master_list_ITEM_DATA> found) {
    content_vault vault;
    vault.name = listed.name;
    vault.path = listed.path;
    vault.is_home = listed.is_home;
    vault.is_focus = listed.is_focus;
    vault.space = listed.space;
    vault.is_limited = listed.has_limited_free_space;
    if (!listed.is_available) {
        vault.problem = listed.problem ? listed.problem : vault_is_not_available();
        return vault;
    }
    vault.items = items_of(found);
    for (const auto& item : found) ++vault.counts[static_cast<std::size_t>(item.kind)];
    return vault;
}

long long count_clips(const std::string& folder) {
    const auto count = count_stored_clips(folder);
    return count ? static_cast<long long>(count.value()) : -1;
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
