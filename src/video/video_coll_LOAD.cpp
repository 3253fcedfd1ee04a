// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/video_coll_LOAD.h"

#include <filesystem>
#include <optional>

#include "media/movie_information.h"
#include "util/clock.h"
#include "util/property_list.h"
#include "util/safe_write.h"
#include "util/text_forms.h"
#include "video/video_coll_Files.h"

namespace vistels {

namespace {

namespace fs = std::filesystem;

std::string in_quotes(const std::string& path) {
    return "\"" + path + "\"";
}

std::string load_error(const single_Vistel_CTR& vistel, const std::string& reason) {
    const std::string name = vistel.name().empty() ? vistel.uuid() : vistel.name();
    return "error found when loading vistel in collection: " + in_quotes(name) + ": " + reason;
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

// The number that a name such as "part 012.mp4" carries; 0 for other names.
std::size_t part_number(const std::string& name) {
    constexpr std::string_view lead = "part ";
    const auto dot = name.rfind('.');
    if (!name.starts_with(lead) || dot == std::string::npos || dot <= lead.size()) return 0;
    const auto number = integer_from_text(std::string_view(name).substr(lead.size(), dot - lead.size()));
    return number && *number > 0 && *number < 100000 ? static_cast<std::size_t>(*number) : 0;
}

// Gives the movie files in `names` to the parts: numbered names to the part of that number, the others in
// order to parts that are left, and to further parts when there are more files than parts.
void match_files(movie_Part_DRONE_Offsets_Root& parts, const std::string& folder) {
    std::vector<std::string> others;
    for (const auto& name : names_in_folder(folder)) {
        if (!is_movie_name(name)) continue;
        const auto number = part_number(name);
        if (number >= 1 && number <= parts.parts.size() && parts.parts[number - 1].path.empty()) {
            parts.parts[number - 1].path = path_join(folder, name);
        } else {
            others.push_back(path_join(folder, name));
        }
    }
    auto other = others.begin();
    for (auto& part : parts.parts) {
        if (part.path.empty() && other != others.end()) part.path = *other++;
    }
    for (; other != others.end(); ++other) parts.parts.push_back({0, 0, *other, {}});
}

// What is wrong with the parts, the first thing found; durations that no record holds are read.
std::string check_parts(movie_Part_DRONE_Offsets_Root& parts, const std::string& folder) {
    std::string problem;
    for (std::size_t index = 0; index < parts.parts.size(); ++index) {
        auto& part = parts.parts[index];
        if (part.path.empty()) {
            if (problem.empty())
                problem = "the file of movie part " + std::to_string(index + 1) + " is missing in " +
                          in_quotes(folder) + ".";
        } else if (part.part_duration <= 0) {
            const auto movie = probe_movie(part.path);
            if (movie) part.part_duration = movie.value().duration;
            if (!movie && problem.empty()) problem = movie.message();
        }
    }
    return problem;
}

std::string load_vistel(single_Vistel_CTR& vistel, const std::string& folder,
                        const std::string& local_vistels) {
    if (!vistel.stored_item().text_or_empty("http file - coll").empty()) {
        return "it is streamed from a server, and streamed movies are not played.";
    }
    if (!is_plain_name(vistel.uuid())) return "its record has no usable identifier.";
    std::string data_folder;
    const auto places = data_folders(vistel, folder, local_vistels);
    for (const auto& place : places) {
        if (data_folder.empty() && is_folder(place)) data_folder = place;
    }
    if (data_folder.empty()) return "its folder " + in_quotes(places.front()) + " is missing.";
    const std::string path = path_join(data_folder, vistel_file_name);
    if (!file_exists(path)) return in_quotes(path) + " is missing.";
    const auto record = read_property_list_file(path);
    if (!record) return record.message();
    // From here on the record may be written again.
    const auto* dictionary = record.value().dictionary();
    if (!dictionary) return in_quotes(path) + " does not hold a vistel.";
    vistel.set_data_folder(data_folder);
    read_vistel_record(vistel, *dictionary);
    auto parts = vistel.parts();
    match_files(parts, data_folder);
    std::string problem = check_parts(parts, data_folder);
    if (parts.parts.empty()) problem = in_quotes(data_folder) + " holds no movie. There are no movie parts.";
    vistel.set_parts(std::move(parts));
    return problem;
}

// A file that is no record of ours is not replaced without a trace.
result<void> keep_foreign_file(const std::string& path, file_system& files) {
    const auto there = read_property_list_file(path);
    if (!there || there.value().dictionary()) return {};
    if (const int fault = files.hard_link(path, damaged_name(path))) {
        return file_failure(path, "could not be kept", fault);
    }
    return {};
}

}  // namespace

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
    if (!is_folder(folder)) return failure{in_quotes(folder) + " is missing or is no folder."};
    const std::string path = path_join(folder, collection_file_name);
    if (!file_exists(path)) return failure{in_quotes(path) + " is missing: there is no collection."};
    const auto record = read_property_list_file(path);
    if (!record) return record.error();
    loaded_collection loaded;
    const auto* dictionary = record.value().dictionary();
    if (dictionary) {
        loaded.collection = read_collection(*dictionary);
    } else {
        loaded.messages.push_back(in_quotes(path) +
                                  " does not hold a collection. It is kept beside when this one is saved.");
    }
    const auto vistels = loaded.collection.vistels();
    const auto frames = grid_layout(vistels.size());
    for (std::size_t index = 0; index < vistels.size(); ++index) {
        auto& vistel = *vistels[index];
        const std::string problem = load_vistel(vistel, folder, local_vistels);
        if (!vistel.proportion_rect()) vistel.set_proportion_rect(frames[index]);
        if (problem.empty()) continue;
        vistel.set_problem(problem);
        loaded.messages.push_back(load_error(vistel, problem));
    }
    return loaded;
}

result<void> save_collection(video_collection_ROOT& collection, const std::string& folder,
                             file_system& files) {
    const auto record = write_collection(collection, seconds_since_1970());
    const std::string path = path_join(folder, collection_file_name);
    if (auto kept = keep_foreign_file(path, files); !kept) return kept;
    if (auto saved = safe_write(path, record, files); !saved) return saved;
    for (const auto& vistel : collection.vistels()) {
        if (vistel->data_folder().empty()) continue;
        auto stored = write_vistel_record(*vistel);
        if (stored == vistel->stored_vistel()) continue;
        if (auto saved = safe_write(path_join(vistel->data_folder(), vistel_file_name), stored, files);
            !saved)
            return saved;
        vistel->set_stored_vistel(std::move(stored));
    }
    return {};
}

}  // namespace vistels
