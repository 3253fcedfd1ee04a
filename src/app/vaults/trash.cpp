// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vaults/trash.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <ctime>
#include <optional>
#include <sstream>
#include <string_view>
#include <vector>

#include "app/vaults/vault_failures.h"
#include "util/file_failures.h"

namespace vistels {

namespace {

// A trash: its folder, and the folder from which the paths in it are told (empty: the root).
struct trash_place {
    std::string folder;
    std::string top;
};

constexpr std::string_view information_ending = ".trashinfo";

// Room for a number and the ending in a name of 255 bytes.
std::string trash_name(const std::string& path) {
    constexpr std::size_t longest_name = 230;
    return path_name(path).substr(0, longest_name);
}

std::optional<dev_t> volume_of(const std::string& path) {
    struct stat state {};
    if (::lstat(path.c_str(), &state) != 0) return std::nullopt;
    return state.st_dev;
}

// The volume on which a folder lies or would be made.
std::optional<dev_t> volume_for(std::string folder) {
    for (;;) {
        if (const auto volume = volume_of(folder)) return volume;
        const std::string above = path_folder(folder);
        if (above == folder || above == ".") return std::nullopt;
        folder = above;
    }
}

// The topmost folder of the volume.
std::string top_of(const std::string& path, dev_t volume) {
    std::string top = path_folder(path);
    while (top != "/" && volume_of(path_folder(top)) == volume) top = path_folder(top);
    return top;
}

bool is_real_folder(const std::string& path, mode_t needed = 0) {
    struct stat state {};
    return ::lstat(path.c_str(), &state) == 0 && S_ISDIR(state.st_mode) && (state.st_mode & needed) == needed;
}

// In the order in which they are tried.
std::vector<trash_place> places_for(const std::string& path, const std::string& home_trash) {
    std::vector<trash_place> places;
    const auto volume = volume_of(path_folder(path));
    if (!volume) return places;
    if (!home_trash.empty() && volume_for(home_trash) == volume) places.push_back({home_trash, {}});
    const std::string top = top_of(path, *volume);
    const std::string user = std::to_string(::getuid());
    const std::string shared = path_join(top, ".Trash");
    if (is_real_folder(shared, S_ISVTX)) places.push_back({path_join(shared, user), top});
    places.push_back({path_join(top, ".Trash-" + user), top});
    return places;
}

result<void> make_private_folder(const std::string& folder) {
    if (auto made = make_folders(path_folder(folder)); !made) return made;
    constexpr mode_t owner_only = 0700;
    if (::mkdir(folder.c_str(), owner_only) == 0 || is_real_folder(folder)) return {};
    return file_could_not_be_made(folder, system_failure(errno));
}

std::string information_text(const std::string& path, const trash_place& trash) {
    const std::size_t passed = trash.top.empty() ? 0 : trash.top.size() + (trash.top == "/" ? 0 : 1);
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    ::localtime_r(&now, &local);
    std::array<char, 32> date{};
    std::strftime(date.data(), date.size(), "%Y-%m-%dT%H:%M:%S", &local);
    return "[Trash Info]\nPath=" + percent_encoded(path.substr(passed)) + "\nDeletionDate=" + date.data() +
           "\n";
}

// The line that says where it was, and the day it was moved, as information_text() writes them.
struct trash_information {
    std::string path_line;
    std::string date_line;
};

trash_information read_information(const std::string& text) {
    trash_information read;
    std::istringstream lines(text);
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("Path=")) read.path_line = line;
        if (line.starts_with("DeletionDate=")) read.date_line = line;
    }
    return read;
}

// Takes a free name in the trash by making its information file.
result<trashed> take_name(const std::string& path, const trash_place& trash, file_system& files) {
    const std::string information_folder = path_join(trash.folder, "info");
    const std::string files_folder = path_join(trash.folder, "files");
    for (const auto& folder : {trash.folder, information_folder, files_folder}) {
        if (auto made = make_private_folder(folder); !made) return made.error();
    }
    const std::string name = trash_name(path);
    for (int number = 1;; ++number) {
        const std::string free_name = number == 1 ? name : name + " " + std::to_string(number);
        trashed taken{path_join(files_folder, free_name),
                      path_join(information_folder, free_name + std::string(information_ending))};
        int descriptor = -1;
        int fault = files.open(taken.information, O_WRONLY | O_CREAT | O_EXCL, descriptor);
        if (fault == EEXIST) continue;
        if (fault != 0) return file_could_not_be_written(taken.information, system_failure(fault));
        fault =
            volume_of(taken.path) ? EEXIST : write_whole(files, descriptor, information_text(path, trash));
        if (fault == 0) fault = files.sync(descriptor);
        files.close(descriptor);
        if (fault == 0) return taken;
        files.remove(taken.information);
        if (fault != EEXIST) return file_could_not_be_written(taken.information, system_failure(fault));
    }
}

}  // namespace

std::string percent_encoded(const std::string& path) {
    constexpr std::string_view plain = "/-_.~!$&'()*+,;=:@";
    constexpr const char* digits = "0123456789ABCDEF";
    std::string text;
    for (const char one : path) {
        const auto byte = static_cast<unsigned char>(one);
        const bool is_plain = (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'z') ||
                              (byte >= 'A' && byte <= 'Z') || plain.find(one) != plain.npos;
        if (is_plain) {
            text += one;
        } else {
            text += {'%', digits[byte >> 4], digits[byte & 15]};
        }
    }
    return text;
}

result<trashed> move_to_trash(const std::string& path, const std::string& home_trash, file_system& files) {
    if (!volume_of(path)) return file_could_not_be_moved_to_trash(path, system_failure(errno));
    failure reason = file_could_not_be_moved_to_trash(path, system_failure(EXDEV));
    for (const auto& trash : places_for(path, home_trash)) {
        auto taken = take_name(path, trash, files);
        if (!taken) return taken.error();
        const int fault = files.rename(path, taken.value().path);
        if (fault == 0) {
            files.sync_folder(path_folder(taken.value().path));
            files.sync_folder(path_folder(path));
            return taken;
        }
        files.remove(taken.value().information);
        reason = file_could_not_be_moved_to_trash(path, system_failure(fault));
        if (fault != EXDEV) break;
    }
    return reason;
}

std::optional<trashed> find_in_trash(const std::string& path, const std::string& home_trash) {
    std::optional<trashed> found;
    std::string found_date;
    for (const auto& trash : places_for(path, home_trash)) {
        const std::string wanted = read_information(information_text(path, trash)).path_line;
        for (const auto& name : names_in_folder(path_join(trash.folder, "info"))) {
            if (!name.starts_with(trash_name(path)) || !name.ends_with(information_ending)) continue;
            const trashed one{path_join(path_join(trash.folder, "files"),
                                        name.substr(0, name.size() - information_ending.size())),
                              path_join(path_join(trash.folder, "info"), name)};
            const auto text = read_file(one.information);
            if (!text || !volume_of(one.path)) continue;
            const auto read = read_information(text.value());
            if (read.path_line != wanted || (found && read.date_line < found_date)) continue;
            found = one;
            found_date = read.date_line;
        }
    }
    return found;
}

result<void> restore_from_trash(const trashed& what, const std::string& path, file_system& files) {
    if (volume_of(path)) return file_could_not_be_brought_back(path, system_failure(EEXIST));
    if (const int fault = files.rename(what.path, path)) {
        return file_stays_in_trash(path, what.path, system_failure(fault));
    }
    files.remove(what.information);
    return {};
}

}  // namespace vistels
