// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/file_system.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "util/file_failures.h"
#include "util/wait_watch.h"

namespace vistels {

namespace {

int outcome(int returned) {
    return returned == 0 ? 0 : errno;
}

int take_identity(int returned, const struct stat& state, file_identity& found) {
    if (returned != 0) return errno;
    constexpr std::int64_t nanoseconds = 1'000'000'000;
    found = {state.st_dev, state.st_ino, state.st_size,
             state.st_mtim.tv_sec * nanoseconds + state.st_mtim.tv_nsec};
    return 0;
}

constexpr bool is_digit(char c) {
    return c >= '0' && c <= '9';
}

}  // namespace

int file_system::open(const std::string& path, int flags, int& descriptor) {
    const wait_note note("open", path);
    constexpr mode_t readable_by_all = 0644;
    descriptor = ::open(path.c_str(), flags | O_CLOEXEC, readable_by_all);
    return descriptor >= 0 ? 0 : errno;
}

int file_system::write(int descriptor, std::string_view bytes, std::size_t& written) {
    const wait_note note("write", descriptor);
    const ssize_t count = ::write(descriptor, bytes.data(), bytes.size());
    written = count > 0 ? static_cast<std::size_t>(count) : 0;
    if (count < 0) return errno;
    return count == 0 && !bytes.empty() ? EIO : 0;
}

int file_system::read(int descriptor, char* into, std::size_t room, std::size_t& got) {
    const wait_note note("read", descriptor);
    const ssize_t count = ::read(descriptor, into, room);
    got = count > 0 ? static_cast<std::size_t>(count) : 0;
    return count < 0 ? errno : 0;
}

int file_system::empty(int descriptor) {
    const wait_note note("ftruncate", descriptor);
    return outcome(::ftruncate(descriptor, 0));
}
int file_system::lock(int descriptor) {
    return outcome(::flock(descriptor, LOCK_EX | LOCK_NB));
}
int file_system::touch(int descriptor) {
    const wait_note note("futimens", descriptor);
    return outcome(::futimens(descriptor, nullptr));
}
int file_system::sync(int descriptor) {
    const wait_note note("fsync", descriptor);
    return outcome(::fsync(descriptor));
}
int file_system::sync_data(int descriptor) {
    const wait_note note("fdatasync", descriptor);
    return outcome(::fdatasync(descriptor));
}
int file_system::close(int descriptor) {
    return outcome(::close(descriptor));
}

int file_system::hard_link(const std::string& from, const std::string& to) {
    const wait_note note("link", to);
    return outcome(::link(from.c_str(), to.c_str()));
}

int file_system::rename(const std::string& from, const std::string& to) {
    const wait_note note("rename", to);
    return outcome(std::rename(from.c_str(), to.c_str()));
}

int file_system::exchange(const std::string& a, const std::string& b) {
    const wait_note note("exchange", a);
    return outcome(::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE));
}

int file_system::remove(const std::string& path) {
    const wait_note note("unlink", path);
    return outcome(::unlink(path.c_str()));
}

int file_system::sync_folder(const std::string& folder) {
    const wait_note note("fsync", folder);
    const int descriptor = ::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return errno;
    int fault = outcome(::fsync(descriptor));
    if (fault == EINVAL) fault = 0;  // a volume that cannot sync folders keeps them in order itself
    ::close(descriptor);
    return fault;
}

int file_system::make_folder(const std::string& path) {
    const wait_note note("mkdir", path);
    constexpr mode_t searchable_by_all = 0755;
    return outcome(::mkdir(path.c_str(), searchable_by_all));
}

int file_system::identity(const std::string& path, file_identity& found) {
    struct stat state {};
    return take_identity(::stat(path.c_str(), &state), state, found);
}
int file_system::opened_identity(int descriptor, file_identity& found) {
    struct stat state {};
    return take_identity(::fstat(descriptor, &state), state, found);
}

int file_system::kind(const std::string& path, file_kind& found) {
    struct stat state {};
    if (::lstat(path.c_str(), &state) != 0) return errno;
    found = S_ISREG(state.st_mode)   ? file_kind::plain_file
            : S_ISDIR(state.st_mode) ? file_kind::folder
                                     : file_kind::something_else;
    return 0;
}

int file_system::list(const std::string& folder, std::vector<std::string>& names) {
    const wait_note note("readdir", folder);
    names.clear();
    DIR* const listing = ::opendir(folder.c_str());
    if (!listing) return errno;
    int fault = 0;
    for (;;) {
        errno = 0;
        const dirent* entry = ::readdir(listing);
        if (!entry) {
            fault = errno;
            break;
        }
        const std::string_view name = entry->d_name;
        if (name != "." && name != "..") names.emplace_back(name);
    }
    ::closedir(listing);
    return fault;
}

file_system& machine_files() {
    static file_system files;
    return files;
}

