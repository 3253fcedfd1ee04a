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
#include <cstdlib>
#include <filesystem>
#include <random>
#include <vector>

#include "media/movie_information.h"
#include "util/file_system.h"
#include "util/safe_write.h"
#include "util/uuid.h"
#include "video/video_coll_LOAD.h"

namespace vistels {

namespace {

namespace fs = std::filesystem;

constexpr std::size_t copy_piece_bytes = std::size_t{4} << 20;
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

// Takes away what was made, unless it is kept.
class made_folders {
  public:
    ~made_folders() {
        std::error_code ignored;
        for (const auto& folder : whole_) fs::remove_all(folder, ignored);
        // Deepest first; one that holds something by now stays.
        for (const auto& folder : when_empty_) fs::remove(folder, ignored);
    }
    // To be taken away with all it holds.
    void add(const std::string& folder) { whole_.push_back(folder); }
    // `path` and the folders above it that are not there yet.
    void add_missing_of(const std::string& path) {
        std::error_code ignored;
        for (fs::path at = fs::absolute(path, ignored).lexically_normal();
             at.has_relative_path() && !fs::exists(at, ignored); at = at.parent_path()) {
            when_empty_.push_back(at.string());
        }
    }
    void keep() {
        whole_.clear();
        when_empty_.clear();
    }

