// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "app/places.h"
#include "app/vaults.h"

namespace vistels {

// One thing that a vault holds, as the side bar lists it.
struct content_item {
    item_kind kind = item_kind::collection;
    std::string name;
    std::string path;   // of its folder
    std::string opens;  // the collection's folder that is opened for it; empty: it cannot be opened by itself
    long long count = -1;  // clips of a collection or timeline; -1: not known
};

struct content_vault {
    std::string name;
    std::string path;
    bool is_home = false;
    std::string problem;              // why it cannot be listed, for the user; empty when it can
    std::vector<content_item> items;  // by kind, then by name in natural order
};

// What the known vaults hold, the home vault first. What belongs to a collection (its timeline, its code
// window) is not listed beside it, except the code window, under the collection's name. Any thread.
std::vector<content_vault> read_content(const home_places& places);

// Fills in the counts; reads the timelines, so it takes its time. Any thread.
void count_clips(std::vector<content_vault>& vaults);

// How a group of items is headed: "Collections".
const char* group_heading(item_kind kind);

}  // namespace vistels
