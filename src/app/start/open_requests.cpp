// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/start/open_requests.h"

#include <algorithm>
#include <filesystem>

#include "app/start/start_failures.h"
#include "app/vaults/vaults.h"
#include "timeline/files/sxy_Save_Load.h"
#include "util/file_system.h"
#include "video/video_coll_Files.h"
#include "video/video_coll_LOAD.h"

namespace vistels {

namespace {

constexpr const char* collections_folder = "Video Groups";

std::string absolute(const std::string& path) {
    std::error_code failed;
    const auto whole = std::filesystem::weakly_canonical(path, failed);
    return failed ? path : whole.string();
}

bool is_vault(const std::string& folder) {
    return is_folder(folder) && folder.ends_with(vault_ending);
}

bool holds_collection(const std::string& folder) {
    return file_exists(path_join(folder, collection_file_name));
}

bool holds_timeline(const std::string& folder) {
    return file_exists(path_join(folder, timeline_file_name));
}

// The collection that `path` is or lies in, looking no further up than its vault.
std::string collection_of(const std::string& path) {
    for (std::string at = path; at.size() > 1 && at != "." && !is_vault(at); at = path_folder(at)) {
        if (holds_collection(at)) return at;
    }
    return {};
}

result<open_request> what_is(const std::string& given) {
    const std::string path = absolute(given);
    if (!file_exists(path) && !is_folder(path)) return nothing_to_open_is_there(given);
    if (is_vault(path)) return open_request{open_request::kind::vault, path, {}};
    if (!is_folder(path) && is_movie_name(path)) return open_request{open_request::kind::movies, {}, {path}};
    if (const auto folder = collection_of(path); !folder.empty()) {
        return open_request{open_request::kind::collection, folder, {}};
    }
    if (const auto alone = is_folder(path) ? path : path_folder(path); holds_timeline(alone)) {
        return open_request{open_request::kind::timeline, alone, {}};
    }
    if (is_folder(path)) {
        if (auto movies = movies_of_item(path))
            return open_request{open_request::kind::movies, {}, std::move(movies).value()};
    }
    return nothing_that_opens(given);
}

}  // namespace

open_requests what_to_open(const std::vector<std::string>& paths) {
    open_requests all;
    for (const auto& given : paths) {
        auto one = what_is(given);
        if (!one) {
            all.refused.push_back(one.error());
            continue;
        }
        open_request& what = one.value();
        const bool is_movie = what.what == open_request::kind::movies;
        const auto like = std::find_if(all.found.begin(), all.found.end(), [&](const open_request& before) {
            return before.what == what.what && (is_movie || before.folder == what.folder);
        });
        if (like == all.found.end()) {
            all.found.push_back(std::move(what));
        } else if (is_movie) {
            like->movies.insert(like->movies.end(), what.movies.begin(), what.movies.end());
        }
    }
    return all;
}

std::string first_collection_in(const std::string& vault) {
    const auto content = scan_vault(vault);
    if (!content) return {};
    std::string first;
    for (const auto& item : content.value().items) {
        if (item.kind != item_kind::collection) continue;
        if (first.empty() || natural_before(item.full_file_path, first)) first = item.full_file_path;
    }
    return first;
}

bool can_be_opened(const std::string& folder) {
    if (folder.empty()) return false;
    const auto names = names_in_folder(folder);
    return std::any_of(names.begin(), names.end(), [](const std::string& name) {
        return name.starts_with(collection_file_name) || name.starts_with(timeline_file_name);
    });
}

std::string event_to_reopen(const home_places& places, const std::string& open_last) {
    if (can_be_opened(open_last)) return open_last;
    return first_collection_in(places.home_vault);
}

std::string new_collection_folder(const std::string& vault, const std::string& name) {
    std::string clean = name;
    for (char& one : clean) {
        if (one == '/' || one == ':' || static_cast<unsigned char>(one) < ' ') one = '-';
    }
    while (!clean.empty() && (clean.front() == '.' || clean.front() == ' ')) clean.erase(0, 1);
    if (clean.empty()) clean = "Collection";
    const std::string parent = path_join(vault, collections_folder);
    std::string folder = path_join(parent, clean);
    for (int number = 2; file_exists(folder) || is_folder(folder); ++number) {
        folder = path_join(parent, clean + " " + std::to_string(number));
    }
    return folder;
}

std::string name_from_movies(const std::vector<std::string>& movies) {
    if (movies.empty()) return "Collection";
    const std::string stem = std::filesystem::path(movies.front()).stem().string();
    return stem.empty() ? "Collection" : stem;
}

}  // namespace vistels
