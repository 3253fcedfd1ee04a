// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "app/vaults/files_MASTER_LIST.h"
#include "app/vaults/vault_scan.h"
#include "app/vaults/vault_space.h"

namespace vistels {

// One thing that a vault holds, as the side bar lists it.
struct content_item {
    item_kind kind = item_kind::collection;
    std::string name;
    std::string path;      // of its folder
    std::string opens;     // the folder that is opened for it; empty: it cannot be opened by itself
    long long count = -1;  // clips of a collection or timeline; -1: not known

    bool operator==(const content_item&) const = default;
};

struct content_vault {
    std::string name;
    std::string path;
    bool is_home = false;
    failure problem;                      // why it cannot be listed; none when it can
    std::vector<content_item> items;      // by kind, then by name in natural order
    std::array<std::size_t, 6> counts{};  // of all it holds, in the order of item_kinds()
    bool is_focus = false;                // new items are saved into it
    std::optional<volume_space> space;
    bool is_limited = false;  // its volume has less free space than the user wants to be warned of
};

// A remembered filter that was given a name.
struct content_pattern {
    std::string name;
    std::string pattern;

    bool operator==(const content_pattern&) const = default;
};

// The items of a vault that holds these things: all but the timelines of collections, which their collections
// stand for. A code window has the name of the collection or timeline that it belongs to, and opens with it.
std::vector<content_item> items_of(std::span<const files_Items_Master_list_ITEM_DATA> found);

// A vault of the application's list, and what the list names in it, as the side bar shows it.
content_vault content_of(const listed_vault& listed,
                         std::span<const files_Items_Master_list_ITEM_DATA> found);

// The clips of a collection or timeline, or -1; reads the whole timeline, so it takes its time. Any thread.
long long count_clips(const std::string& folder);

// How a group of items is headed: "Collections".
const char* group_heading(item_kind kind);

// The kinds in the order of their groups.
inline constexpr item_kind group_order[] = {item_kind::collection, item_kind::timeline, item_kind::composer,
                                            item_kind::markup,     item_kind::table,    item_kind::matrix};

}  // namespace vistels
