// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "app/settings/places.h"
#include "util/result.h"

namespace vistels {

// What the paths of a command line, a dialog or a drop stand for.
struct open_request {
    enum class kind { nothing, collection, timeline, vault, movies };
    kind what = kind::nothing;
    std::string folder;               // of the collection, the timeline or the vault
    std::vector<std::string> movies;  // in the order given
};

// What several paths stand for.
struct open_requests {
    std::vector<open_request> found;  // in the order of their paths, each once
    std::vector<failure> refused;     // for each path that is nothing that can be opened
};

// Each path is a collection's folder (or a folder or file inside it), the folder of a timeline that belongs
// to none, a vault, a movie file, or a folder of movies, which stands for them in their natural order; all
// movies together are one request, in the place of the first. Any thread.
open_requests what_to_open(const std::vector<std::string>& paths);

// The first collection in the vault in natural order; empty when it holds none.
std::string first_collection_in(const std::string& vault);

// The folder holds a collection or a timeline, or copies of one that can be mended.
bool can_be_opened(const std::string& folder);

// The event to open when none is named: the one that was open last if it is still there, else the first
// collection in the home vault; empty when there is none.
std::string event_to_reopen(const home_places& places, const std::string& open_last);

// The folder for a new collection of that name in the vault: one that is not there yet. Characters that make
// trouble in file names are replaced.
std::string new_collection_folder(const std::string& vault, const std::string& name);

// The name of a collection made from these movies: that of the first one without its ending.
std::string name_from_movies(const std::vector<std::string>& movies);

}  // namespace vistels
