// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <string_view>
#include <thread>
#include <unordered_map>
#include <vector>

#include "util/posted_work_guard.h"
#include "util/run_loop.h"

namespace vistels {

// Tells when names appear in watched folders, go from them or move, and when volumes are mounted or
// unmounted. Folders are watched in groups; what is told is the name of the group. Where the file system
// cannot tell (volumes of other machines, no watches left), watch() says so.
// Made and destroyed on the main thread, where the observers are called through the loop; they must not
// destroy it. watch() and forget() may be called from any thread. It has a thread of its own, which waits for
// the kernel.
class folder_notifications {
  public:
    struct observers {
        // Whether a file of that name matters; folders always do. Called on the thread of its own.
        std::function<bool(std::string_view name)> matters;
        // Something changed in these groups; several changes may be one call.
        std::function<void(const std::set<std::string>& groups)> changed;
        // A volume was mounted or unmounted.
        std::function<void()> volumes_changed;
    };
    static constexpr std::size_t no_limit = static_cast<std::size_t>(-1);

    // At most `most_folders` are watched at once. `loop` must outlive it.
    folder_notifications(run_loop& loop, observers observe, std::size_t most_folders = no_limit);
    ~folder_notifications();
    folder_notifications(const folder_notifications&) = delete;
    folder_notifications& operator=(const folder_notifications&) = delete;

    struct outcome {
        bool is_told = false;  // every change in these folders will be told
        bool has_new = false;  // a folder was not watched before: what happened in it before this call was
                               // not told
    };
    // Watches these folders, and no others, as `group`. When not all of them can be, none is.
    outcome watch(const std::string& group, const std::vector<std::string>& folders);
    void forget(const std::string& group);

  private:
    void wait_for_events();
    void read_events();
    void take_event(int watch, std::uint32_t mask, std::string_view name);
    void tell(std::set<std::string> groups, bool volumes);
    void call_observers();
    struct watched_group;
    bool add_folder(watched_group& group, const std::string& folder, outcome& done);
    void remove_watch(const std::string& group, int watch);
    void remove_group(const std::string& group);

    run_loop& loop_;
    const observers observe_;
    const std::size_t most_folders_;
    int notify_ = -1;   // inotify; negative: there is none
    int ending_ = -1;   // an event that ends the thread
    int volumes_ = -1;  // the kernel's list of what is mounted
    std::mutex mutex_;
    // Guarded by mutex_.
    std::map<std::string, std::unordered_map<std::string, int>> watches_of_group_;  // by folder
    std::unordered_map<int, std::vector<const std::string*>> groups_of_watch_;      // its keys above
    // What happened and the main thread has not taken yet. watch() may hold the other lock for long.
    std::mutex told_mutex_;
    std::set<std::string> changed_groups_;
    bool are_volumes_changed_ = false;
    bool is_posted_ = false;
    posted_work_guard guard_;
    std::thread thread_;
};

}  // namespace vistels
