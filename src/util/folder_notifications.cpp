// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/folder_notifications.h"

#include <fcntl.h>
#include <linux/magic.h>
#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <unordered_set>
#include <utility>

namespace vistels {

namespace {

constexpr std::uint32_t watched_events = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                         IN_DELETE_SELF | IN_MOVE_SELF | IN_ATTRIB | IN_ONLYDIR;
constexpr std::uint32_t events_of_the_folder = IN_DELETE_SELF | IN_MOVE_SELF | IN_UNMOUNT;

// What changes on another machine is not told by this one's kernel.
bool is_changed_elsewhere(const std::string& folder) {
    constexpr unsigned long types[] = {
        NFS_SUPER_MAGIC, 0x517B,      // the oldest of the three forms of SMB
        0xFF534D42,      0xFE534D42,  // CIFS, SMB 2
        V9FS_MAGIC,      AFS_SUPER_MAGIC, CODA_SUPER_MAGIC, 0x00C36400,  // Ceph
        0x65735546,                                                      // FUSE: may be anything
        0x786F4256,  // folders of a virtual machine's host
    };
    struct statfs volume {};
    if (::statfs(folder.c_str(), &volume) != 0) return true;
    const auto type = static_cast<unsigned long>(volume.f_type) & 0xFFFFFFFFUL;
    return std::find(std::begin(types), std::end(types), type) != std::end(types);
}

}  // namespace

folder_notifications::folder_notifications(run_loop& loop, observers observe, std::size_t most_folders)
    : loop_(loop),
      observe_(std::move(observe)),
      most_folders_(most_folders),
      notify_(::inotify_init1(IN_CLOEXEC | IN_NONBLOCK)),
      ending_(::eventfd(0, EFD_CLOEXEC)),
      volumes_(::open("/proc/self/mounts", O_RDONLY | O_CLOEXEC)) {
    if (ending_ < 0) return;  // no descriptors are left: nothing is told
    thread_ = std::thread([this] { wait_for_events(); });
    ::pthread_setname_np(thread_.native_handle(), "folders");
}

folder_notifications::~folder_notifications() {
    if (thread_.joinable()) {
        const std::uint64_t one = 1;
        while (::write(ending_, &one, sizeof one) < 0 && errno == EINTR) continue;
        thread_.join();
    }
    for (const int descriptor : {notify_, ending_, volumes_}) {
        if (descriptor >= 0) ::close(descriptor);
    }
}

// A group while its folders are added; `name` is the key under which it is kept.
struct folder_notifications::watched_group {
    const std::string& name;
    std::unordered_map<std::string, int>& watches;
};

folder_notifications::outcome folder_notifications::watch(const std::string& group,
                                                          const std::vector<std::string>& folders) {
    if (notify_ < 0 || !thread_.joinable() || folders.empty() || is_changed_elsewhere(folders.front())) {
        forget(group);
        return {};
    }
    const std::lock_guard lock(mutex_);
    const auto kept = watches_of_group_.try_emplace(group).first;
    watched_group adding{kept->first, kept->second};
    // A folder that moved keeps its watch: the old path is let go before the new one is asked for.
    const std::unordered_set<std::string_view> wanted(folders.begin(), folders.end());
    for (auto one = adding.watches.begin(); one != adding.watches.end();) {
        if (wanted.contains(one->first)) {
            ++one;
            continue;
        }
        remove_watch(adding.name, one->second);
        one = adding.watches.erase(one);
    }
    outcome done;
    done.is_told = std::all_of(folders.begin(), folders.end(),
                               [&](const std::string& folder) { return add_folder(adding, folder, done); });
    if (done.is_told) return done;
    remove_group(group);
    return {};
}

void folder_notifications::forget(const std::string& group) {
    const std::lock_guard lock(mutex_);
    remove_group(group);
}

// A folder that has gone meanwhile is no failure: the one above it tells of that.
bool folder_notifications::add_folder(watched_group& group, const std::string& folder, outcome& done) {
    if (group.watches.contains(folder)) return true;
    if (groups_of_watch_.size() >= most_folders_) return false;
    const int watch = ::inotify_add_watch(notify_, folder.c_str(), watched_events);
    done.has_new = true;
    if (watch < 0) return errno == ENOENT || errno == ENOTDIR;
    groups_of_watch_[watch].push_back(&group.name);
    group.watches.emplace(folder, watch);
    return true;
}

// The group no longer wants what this watch tells by one of its folders.
void folder_notifications::remove_watch(const std::string& group, int watch) {
    const auto groups = groups_of_watch_.find(watch);
    if (groups == groups_of_watch_.end()) return;
    const auto one = std::find(groups->second.begin(), groups->second.end(), &group);
    if (one != groups->second.end()) groups->second.erase(one);
    if (!groups->second.empty()) return;
    groups_of_watch_.erase(groups);
    ::inotify_rm_watch(notify_, watch);
}

void folder_notifications::remove_group(const std::string& group) {
    const auto kept = watches_of_group_.find(group);
    if (kept == watches_of_group_.end()) return;
    for (const auto& [folder, watch] : kept->second) remove_watch(kept->first, watch);
    watches_of_group_.erase(kept);
}

void folder_notifications::wait_for_events() {
    std::array<pollfd, 3> waiting{{{ending_, POLLIN, 0}, {notify_, POLLIN, 0}, {volumes_, POLLPRI, 0}}};
    for (;;) {
        const int ready = ::poll(waiting.data(), waiting.size(), -1);
        if (ready < 0 && errno != EINTR) return;
        if (ready <= 0) continue;
        if (waiting[0].revents) return;
        if (waiting[1].revents & POLLIN) read_events();
        // The list of what is mounted answers with an error each time that it has changed.
        if (waiting[2].revents & POLLPRI) tell({}, true);
    }
}

void folder_notifications::read_events() {
    alignas(inotify_event) std::array<char, 16 * 1024> bytes;
    for (;;) {
        const ssize_t count = ::read(notify_, bytes.data(), bytes.size());
        if (count <= 0) return;
        for (std::size_t at = 0; at < static_cast<std::size_t>(count);) {
            inotify_event event;
            std::memcpy(&event, bytes.data() + at, sizeof event);
            const char* name = bytes.data() + at + sizeof event;
            take_event(event.wd, event.mask, std::string_view(name, ::strnlen(name, event.len)));
            at += sizeof event + event.len;
        }
    }
}

void folder_notifications::take_event(int watch, std::uint32_t mask, std::string_view name) {
    std::set<std::string> groups;
    {
        const std::lock_guard lock(mutex_);
        if (mask & IN_Q_OVERFLOW) {
            for (const auto& [group, watches] : watches_of_group_) groups.insert(group);
        } else if (const auto found = groups_of_watch_.find(watch); found != groups_of_watch_.end()) {
            for (const auto* group : found->second) groups.insert(*group);
        }
        if (mask & IN_IGNORED) {
            groups_of_watch_.erase(watch);
            for (auto& [group, watches] : watches_of_group_) {
                std::erase_if(watches, [watch](const auto& one) { return one.second == watch; });
            }
        }
    }
    const bool is_of_folders = mask & (IN_ISDIR | IN_Q_OVERFLOW | IN_IGNORED | events_of_the_folder);
    if (groups.empty() || !(is_of_folders || observe_.matters(name))) return;
    tell(std::move(groups), false);
}

void folder_notifications::tell(std::set<std::string> groups, bool volumes) {
    const std::lock_guard lock(told_mutex_);
    changed_groups_.merge(groups);
    are_volumes_changed_ = are_volumes_changed_ || volumes;
    if (std::exchange(is_posted_, true)) return;
    loop_.post(guard_.guarded([this] { call_observers(); }));
}

void folder_notifications::call_observers() {
    std::unique_lock taking(told_mutex_);
    const auto changed = std::exchange(changed_groups_, {});
    const bool mounted = std::exchange(are_volumes_changed_, false);
    is_posted_ = false;
    taking.unlock();
    if (!changed.empty()) observe_.changed(changed);
    if (mounted) observe_.volumes_changed();
}

}  // namespace vistels