  private:
    std::vector<std::string> whole_;
    std::vector<std::string> when_empty_;
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
        if (work.is_cancelled()) return failure{"Copying \"" + path + "\" was cancelled."};
        const auto count = ::read(from.number(), piece.data(), piece.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return file_failure(path, "could not be copied", errno);
        if (count == 0) break;
        const std::string_view bytes(piece.data(), static_cast<std::size_t>(count));
        if (const int fault = write_whole(machine_files(), to.number(), bytes)) {
            return file_failure(path, "could not be copied", fault);
        }
        done += static_cast<double>(count);
        work.set_progress(total > 0 ? std::min(done / total, 1.0) : 1);
    }
    return {};
}

// One vistel to be: the movies that are its parts, and how long each is.
struct planned_vistel {
    std::string name;
    std::vector<std::string> movies;
    std::vector<double> durations;  // seconds
};

result<std::vector<planned_vistel>> plan_vistels(const std::vector<std::string>& movies, movies_as how) {
    std::vector<planned_vistel> planned;
    for (const auto& movie : movies) {
        const auto information = probe_movie(movie);
        if (!information) return information.error();
        if (!information.value().has_video) return failure{"\"" + movie + "\" holds no pictures."};
        if (how == movies_as::vistel_each || planned.empty()) {
            planned.push_back({fs::path(movie).stem().string(), {}, {}});
        }
        planned.back().movies.push_back(movie);
        planned.back().durations.push_back(information.value().duration);
    }
    return planned;
}

std::string user_name() {
    const char* user = std::getenv("USER");
    return user ? user : "";
}

// Progress over all movies: each is the same share.
struct movie_count {
    std::size_t done = 0;
    std::size_t all = 0;
};

result<void> bring_next(const std::string& from, const std::string& to, movie_count& count, job& work) {
    const auto all = static_cast<double>(count.all);
    job one([&](double fraction) {
        work.set_progress((static_cast<double>(count.done) + fraction) / all);
        if (work.is_cancelled()) one.cancel();
    });
    if (work.is_cancelled()) one.cancel();
    auto brought = bring_movie(from, to, one);
    if (brought) work.set_progress(static_cast<double>(++count.done) / all);
    return brought;
}

// The vistel with its data in `folder`.
result<std::shared_ptr<single_Vistel_CTR>> make_vistel(const planned_vistel& planned,
                                                       const std::string& folder, movie_count& count,
                                                       job& work) {
    auto vistel = std::make_shared<single_Vistel_CTR>();
    vistel->set_uuid(path_name(folder));
    vistel->set_name(planned.name);
    vistel->set_manual_start_offset(0);
    vistel->set_creator(user_name());
    vistel->set_data_folder(folder);
    if (auto made = make_folders(folder); !made) return made.error();
    movie_Part_DRONE_Offsets_Root parts;
    for (std::size_t index = 0; index < planned.movies.size(); ++index) {
        const auto& movie = planned.movies[index];
        const std::string path = path_join(folder, part_name(index + 1, movie));
        if (auto brought = bring_next(movie, path, count, work); !brought) return brought.error();
        parts.parts.push_back({0, planned.durations[index], path, {}});
    }
    vistel->set_parts(std::move(parts));
    return vistel;
}

}  // namespace

std::string part_name(std::size_t number, const std::string& movie) {
    std::string digits = std::to_string(number);
    if (digits.size() < 3) digits.insert(0, 3 - digits.size(), '0');
    const std::string ending = lower_case_ending(movie);
    return "part " + digits + (is_movie_name("a" + ending) ? ending : ".mp4");
}

bool is_movie_name(const std::string& name) {
    const std::string ending = lower_case_ending(name);
    return !name.starts_with(".") &&
           std::find(std::begin(movie_endings), std::end(movie_endings), ending) != std::end(movie_endings);
}

std::int64_t new_quick_number() {
    std::random_device device;
    std::uniform_int_distribution<std::int64_t> any(1, (std::int64_t{1} << 53) - 1);
    return any(device);
}

result<void> bring_movie(const std::string& from, const std::string& to, job& work) {
    if (work.is_cancelled()) return failure{"Copying \"" + from + "\" was cancelled."};
    std::error_code fault;
    const std::string source = fs::canonical(from, fault).string();
    if (fault) return file_failure(from, "could not be copied", fault.value());
    if (::link(source.c_str(), to.c_str()) == 0) return {};
    if (errno == EEXIST) return file_failure(to, "could not be made", EEXIST);
    const descriptor input(source, O_RDONLY);
    if (input.number() < 0) return file_failure(from, "could not be copied", errno);
    const descriptor output(to, O_WRONLY | O_CREAT | O_EXCL);
    if (output.number() < 0) return file_failure(to, "could not be made", errno);
    if (::ioctl(output.number(), FICLONE, input.number()) == 0) return {};
    struct stat state {};
    const double total = ::fstat(input.number(), &state) == 0 ? static_cast<double>(state.st_size) : 0;
    auto copied = copy_pieces(input, output, from, total, work);
    if (copied && ::fsync(output.number()) != 0) copied = file_failure(to, "could not be saved", errno);
    if (!copied) ::unlink(to.c_str());
    return copied;
}

result<void> add_vistels(video_collection_ROOT& collection, const std::string& vistels_folder,
                         const std::vector<std::string>& movies, movies_as how, job& work) {
    const auto planned = plan_vistels(movies, how);
    if (!planned) return planned.error();
    made_folders made;
    made.add_missing_of(vistels_folder);
    auto vistels = collection.vistels();
    double number = collection.unused_vistel_number();
    movie_count count{0, movies.size()};
    for (const auto& plan : planned.value()) {
        const std::string folder = path_join(vistels_folder, new_uuid());
        made.add(folder);
        auto vistel = make_vistel(plan, folder, count, work);
        if (!vistel) return vistel.error();
        vistels.push_back(std::move(vistel).value());
        vistels.back()->set_number(number++);
        vistels.back()->set_vistel_number_displayed(static_cast<int>(vistels.size()));
        vistels.back()->set_saved_view_order(static_cast<int>(vistels.size()));
    }
    made.keep();
    collection.set_vistels(std::move(vistels));
    return {};
}

result<void> new_collection(const std::string& folder, const std::string& name,
                            const std::vector<std::string>& movies, movies_as how, job& work) {
    if (movies.empty()) return failure{"A collection needs at least one movie."};
    if (file_exists(path_join(folder, collection_file_name))) {
        return failure{"\"" + folder + "\" holds a collection already."};
    }
    video_collection_ROOT collection;
    collection.set_uuid(new_uuid());
    collection.set_quick_number(new_quick_number());
    collection.set_created_by(user_name());
    collection.set_name(name);
    collection.set_state(video_type_state::playback);
    made_folders made;
    const bool is_new_folder = !is_folder(folder);
    made.add_missing_of(folder);
    if (auto added = add_vistels(collection, vistels_folder_of(folder), movies, how, work); !added)
        return added;
    const auto vistels = collection.vistels();
    const auto frames = grid_layout(vistels.size());
    for (std::size_t index = 0; index < vistels.size(); ++index) {
        made.add(vistels[index]->data_folder());
        vistels[index]->set_proportion_rect(frames[index]);
    }
    if (is_new_folder) made.add(folder);
    if (auto ready = make_folders(folder); !ready) return ready;
    if (auto saved = save_collection(collection, folder); !saved) return saved;
    made.keep();
    return {};
}

}  // namespace vistels
