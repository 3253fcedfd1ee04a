// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/video_coll_Duplicate_funcs.h"

#include <fcntl.h>

#include <filesystem>
#include <utility>

#include "media/deinterlace.h"
#include "media/movie_information.h"
#include "util/file_failures.h"
#include "util/safe_write.h"
#include "util/text_forms.h"
#include "util/uuid.h"
#include "video/collection_failures.h"
#include "video/made_files.h"
#include "video/vault_lock.h"
#include "video/video_coll_LOAD.h"
#include "video/video_coll_Pictures.h"

namespace vistels {

namespace {

std::string ending_of(const std::string& path) {
    return std::filesystem::path(path).extension().string();
}

// A name that a file may have everywhere.
std::string file_name_of(const std::string& name) {
    std::string made;
    for (const char one : name) {
        const bool is_unusable =
            one == '/' || one == '\\' || one == ':' || static_cast<unsigned char>(one) < ' ';
        made += is_unusable ? '-' : one;
    }
    while (made.starts_with('.')) made.erase(0, 1);
    constexpr std::size_t longest_name = 200;
    if (made.size() > longest_name) made.resize(longest_name);
    return is_valid_text(made) && !made.empty() ? made : "Vistel";
}

// "NAME.mp4", or with the first number behind the name that is free.
std::string free_path(const std::string& folder, const std::string& name, const std::string& ending) {
    for (int number = 1;; ++number) {
        const std::string path =
            path_join(folder, (number == 1 ? name : name + " (" + std::to_string(number) + ")") + ending);
        if (!file_exists(path) && !is_folder(path)) return path;
    }
}

// What of the source lies in files: its parts, picture and overlay, each with the name that it gets.
using brought_files = std::vector<std::pair<std::string, std::string>>;

brought_files files_of(const single_Vistel_CTR& source, const std::string& folder,
                       movie_Part_DRONE_Offsets_Root& parts) {
    brought_files brought;
    for (std::size_t index = 0; index < parts.parts.size(); ++index) {
        auto& part = parts.parts[index];
        part.kept.remove("movie_file");
        if (part.path.empty()) continue;
        const std::string to = path_join(folder, part_name(index + 1, part.path));
        brought.emplace_back(std::exchange(part.path, to), to);
    }
    for (const auto& path : {picture_path(source), overlay_path(source)}) {
        if (!path.empty()) brought.emplace_back(path, path_join(folder, path_name(path)));
    }
    return brought;
}

// The old movie may go once the new one is on the volume.
result<void> sync_file(const std::string& path) {
    auto& files = machine_files();
    int descriptor = -1;
    int fault = files.open(path, O_RDONLY, descriptor);
    if (fault == 0) {
        fault = files.sync(descriptor);
        files.close(descriptor);
    }
    return fault == 0 ? result<void>() : file_could_not_be_saved(path, system_failure(fault));
}

result<std::string> deinterlace_part(const std::string& path, const std::string& folder, job& work) {
    const auto movie = probe_movie(path);
    if (!movie) return movie.error();
    // What the smaller container may hold of sound; the other one takes all that cameras write.
    const std::string& sound = movie.value().sound_codec;
    const bool fits_mp4 = sound.empty() || sound == "aac" || sound == "mp3" || sound == "ac3";
    const std::string ending = fits_mp4 && ending_of(path) != ".mov" ? ".mp4" : ".mov";
    const std::string stem = std::filesystem::path(path).stem().string() + " deinterlaced";
    const std::string to = free_path(folder, stem, ending);
    made_files made;
    const std::string unfinished = to + std::string(temporary_mark) + std::to_string(safe_write_number());
    made.add(unfinished);
    if (auto done = deinterlace_movie(path, unfinished, to, work); !done) return done.error();
    if (auto synced = sync_file(unfinished); !synced) return synced.error();
    if (const int fault = machine_files().rename(unfinished, to)) {
        return file_could_not_be_made(to, system_failure(fault));
    }
    return to;
}

}  // namespace

result<std::shared_ptr<single_Vistel_CTR>> duplicate_vistel(const single_Vistel_CTR& source,
                                                            const new_vistels& made_with, job& work) {
    auto clone = std::make_shared<single_Vistel_CTR>(source);
    const std::string folder = path_join(made_with.folder, new_uuid());
    if (source.data_folder().empty()) {
        return vistel_data_is_missing(source.name());
    }
    const auto lock = vault_lock::take_around(folder);
    if (!lock) return lock.error();
    auto parts = source.parts();
    const auto brought = files_of(source, folder, parts);
    made_files made;
    made.add_missing_of(made_with.folder);
    made.add(folder);
    if (auto ready = make_folders(folder); !ready) return ready.error();
    shared_progress progress(brought.size(), work);
    for (const auto& [from, to] : brought) {
        const auto done = progress.run([&](job& one) { return bring_movie(from, to, one); });
        if (!done) return done.error();
    }
    clone->set_uuid(path_name(folder));
    clone->set_number(0);
    clone->set_name(source.name() + " copy");
    clone->set_creator(made_with.creator);
    clone->set_saves_data_locally(made_with.saves_data_locally);
    clone->set_flicked_in(false);
    clone->set_data_folder(folder);
    clone->set_parts(std::move(parts));
    clone->set_parts_on_record(std::nullopt);
    auto record = source.stored_vistel();
    record.remove("drone_array");
    set_unused_movies(record, {});
    clone->set_stored_vistel(std::move(record));
    made.keep();
    return clone;
}

result<std::vector<std::string>> copy_vistel_movie(const single_Vistel_CTR& vistel, const std::string& folder,
                                                   job& work) {
    std::vector<std::string> movies;
    for (const auto& part : vistel.parts().parts) {
        if (!part.path.empty()) movies.push_back(part.path);
    }
    if (const auto picture = picture_path(vistel); !picture.empty()) movies.push_back(picture);
    if (movies.empty()) return vistel_has_a_fault(vistel.name(), no_movie_parts());
    if (!is_folder(folder)) return file_is_missing_or_no_folder(folder);
    made_files made;
    shared_progress progress(movies.size(), work);
    std::vector<std::string> copies;
    for (const auto& movie : movies) {
        const std::string number = movies.size() > 1 ? " " + std::to_string(copies.size() + 1) : "";
        const std::string to = free_path(folder, file_name_of(vistel.name()) + number, ending_of(movie));
        const auto done = progress.run([&](job& one) { return bring_movie(movie, to, one, true); });
        if (!done) return done.error();
        made.add(to);
        copies.push_back(to);
    }
    made.keep();
    return copies;
}

result<std::vector<movie_Part_DRONE_Offset_Item>> deinterlaced_parts(const single_Vistel_CTR& vistel,
                                                                     job& work) {
    auto parts = vistel.parts().parts;
    if (parts.empty()) return vistel_has_a_fault(vistel.name(), no_movie_parts());
    const auto lock = vault_lock::take_around(vistel.data_folder());
    if (!lock) return lock.error();
    made_files made;
    shared_progress progress(parts.size(), work);
    for (std::size_t index = 0; index < parts.size(); ++index) {
        auto& part = parts[index];
        if (part.path.empty()) {
            return file_of_part_is_missing(index + 1, vistel.data_folder());
        }
        auto deinterlaced =
            progress.run([&](job& one) { return deinterlace_part(part.path, vistel.data_folder(), one); });
        if (!deinterlaced) return deinterlaced.error();
        part.path = std::move(deinterlaced).value();
        made.add(part.path);
    }
    made.keep();
    return parts;
}

}  // namespace vistels