failure system_failure(int error_number) {
    switch (error_number) {
        case ENOSPC:
        case EDQUOT:
            return volume_is_full();
        case EROFS:
            return volume_is_read_only();
        case EACCES:
        case EPERM:
            return access_is_denied();
        case ENOENT:
            return nothing_is_there();
        case EIO:
            return volume_has_an_error();
        case EMFILE:
        case ENFILE:
            return too_many_files_are_open();
        default:
            return system_refuses(std::strerror(error_number));
    }
}

int write_whole(file_system& files, int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        std::size_t written = 0;
        const int fault = files.write(descriptor, bytes, written);
        if (fault == EINTR) continue;
        if (fault != 0) return fault;
        bytes.remove_prefix(written);
    }
    return 0;
}

int read_whole(file_system& files, int descriptor, std::string& bytes) {
    bytes.clear();
    // In steps: a string clears the room that it gets, which is quick while it stays in the processor's
    // cache.
    constexpr std::size_t step = 1 << 18;
    file_identity found;
    const bool is_known = files.opened_identity(descriptor, found) == 0 && found.size > 0;
    // One byte more, so that the end is met without moving all of them.
    bytes.reserve(is_known ? static_cast<std::size_t>(found.size) + 1 : step);
    for (;;) {
        const std::size_t have = bytes.size();
        const std::size_t left = bytes.capacity() - have;
        bytes.resize(have + (left > 0 ? std::min(left, step) : step));
        std::size_t got = 0;
        const int fault = files.read(descriptor, bytes.data() + have, bytes.size() - have, got);
        bytes.resize(have + got);
        if (fault == EINTR) continue;
        if (fault != 0 || got == 0) return fault;
    }
}

result<std::string> read_file(const std::string& path, file_system& files) {
    int descriptor = -1;
    if (const int fault = files.open(path, O_RDONLY, descriptor)) {
        return file_cannot_be_read(path, system_failure(fault));
    }
    std::string bytes;
    const int fault = read_whole(files, descriptor, bytes);
    files.close(descriptor);
    if (fault != 0) return file_cannot_be_read(path, system_failure(fault));
    return bytes;
}

result<void> make_folders(const std::string& path, file_system& files) {
    if (is_folder(path)) return {};
    const std::string above = path_folder(path);
    if (above != path && !above.empty() && !file_exists(above)) {
        if (auto made = make_folders(above, files); !made) return made;
    }
    const int fault = files.make_folder(path);
    if (fault == 0 || (fault == EEXIST && is_folder(path))) return {};
    if (fault != EEXIST) return file_could_not_be_made(path, system_failure(fault));
    return file_could_not_be_made(path, name_is_no_folder());
}

std::vector<std::string> names_in_folder(const std::string& folder) {
    std::vector<std::string> names;
    (void)machine_files().list(folder, names);
    sort_names(names);
    return names;
}

void sort_names(std::vector<std::string>& names) {
    std::sort(names.begin(), names.end(), [](const auto& a, const auto& b) { return natural_before(a, b); });
}

bool natural_before(std::string_view a, std::string_view b) {
    const std::string_view whole_a = a;
    const std::string_view whole_b = b;
    const auto take_digits = [](std::string_view& text) {
        std::size_t end = 0;
        while (end < text.size() && is_digit(text[end])) ++end;
        std::string_view digits = text.substr(0, end);
        text.remove_prefix(end);
        while (digits.size() > 1 && digits.front() == '0') digits.remove_prefix(1);
        return digits;
    };
    while (!a.empty() && !b.empty()) {
        if (is_digit(a.front()) && is_digit(b.front())) {
            const auto digits_a = take_digits(a);
            const auto digits_b = take_digits(b);
            if (digits_a.size() != digits_b.size()) return digits_a.size() < digits_b.size();
            if (digits_a != digits_b) return digits_a < digits_b;
        } else {
            if (a.front() != b.front()) {
                return static_cast<unsigned char>(a.front()) < static_cast<unsigned char>(b.front());
            }
            a.remove_prefix(1);
            b.remove_prefix(1);
        }
    }
    return a.size() != b.size() ? a.size() < b.size() : whole_a < whole_b;
}

bool file_exists(const std::string& path) {
    struct stat state {};
    return ::stat(path.c_str(), &state) == 0;
}

bool is_folder(const std::string& path) {
    struct stat state {};
    return ::stat(path.c_str(), &state) == 0 && S_ISDIR(state.st_mode);
}

std::string path_join(std::string_view folder, std::string_view name) {
    std::string path(folder);
    if (!path.empty() && path.back() != '/') path += '/';
    path += name;
    return path;
}

std::string path_name(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    const auto slash = path.rfind('/');
    return std::string(slash == std::string_view::npos ? path : path.substr(slash + 1));
}

std::string path_folder(std::string_view path) {
    while (path.size() > 1 && path.back() == '/') path.remove_suffix(1);
    const auto slash = path.rfind('/');
    if (slash == std::string_view::npos) return ".";
    return std::string(path.substr(0, slash == 0 ? 1 : slash));
}

}  // namespace vistels
