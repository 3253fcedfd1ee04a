// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/video_coll_Files.h"

#include <fcntl.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <limits>
#include <random>
#include <set>
#include <span>
#include <vector>

#include "media/movie_information.h"
#include "util/file_failures.h"
#include "util/file_system.h"
#include "util/safe_write.h"
#include "util/uuid.h"
#include "video/collection_failures.h"
#include "video/made_files.h"
#include "video/vault_lock.h"
#include "video/video_coll_LOAD.h"
#include "video/video_coll_Pictures.h"

namespace vistels {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t copy_piece_bytes = std::size_t{4} << 20;
constexpr const char* picture_endings[] = {".png", ".jpg", ".jpeg"};
constexpr const char* movie_endings[] = {".mp4", ".mov", ".m4v", ".mkv", ".avi",
                                         ".mts", ".ts",  ".mpg", ".webm"};

// A file descriptor that is closed when it goes.
class descriptor {
  public:
    descriptor(const std::string& path, int flags) : number_(::open(path.c_str(), flags | O_CLOEXEC, 0644)) {}
    ~descriptor() {
        if (number_ >= 0) ::close(number_);
    }
    descriptor(const descriptor&) = delete;
    descriptor& operator=(const descriptor&) = delete;
    int number() const { return number_; }

  private:
    int number_;
};

std::string lower_case_ending(const std::string& path) {
    std::string ending = fs::path(path).extension().string();
    std::transform(ending.begin(), ending.end(), ending.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return ending;
}

result<void> copy_pieces(const descriptor& from, const descriptor& to, const std::string& path, double total,
                         job& work) {
    std::vector<char> piece(copy_piece_bytes);
    double done = 0;
    while (true) {
        if (work.is_cancelled()) return copying_was_cancelled(path);
        const auto count = ::read(from.number(), piece.data(), piece.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return file_could_not_be_copied(path, system_failure(errno));
        if (count == 0) break;
        const std::string_view bytes(piece.data(), static_cast<std::size_t>(count));
        if (const int fault = write_whole(machine_files(), to.number(), bytes)) {
            return file_could_not_be_copied(path, system_failure(fault));
        }
        done += static_cast<double>(count);
        work.set_progress(total > 0 ? std::min(done / total, 1.0) : 1);
    }
    return {};
}

// The movie's path while it is not whole yet.
std::string unfinished_name(const std::string& path) {
    return path + std::string(temporary_mark) + std::to_string(safe_write_number());
}

// Gives a finished file its name, which nothing else must have.
result<void> finish_file(const std::string& unfinished, const std::string& path) {
    int fault = machine_files().hard_link(unfinished, path);
    if (fault == 0) {
        machine_files().remove(unfinished);
        return {};
    }
    if (fault != EEXIST && !file_exists(path)) fault = machine_files().rename(unfinished, path);
    return fault == 0 ? result<void>() : file_could_not_be_made(path, system_failure(fault));
}

result<void> copy_whole(const std::string& from, const std::string& to, job& work) {
    const descriptor input(from, O_RDONLY);
    if (input.number() < 0) return file_could_not_be_copied(from, system_failure(errno));
    const descriptor output(to, O_WRONLY | O_CREAT | O_EXCL);
    if (output.number() < 0) return file_could_not_be_made(to, system_failure(errno));
    if (::ioctl(output.number(), FICLONE, input.number()) == 0) return {};
    struct stat state {};
    const double total = ::fstat(input.number(), &state) == 0 ? static_cast<double>(state.st_size) : 0;
    auto copied = copy_pieces(input, output, from, total, work);
    if (copied && ::fsync(output.number()) != 0) copied = file_could_not_be_saved(to, system_failure(errno));
    return copied;
}

// One vistel to be: the movies that are its parts, and how long each is; or the one picture that it is.
struct planned_vistel {
    std::string name;
    std::vector<std::string> movies;
    std::vector<double> durations;  // seconds
    bool is_picture = false;
};

result<double> duration_of(const std::string& movie) {
    const auto information = probe_movie(movie);
    if (!information) return information.error();
    if (!information.value().has_video) return file_has_no_pictures(movie);
    const double seconds = information.value().duration;
    if (!(seconds > 0)) return pictures_have_no_times(movie);
    return seconds;
}

result<std::vector<planned_vistel>> plan_vistels(const std::vector<std::string>& movies, movies_as how) {
    std::vector<planned_vistel> planned;
    for (const auto& movie : movies) {
        const bool is_picture = is_picture_name(movie);
        const auto checked = is_picture ? check_picture(movie) : result<void>();
        if (!checked) return checked.error();
        const auto duration = is_picture ? result<double>(0.0) : duration_of(movie);
        if (!duration) return duration.error();
        if (is_picture && how != movies_as::vistel_each) {
            return picture_among_movies(movie);
        }
        if (how == movies_as::vistel_each || planned.empty()) {
            planned.push_back({fs::path(movie).stem().string(), {}, {}, is_picture});
        }
        planned.back().movies.push_back(movie);
        planned.back().durations.push_back(duration.value());
    }
    return planned;
}

// The vistel with its data in `folder`.
result<std::shared_ptr<single_Vistel_CTR>> make_vistel(const planned_vistel& planned,
                                                       const std::string& folder,
                                                       const new_vistels& made_with, shared_progress& work) {
    auto vistel = std::make_shared<single_Vistel_CTR>();
    vistel->set_uuid(path_name(folder));
    vistel->set_name(planned.name);
    vistel->set_creator(made_with.creator);
    vistel->set_saves_data_locally(made_with.saves_data_locally);
    vistel->set_is_inserted_picture(planned.is_picture);
    // A picture is shown at all times: it has no offset.
    if (!planned.is_picture) vistel->set_manual_start_offset(0);
    vistel->set_data_folder(folder);
    if (auto made = make_folders(folder); !made) return made.error();
    movie_Part_DRONE_Offsets_Root parts;
    for (std::size_t index = 0; index < planned.movies.size(); ++index) {
        const auto& movie = planned.movies[index];
        const std::string name =
            planned.is_picture ? "picture" + lower_case_ending(movie) : part_name(index + 1, movie);
        const std::string path = path_join(folder, name);
        const auto brought = work.run([&](job& one) { return bring_movie(movie, path, one); });
        if (!brought) return brought.error();
        if (!planned.is_picture) parts.parts.push_back({0, planned.durations[index], path, {}});
    }
    vistel->set_parts(std::move(parts));
    return vistel;
}

// While the lock of the vault is held.
result<vistel_list> make_vistels_locked(const new_vistels& made_with, const std::vector<std::string>& movies,
                                        movies_as how, job& work) {
    const auto planned = plan_vistels(movies, how);
    if (!planned) return planned.error();
    made_files made;
    made.add_missing_of(made_with.folder);
    remove_unfinished_copies(made_with.folder);
    shared_progress progress(movies.size(), work);
    vistel_list vistels;
    for (const auto& plan : planned.value()) {
        const std::string folder = path_join(made_with.folder, new_uuid());
        made.add(folder);
        auto vistel = make_vistel(plan, folder, made_with, progress);
        if (!vistel) return vistel.error();
        vistels.push_back(std::move(vistel).value());
    }
    made.keep();
    return vistels;
}

bool has_ending(const std::string& name, std::span<const char* const> endings) {
    const std::string ending = lower_case_ending(name);
    return !path_name(name).starts_with(".") &&
           std::find(endings.begin(), endings.end(), ending) != endings.end();
}

// The highest number among the names of movie parts, those not used any more included.
std::size_t highest_part_number(const std::string& folder) {
    std::size_t highest = 0;
    for (const auto& name : names_in_folder(folder)) highest = std::max(highest, part_number(name));
    return highest;
}

// A copy of a movie that nobody goes on with.
bool is_left_over(const std::string& folder, const std::string& name) {
    const auto mark = name.rfind(temporary_mark);
    if (mark == std::string::npos || part_number(name.substr(0, mark)) == 0) return false;
    std::error_code unknown;
    const auto written = fs::last_write_time(path_join(folder, name), unknown);
    return !unknown && fs::file_time_type::clock::now() - written > std::chrono::hours(24);
}

constexpr adding_choice each_choice{movies_as::vistel_each, "Create A New Vistel For Each File",
                                    "Create a new vistel for each file."};
constexpr adding_choice one_choice{movies_as::one_vistel, "Create A New Vistel And Append Movies",
                                   "Create a single new vistel and add video files to this vistel."};
constexpr adding_choice single_choice{movies_as::vistel_each, "Create A New Vistel",
                                      "Create a new vistel for each file."};
constexpr adding_choice parts_choice{movies_as::parts_of_existing, "Append video files to this vistel.",
                                     "Append video files to this vistel."};

// A vistel without a number of its own shows its place.
std::set<int> shown_numbers(const video_collection_ROOT& collection) {
    std::set<int> numbers;
    int place = 0;
    for (const auto& vistel : collection.vistels()) {
        ++place;
        const int own = vistel->vistel_number_displayed();
        numbers.insert(own > 0 ? own : place);
    }
    return numbers;
}

}  // namespace

std::vector<adding_choice> adding_choices(std::size_t movies, bool on_vistel) {
    std::vector<adding_choice> choices{single_choice};
    if (movies > 1) choices = {each_choice, one_choice};
    if (on_vistel) choices.push_back(parts_choice);
    return choices;
}

result<std::vector<std::string>> movies_of_item(const std::string& path) {
    if (!is_folder(path)) {
        if (file_exists(path)) return std::vector<std::string>{path};
        return file_cannot_be_read(path, system_failure(ENOENT));
    }
    std::vector<std::string> movies;
    if (file_exists(path_join(path, vistel_file_name))) {
        for (const auto& part : parts_in_folder(path).parts) {
            if (!part.path.empty()) movies.push_back(part.path);
        }
        if (movies.empty()) return item_has_a_fault(path, no_movie_parts());
        return movies;
    }
    for (const auto& name : names_in_folder(path)) {
        if (is_movie_name(name)) movies.push_back(path_join(path, name));
    }
    if (movies.empty()) return item_has_a_fault(path, item_has_no_movie_parts());
    return movies;
}

std::string part_name(std::size_t number, const std::string& movie) {
    std::string digits = std::to_string(number);
    if (digits.size() < 3) digits.insert(0, 3 - digits.size(), '0');
    const std::string ending = lower_case_ending(movie);
    return "part " + digits + (is_movie_name("a" + ending) ? ending : ".mp4");
}

bool is_movie_name(const std::string& name) {
    return has_ending(name, movie_endings);
}

bool is_picture_name(const std::string& name) {
    return has_ending(name, picture_endings);
}

std::int64_t new_quick_number() {
    std::random_device device;
    std::uniform_int_distribution<std::int64_t> any(1, (std::int64_t{1} << 53) - 1);
    return any(device);
}

std::string new_vistels_folder(const std::string& folder, bool next_to_collection) {
    return next_to_collection ? path_join(folder, vistels_folder_name) : vistels_folder_of(folder);
}

result<void> bring_movie(const std::string& from, const std::string& to, job& work, bool as_copy) {
    if (work.is_cancelled()) return copying_was_cancelled(from);
    std::error_code fault;
    const std::string source = fs::canonical(from, fault).string();
    if (fault) return file_could_not_be_copied(from, system_failure(fault.value()));
    if (!as_copy) {
        const int linked = machine_files().hard_link(source, to);
        if (linked == 0) return {};
        if (linked == EEXIST) return file_could_not_be_made(to, system_failure(EEXIST));
    }
    made_files made;
    const std::string unfinished = unfinished_name(to);
    made.add(unfinished);
    if (auto copied = copy_whole(source, unfinished, work); !copied) return copied;
    return finish_file(unfinished, to);
}

void remove_unfinished_copies(const std::string& folder) {
    for (const auto& vistel : names_in_folder(folder)) {
        const std::string inside = path_join(folder, vistel);
        std::size_t others = 0;
        std::vector<std::string> unfinished;
        for (const auto& name : names_in_folder(inside)) {
            if (is_left_over(inside, name)) {
                unfinished.push_back(path_join(inside, name));
            } else {
                ++others;
            }
        }
        for (const auto& path : unfinished) machine_files().remove(path);
        std::error_code ignored;
        if (others == 0 && !unfinished.empty()) fs::remove(inside, ignored);
    }
}

result<vistel_list> make_vistels(const new_vistels& made_with, const std::vector<std::string>& movies,
                                 movies_as how, job& work) {
    const auto lock = vault_lock::take_around(made_with.folder);
    return lock ? make_vistels_locked(made_with, movies, how, work) : result<vistel_list>(lock.error());
}

result<std::vector<movie_Part_DRONE_Offset_Item>> bring_parts(const single_Vistel_CTR& vistel,
                                                              const std::vector<std::string>& movies,
                                                              job& work) {
    const std::string folder = vistel.data_folder();
    if (folder.empty()) return vistel_data_is_missing(vistel.name());
    if (vistel.is_inserted_picture()) {
        return vistel_is_a_picture(vistel.name());
    }
    const auto planned = plan_vistels(movies, movies_as::one_vistel);
    if (!planned) return planned.error();
    std::vector<movie_Part_DRONE_Offset_Item> parts;
    if (movies.empty()) return parts;
    const auto lock = vault_lock::take_around(folder);
    if (!lock) return lock.error();
    made_files made;
    shared_progress progress(movies.size(), work);
    std::size_t number = std::max(vistel.parts().parts.size(), highest_part_number(folder));
    for (std::size_t index = 0; index < movies.size(); ++index) {
        const std::string path = path_join(folder, part_name(++number, movies[index]));
        const auto brought = progress.run([&](job& one) { return bring_movie(movies[index], path, one); });
        if (!brought) return brought.error();
        made.add(path);
        parts.push_back({0, planned.value().front().durations[index], path, {}});
    }
    made.keep();
    return parts;
}

void discard(const vistel_list& vistels) {
    made_files unwanted;
    for (const auto& vistel : vistels) unwanted.add(vistel->data_folder());
}

void discard(const std::vector<movie_Part_DRONE_Offset_Item>& parts) {
    made_files unwanted;
    for (const auto& part : parts) unwanted.add(part.path);
}

void number_new_vistels(video_collection_ROOT& collection, const vistel_list& vistels) {
    std::set<int> taken = shown_numbers(collection);
    int shown = 1;
    int front = 0;
    for (const auto& vistel : collection.vistels()) front = std::max(front, vistel->saved_view_order());
    for (const auto& vistel : vistels) {
        while (!taken.insert(shown).second) ++shown;
        vistel->set_number(collection.take_vistel_number());
        vistel->set_vistel_number_displayed(shown);
        vistel->set_vistel_number_displayed_ordinal(shown);
        vistel->set_saved_view_order(front < std::numeric_limits<int>::max() ? ++front : front);
    }
}

void add_new_vistels(video_collection_ROOT& collection, const vistel_list& vistels) {
    number_new_vistels(collection, vistels);
    auto all = collection.vistels();
    all.insert(all.end(), vistels.begin(), vistels.end());
    collection.set_vistels(std::move(all));
}

result<void> new_collection(const std::string& folder, const std::string& name,
                            const std::vector<std::string>& movies, movies_as how, job& work,
                            const std::string& user) {
    const auto lock = vault_lock::take_around(folder);
    if (!lock) return lock.error();
    if (file_exists(path_join(folder, collection_file_name))) {
        return folder_holds_a_collection(folder);
    }
    video_collection_ROOT collection;
    collection.set_uuid(new_uuid());
    collection.set_quick_number(new_quick_number());
    collection.set_created_by(user);
    collection.set_name(name);
    if (!movies.empty()) collection.set_state(video_type_state::playback);
    made_files made;
    const bool is_new_folder = !is_folder(folder);
    made.add_missing_of(folder);
    const std::string vistels_folder = vistels_folder_of(folder);
    if (!movies.empty()) made.add_missing_of(vistels_folder);
    const auto vistels = make_vistels_locked({vistels_folder, user, false}, movies, how, work);
    if (!vistels) return vistels.error();
    add_new_vistels(collection, vistels.value());
    const auto frames = grid_layout(vistels.value().size());
    for (std::size_t index = 0; index < frames.size(); ++index) {
        made.add(vistels.value()[index]->data_folder());
        vistels.value()[index]->set_proportion_rect(frames[index]);
    }
    if (is_new_folder) made.add(folder);
    if (auto ready = make_folders(folder); !ready) return ready;
    if (auto saved = save_collection(collection, folder); !saved) return saved;
    made.keep();
    return {};
}

}  // namespace vistels
