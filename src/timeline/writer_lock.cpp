// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/writer_lock.h"

#include <fcntl.h>
#include <pwd.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>

#include "util/file_system.h"
#include "util/property_list.h"

namespace vistels {

namespace {

constexpr const char* lock_file_name = "chron data writer.plist";

std::string first_line(const char* path) {
    const auto text = read_file(path);
    return text ? text.value().substr(0, text.value().find('\n')) : std::string();
}

std::string host_name() {
    std::array<char, 256> name{};
    return ::gethostname(name.data(), name.size() - 1) == 0 ? name.data() : "";
}

std::string user_name() {
    const passwd* user = ::getpwuid(::getuid());
    return user ? user->pw_name : std::to_string(::getuid());
}

std::string machine() {
    return first_line("/etc/machine-id");
}

property_dictionary this_process() {
    property_dictionary holder;
    holder.add("host", host_name());
    holder.add("machine", machine());
    holder.add("boot", first_line("/proc/sys/kernel/random/boot_id"));
    holder.add("process", std::int64_t{::getpid()});
    holder.add("user", user_name());
    return holder;
}

failure held_by(const std::string& folder, const property_dictionary& holder) {
    const auto process = holder.integer("process").value_or(0);
    std::string who = "another program";
    if (!holder.empty()) {
        who = "process " + std::to_string(process) + " of " + holder.text_or_empty("user") + " on \"" +
              holder.text_or_empty("host") + "\"";
    }
    return {"The timeline in \"" + folder + "\" is open for writing in " + who + "."};
}

// The file may have been removed by its last holder between opening and locking it.
bool is_still_there(int descriptor, const std::string& path) {
    struct stat opened {};
    struct stat named {};
    return ::fstat(descriptor, &opened) == 0 && ::stat(path.c_str(), &named) == 0 &&
           opened.st_ino == named.st_ino && opened.st_dev == named.st_dev;
}

int open_and_lock(const std::string& path, int& descriptor) {
    for (;;) {
        descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
        if (descriptor < 0) return errno;
        if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
            const int fault = errno;
            ::close(descriptor);
            return fault;
        }
        if (is_still_there(descriptor, path)) return 0;
        ::close(descriptor);
    }
}

}  // namespace

result<std::unique_ptr<writer_lock>> writer_lock::take(const std::string& folder) {
    const std::string path = path_join(folder, lock_file_name);
    const auto before = read_dictionary_or_empty(path);
    int descriptor = -1;
    const int fault = open_and_lock(path, descriptor);
    if (fault == EWOULDBLOCK) return held_by(folder, read_dictionary_or_empty(path));
    if (fault != 0) return file_failure(path, "could not be written", fault);
    std::unique_ptr<writer_lock> lock(new writer_lock(path, descriptor));
    // The kernel answers for this machine alone.
    if (!before.empty() && before.text_or_empty("machine") != machine()) {
        ::close(lock->descriptor_);
        lock->descriptor_ = -1;
        return failure{held_by(folder, before).message + " If that is no longer so, remove \"" + path +
                       "\"."};
    }
    const std::string bytes = write_property_list(this_process());
    int writing = ::ftruncate(descriptor, 0) == 0 ? 0 : errno;
    if (writing == 0) writing = write_whole(machine_files(), descriptor, bytes);
    if (writing != 0) return file_failure(path, "could not be written", writing);
    return lock;
}

writer_lock::~writer_lock() {
    if (descriptor_ < 0) return;
    ::unlink(path_.c_str());
    ::close(descriptor_);
}

void writer_lock::renew() {
    ::futimens(descriptor_, nullptr);
}

}  // namespace vistels
