// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/video_coll_LOAD.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <optional>

#include "media/movie_information.h"
#include "timeline/files/sxy_Save_Load.h"
#include "util/clock.h"
#include "util/file_failures.h"
#include "util/property_list.h"
#include "util/safe_write.h"
#include "util/text_forms.h"
#include "video/collection_failures.h"
#include "video/padding_movies.h"
#include "video/video_coll_Files.h"
#include "video/video_coll_Offsets.h"
#include "video/video_coll_Pictures.h"

namespace vistels {

namespace {

namespace fs = std::filesystem;

std::string shown_name(const single_Vistel_CTR& vistel) {
    return vistel.name().empty() ? vistel.uuid() : vistel.name();
}

// A folder's name, not a path to somewhere else.
bool is_plain_name(const std::string& name) {
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

// Where the data of a vistel may lie, the likeliest first.
std::vector<std::string> data_folders(const single_Vistel_CTR& vistel, const std::string& folder,
                                      const std::string& local_vistels) {
    std::vector<std::string> places{vistels_folder_of(folder), path_join(folder, vistels_folder_name)};
    if (!local_vistels.empty()) {
        places.insert(vistel.saves_data_locally() ? places.begin() : places.end(), local_vistels);
    }
    for (auto& place : places) place = path_join(place, vistel.uuid());
    return places;
}

bool is_among(const std::vector<std::string>& names, const std::string& name) {
    return std::find(names.begin(), names.end(), name) != names.end();
}

using part_list = std::vector<movie_Part_DRONE_Offset_Item>;

// Takes out of `names` those for which `wanted` gives a place among the parts that has no file yet.
template <class Place>
void give_files(part_list& parts, std::vector<std::string>& names, const std::string& folder, Place place) {
    std::erase_if(names, [&](const std::string& name) {
        const std::size_t index = place(name);
        if (index >= parts.size() || !parts[index].path.empty()) return false;
        parts[index].path = path_join(folder, name);
        return true;
    });
}

// Gives the movie files of a folder to the parts: to the padding and the part that name their file, numbered
// names to the part of that number, the others in order to parts that are left, and to further parts when
// there are more files than parts. How many parts those are is returned.
std::size_t match_files(part_list& parts, const std::vector<std::string>& unused, const std::string& folder) {
    for (auto& part : parts) {
        const std::string padding = padding_file_of(part);
        if (!padding.empty() && file_exists(path_join(folder, padding)))
            part.path = path_join(folder, padding);
    }
    auto names = names_in_folder(folder);
    std::erase_if(names,
                  [](const std::string& name) { return !is_movie_name(name) || is_padding_file_name(name); });
    give_files(parts, names, folder, [&](const std::string& name) {
        return static_cast<std::size_t>(
            std::find_if(parts.begin(), parts.end(),
                         [&](const auto& part) { return part.kept.text_or_empty("movie_file") == name; }) -
            parts.begin());
    });
    std::erase_if(names, [&](const std::string& name) { return is_among(unused, name); });
    const auto is_free = [&](std::size_t index) {
        return parts[index].path.empty() && parts[index].kept.text_or_empty("movie_file").empty() &&
               !is_padding(parts[index]);
    };
    give_files(parts, names, folder, [&](const std::string& name) {
        const std::size_t number = part_number(name);
        return number >= 1 && number <= parts.size() && is_free(number - 1) ? number - 1 : parts.size();
    });
    std::size_t next = 0;
    give_files(parts, names, folder, [&](const std::string&) {
        while (next < parts.size() && !is_free(next)) ++next;
        return next;
    });
    for (const auto& name : names) parts.push_back({0, 0, path_join(folder, name), {}});
    return names.size();
}

// What is wrong with the parts, the first thing found; durations that no record holds are read.
failure check_parts(part_list& parts, std::size_t extra, const std::string& folder) {
    failure problem;
    const auto tell = [&](const failure& found) {
        if (!problem) problem = found;
    };
    for (std::size_t index = 0; index < parts.size(); ++index) {
        auto& part = parts[index];
        if (part.path.empty()) {
            tell(part_has_no_file(index + 1, folder));
        } else if (part.part_duration <= 0) {
            const auto movie = probe_movie(part.path);
            if (movie) part.part_duration = movie.value().duration;
            if (!movie) tell(movie.error());
        }
    }
    if (extra > 0) {
        tell(movie_is_not_listed(parts[parts.size() - extra].path));
    }
    return problem;
}

// The local copy of a streamed vistel, against the durations on record.
double missing_seconds(const part_list& parts) {
    double missing = 0;
    for (const auto& part : parts) {
        if (part.path.empty()) {
            missing += part.part_duration;
        } else if (part.part_duration > 0) {
            const auto movie = probe_movie(part.path);
            if (movie) missing += part.part_duration - movie.value().duration;
        }
    }
    return missing;
}

// Where a vistel's record lies, and what it holds; or that it is missing beside the vistel's movies.
struct found_record {
    std::string folder;
    property_dictionary record;
    failure problem = {};
};

// A program that dies while it saves a new collection leaves vistels with movies and without a record. A copy
// of one that is being saved means that it is not missing for good.
result<found_record> without_record(const std::string& folder, const std::string& path) {
    const auto names = names_in_folder(folder);
    const bool has_copy = std::any_of(names.begin(), names.end(),
                                      [](const auto& name) { return name.starts_with(vistel_file_name); });
    const bool has_movie = std::any_of(names.begin(), names.end(), [](const auto& name) {
        return is_movie_name(name) || is_picture_name(name);
    });
    const failure problem = file_is_missing(path);
    if (has_copy || !has_movie) return problem;
    return found_record{folder, {}, problem};
}

result<found_record> find_record(const single_Vistel_CTR& vistel, const std::string& folder,
                                 const std::string& local_vistels) {
    if (!is_plain_name(vistel.uuid())) return record_has_no_identifier();
    const auto places = data_folders(vistel, folder, local_vistels);
    const auto found = std::find_if(places.begin(), places.end(), is_folder);
    if (found == places.end()) {
        return vistel.http_file().empty() ? vistel_folder_is_missing(places.front())
                                          : streamed_vistel_has_no_copy(vistel.http_file(), places.front());
    }
    const std::string path = path_join(*found, vistel_file_name);
    if (!file_exists(path)) return without_record(*found, path);
    const auto record = read_property_list_file(path);
    if (!record) return record.error();
    const auto* dictionary = record.value().dictionary();
    if (!dictionary) return file_holds_no_vistel(path);
    return found_record{*found, *dictionary};
}

// What keeps a vistel from being shown, or shown whole; an alert is told as it stands.
struct load_outcome {
    failure problem;
    failure alert;
};

load_outcome load_movies(single_Vistel_CTR& vistel, const std::string& folder) {
    auto parts = vistel.parts();
    const std::size_t extra = match_files(parts.parts, unused_movies(vistel.stored_vistel()), folder);
    load_outcome outcome;
    outcome.problem = check_parts(parts.parts, extra, folder);
    if (parts.parts.empty()) {
        outcome.problem = folder_holds_no_movie(folder, no_movie_parts());
    } else if (!vistel.http_file().empty()) {
        constexpr double least_told_seconds = 0.1;
        const double missing = missing_seconds(parts.parts);
        if (missing >= least_told_seconds) outcome.alert = shorter_than_expected(vistel.name(), missing);
    }
    vistel.set_parts(parts);
    vistel.set_parts_on_record(std::move(parts));
    return outcome;
}

load_outcome load_vistel(single_Vistel_CTR& vistel, const std::string& folder,
                         const std::string& local_vistels) {
    const auto found = find_record(vistel, folder, local_vistels);
    if (!found) return {found.error(), {}};
    // From here on the record may be written again.
    vistel.set_data_folder(found.value().folder);
    read_vistel_record(vistel, found.value().record);
    load_outcome outcome;
    if (!vistel.is_inserted_picture()) {
        outcome = load_movies(vistel, found.value().folder);
    } else if (picture_path(vistel).empty()) {
        outcome.problem = folder_holds_no_picture(found.value().folder);
    }
    if (found.value().problem) {
        outcome.problem = found.value().problem;
        // Its movies are to be listed when it is saved.
        vistel.set_parts_on_record(std::nullopt);
    }
    return outcome;
}

// Every vistel in its order; nothing may save the collection meanwhile.
void load_vistels(loaded_collection& loaded, const std::string& folder, const std::string& local_vistels) {
    const saving_block block(loaded.collection);
    const auto vistels = loaded.collection.vistels();
    const auto frames = grid_layout(vistels.size());
    for (std::size_t index = 0; index < vistels.size(); ++index) {
        auto& vistel = *vistels[index];
        const auto outcome = load_vistel(vistel, folder, local_vistels);
        if (!vistel.proportion_rect()) vistel.set_proportion_rect(frames[index]);
        if (outcome.alert) loaded.alerts.push_back(outcome.alert);
        if (!outcome.problem) continue;
        vistel.set_problem(outcome.problem);
        loaded.messages.push_back(vistel_was_not_loaded(shown_name(vistel), outcome.problem));
    }
}

// Clips and composers find a vistel by its number, so each has one; those that clips in the folder name stand
// for vistels that there were.
void give_missing_numbers(loaded_collection& loaded, const std::string& folder) {
    auto& collection = loaded.collection;
    const auto vistels = collection.vistels();
    if (std::all_of(vistels.begin(), vistels.end(), [](const auto& one) { return has_number(*one); })) return;
    if (file_exists(path_join(folder, timeline_file_name))) {
        if (const auto timeline = load_timeline(folder))
            collection.set_vistel_numbers_in_use(vistel_numbers_in(timeline.value().content));
    }
    for (const auto& vistel : vistels) {
        if (has_number(*vistel)) continue;
        vistel->set_number(collection.take_vistel_number());
        std::string number;
        append_shortest_decimal(number, vistel->number());
        loaded.messages.push_back(vistel_got_a_number(shown_name(*vistel), number));
        loaded.has_new_numbers = true;
    }
    collection.set_vistel_numbers_in_use({});
}

// A record in which something stands where the vistels should would lose it.
bool is_collection_record(const property_value& record) {
    const auto* dictionary = record.dictionary();
    if (!dictionary) return false;
    const auto* items = dictionary->find(collection_items_key);
    return !items || items->array();
}

// The files of the parts that the vistel has on record.
part_list recorded_parts(const single_Vistel_CTR& vistel) {
    if (const auto known = vistel.parts_on_record()) return known->parts;
    const auto record = vistel.stored_vistel();
    const auto* stored = record.array("drone_array");
    if (!stored) return {};
    auto parts = read_movie_parts(*stored).parts;
    const std::size_t extra = match_files(parts, unused_movies(record), vistel.data_folder());
    parts.resize(parts.size() - extra);
    return parts;
}

// A file that was a part and is none now is not to come back as one.
void list_unused_movies(property_dictionary& record, const single_Vistel_CTR& vistel) {
    const auto* parts = record.find("drone_array");
    const auto as_read = vistel.stored_vistel();
    const auto* before = as_read.find("drone_array");
    if (!parts || (before && *before == *parts)) return;
    std::vector<std::string> used;
    for (const auto& part : vistel.parts().parts) used.push_back(path_name(part.path));
    auto candidates = unused_movies(as_read);
    for (const auto& part : recorded_parts(vistel)) candidates.push_back(path_name(part.path));
    std::vector<std::string> unused;
    for (const auto& name : candidates) {
        // Padding that is not used is deleted.
        const bool is_there = !name.empty() && !is_padding_file_name(name) &&
                              file_exists(path_join(vistel.data_folder(), name));
        if (is_there && !is_among(used, name) && !is_among(unused, name)) unused.push_back(name);
    }
    set_unused_movies(record, unused);
}

// A file that is no record of ours is not replaced without a trace.
result<void> keep_foreign_file(const std::string& path, file_system& files) {
    const auto there = read_property_list_file(path);
    if (!there || is_collection_record(there.value())) return {};
    const std::string kept = damaged_name(path);
    if (files.hard_link(path, kept) == 0) return {};
    // Not every volume has hard links.
    const auto bytes = read_file(path, files);
    return bytes ? safe_write_bytes(kept, bytes.value(), files) : result<void>(bytes.error());
}

}  // namespace

movie_Part_DRONE_Offsets_Root parts_in_folder(const std::string& folder) {
    single_Vistel_CTR vistel;
    read_vistel_record(vistel, read_dictionary_or_empty(path_join(folder, vistel_file_name)));
    auto parts = vistel.parts();
    match_files(parts.parts, unused_movies(vistel.stored_vistel()), folder);
    return parts;
}

failure shorter_than_expected(const std::string& name, double seconds) {
    constexpr double whole_seconds_from = 10;
    // Tenths that would be rounded up to 10.0 are told as 10.
    const bool is_whole = std::round(seconds * 10) >= whole_seconds_from * 10;
    std::string number;
    append_shortest_decimal(number, is_whole ? std::round(seconds) : std::round(seconds * 10) / 10);
    if (!is_whole && number.find('.') == std::string::npos) number += ".0";
    return vistel_is_shorter(name, number);
}

std::string vault_of(const std::string& path) {
    std::error_code ignored;
    fs::path folder = fs::absolute(path, ignored).lexically_normal();
    if (!folder.has_filename()) folder = folder.parent_path();
    for (; folder.has_relative_path(); folder = folder.parent_path()) {
        if (folder.extension() == ".VVault") return folder.string();
    }
    return {};
}

std::string vistels_folder_of(const std::string& collection_folder) {
    const std::string vault = vault_of(collection_folder);
    return path_join(vault.empty() ? collection_folder : vault, vistels_folder_name);
}

result<loaded_collection> load_collection(const std::string& folder, const std::string& local_vistels) {
    if (!is_folder(folder)) return file_is_missing_or_no_folder(folder);
    const std::string path = path_join(folder, collection_file_name);
    loaded_collection loaded;
    const auto bytes = read_known(path, loaded.record_file);
    if (!bytes) return bytes.error();
    if (!bytes.value()) return collection_is_missing(path);
    const auto record = read_property_list(*bytes.value(), path);
    if (!record) return record.error();
    const auto* dictionary = record.value().dictionary();
    if (dictionary) loaded.collection = read_collection(*dictionary);
    if (!is_collection_record(record.value())) {
        loaded.messages.push_back(collection_record_is_strange(path));
    }
    if (has_foreign_items(loaded.collection)) {
        loaded.messages.push_back(collection_names_no_vistel(path));
    }
    load_vistels(loaded, folder, local_vistels);
    give_missing_numbers(loaded, folder);
    for (auto& problem : numbering_problems(loaded.collection)) {
        loaded.messages.push_back(std::move(problem));
    }
    return loaded;
}

result<void> save_collection(video_collection_ROOT& collection, const std::string& folder,
                             file_system& files) {
    const std::string path = path_join(folder, collection_file_name);
    if (collection.saving_is_blocked()) {
        return collection_is_being_loaded(path);
    }
    const auto record = write_collection(collection, seconds_since_1970());
    if (auto kept = keep_foreign_file(path, files); !kept) return kept;
    if (auto saved = safe_write(path, record, files); !saved) return saved;
    return save_vistels(collection, files);
}

result<void> save_collection(video_collection_ROOT& collection, const std::string& folder, known_file& known,
                             std::string& kept, file_system& files) {
    const std::string path = path_join(folder, collection_file_name);
    if (collection.saving_is_blocked()) return collection_is_being_loaded(path);
    const auto record = write_property_list(write_collection(collection, seconds_since_1970()));
    if (auto aside = keep_foreign_file(path, files); !aside) return aside;
    auto strangers = safe_write_known(path, record, known, false, files);
    if (!strangers) return strangers.error();
    kept = std::move(strangers).value();
    return save_vistels(collection, files);
}

// One that cannot be saved, its volume being away for instance, keeps no other from it.
result<void> save_vistels(const video_collection_ROOT& collection, file_system& files) {
    result<void> all;
    for (const auto& vistel : collection.vistels()) {
        if (vistel->data_folder().empty()) continue;
        auto stored = write_vistel_record(*vistel);
        list_unused_movies(stored, *vistel);
        const std::string path = path_join(vistel->data_folder(), vistel_file_name);
        if (stored != vistel->stored_vistel() || !file_exists(path)) {
            if (auto saved = safe_write(path, stored, files); !saved) {
                if (all) all = std::move(saved);
                continue;
            }
            vistel->set_stored_vistel(std::move(stored));
        }
        vistel->set_parts_on_record(vistel->parts());
    }
    return all;
}

}  // namespace vistels
