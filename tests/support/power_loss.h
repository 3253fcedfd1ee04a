// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <fcntl.h>
#include <pthread.h>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "support/temporary_folder.h"
#include "util/file_system.h"

namespace vistels::testing {

// One step of what a program did to the files of a folder, as a volume may or may not have kept it when the
// power went: names are kept by syncing the folder, bytes by syncing the file. Files are told by numbers.
struct step {
    enum class kind { names, write, sync_file, sync_folder, edit, saved } what;
    std::vector<std::pair<std::string, int>> names;  // each name's new file; 0 = none; together or not at all
    int file = 0;
    std::string bytes;      // written at the end of the file
    std::size_t count = 0;  // edits on record after an `edit`, in the file after `saved`
};

// Does everything in a real folder as well and writes down the steps. Any thread.
class recording_files : public file_system {
  public:
    int open(const std::string& path, int flags, int& descriptor) override {
        const std::lock_guard lock(mutex_);
        const int fault = file_system::open(path, flags, descriptor);
        if (fault != 0) return fault;
        int& file = names_[path_name(path)];
        if (file == 0) {
            file = ++last_file_;
            steps_.push_back({step::kind::names, {{path_name(path), file}}, 0, {}, 0});
        }
        descriptors_[descriptor] = file;
        return 0;
    }
    int write(int descriptor, std::string_view bytes, std::size_t& written) override {
        const std::lock_guard lock(mutex_);
        const int fault = file_system::write(descriptor, bytes, written);
        steps_.push_back(
            {step::kind::write, {}, descriptors_[descriptor], std::string(bytes.substr(0, written)), 0});
        return fault;
    }
    int empty(int descriptor) override { return file_system::empty(descriptor); }  // of new files alone
    int sync(int descriptor) override { return sync_data(descriptor); }
    int sync_data(int descriptor) override {
        const std::lock_guard lock(mutex_);
        if (syncs_are_late && is_journal_queue()) return 0;
        steps_.push_back({step::kind::sync_file, {}, descriptors_[descriptor], {}, 0});
        return 0;
    }
    int sync_folder(const std::string&) override {
        const std::lock_guard lock(mutex_);
        steps_.push_back({step::kind::sync_folder, {}, 0, {}, 0});
        return 0;
    }
    int hard_link(const std::string& from, const std::string& to) override {
        const std::lock_guard lock(mutex_);
        if (!has_hard_links) return EPERM;
        const int fault = file_system::hard_link(from, to);
        if (fault == 0) name({{path_name(to), names_[path_name(from)]}});
        return fault;
    }
    int rename(const std::string& from, const std::string& to) override {
        const std::lock_guard lock(mutex_);
        const int fault = file_system::rename(from, to);
        if (fault == 0) name({{path_name(to), names_[path_name(from)]}, {path_name(from), 0}});
        return fault;
    }
    int exchange(const std::string& a, const std::string& b) override {
        const std::lock_guard lock(mutex_);
        if (!has_exchange) return EINVAL;
        const int fault = file_system::exchange(a, b);
        if (fault == 0) name({{path_name(a), names_[path_name(b)]}, {path_name(b), names_[path_name(a)]}});
        return fault;
    }
    int remove(const std::string& path) override {
        const std::lock_guard lock(mutex_);
        const int fault = file_system::remove(path);
        if (fault == 0) name({{path_name(path), 0}});
        return fault;
    }

    void note(step::kind what, std::size_t count) {
        const std::lock_guard lock(mutex_);
        steps_.push_back({what, {}, 0, {}, count});
    }
    std::vector<step> steps() const {
        const std::lock_guard lock(mutex_);
        return steps_;
    }

    bool has_hard_links = true;
    bool has_exchange = true;
    bool syncs_are_late = false;  // the journal's own come too late for every step

  private:
    static bool is_journal_queue() {
        char name[16] = {};
        return ::pthread_getname_np(::pthread_self(), name, sizeof name) == 0 &&
               std::string_view(name) == "journal sync";
    }
    void name(std::vector<std::pair<std::string, int>> names) {
        for (const auto& [path, file] : names) names_[path] = file;
        steps_.push_back({step::kind::names, std::move(names), 0, {}, 0});
    }

    mutable std::mutex mutex_;
    std::vector<step> steps_;
    std::map<std::string, int> names_;
    std::map<int, int> descriptors_;
    int last_file_ = 0;
};

// What the volume holds for certain after the first `end` steps, and what it may hold besides.
struct at_power_loss {
    std::map<std::string, int> names;         // for certain
    std::vector<const step*> unsynced_names;  // each may be there or not
    std::map<int, std::string> synced_bytes;
    std::map<int, std::string> unsynced_bytes;  // a part of them may be there
    std::size_t synced_edits = 0;               // to be found again
    std::size_t edits = 0;                      // at most one more may be found
};

inline at_power_loss lose_power(const std::vector<step>& steps, std::size_t end) {
    at_power_loss at;
    for (std::size_t n = 0; n < end; ++n) {
        const step& one = steps[n];
        switch (one.what) {
            case step::kind::names:
                at.unsynced_names.push_back(&one);
                break;
            case step::kind::write:
                at.unsynced_bytes[one.file] += one.bytes;
                break;
            case step::kind::sync_file:
                at.synced_bytes[one.file] += std::exchange(at.unsynced_bytes[one.file], {});
                break;
            case step::kind::sync_folder:
                for (const step* names : std::exchange(at.unsynced_names, {})) {
                    for (const auto& [name, file] : names->names) at.names[name] = file;
                }
                break;
            case step::kind::edit:
                at.edits = one.count;
                break;
            case step::kind::saved:
                at.synced_edits = one.count;
                break;
        }
    }
    return at;
}

// The edits whose lines lie synced in a file whose name is synced: what the journal has promised.
inline std::size_t edits_in_synced_journal(const at_power_loss& at) {
    std::size_t highest = 0;
    for (const auto& [name, file] : at.names) {
        const auto bytes = at.synced_bytes.find(file);
        if (!name.starts_with("chron data journal") || bytes == at.synced_bytes.end()) continue;
        constexpr std::string_view key = "{\"number\":";
        for (std::size_t found = bytes->second.find(key); found != std::string::npos;
             found = bytes->second.find(key, found + 1)) {
            highest = std::max<std::size_t>(highest, std::stoul(bytes->second.substr(found + key.size())));
        }
    }
    return highest;
}

// What may have become of the bytes of a file that were not synced.
enum class rest { lost, half, whole, zeros };

inline void put_folder(const at_power_loss& at, std::uint64_t kept_names, rest bytes,
                       const std::string& folder) {
    std::map<std::string, int> names = at.names;
    for (std::size_t n = 0; n < at.unsynced_names.size(); ++n) {
        if (!(kept_names >> n & 1U)) continue;
        for (const auto& [name, file] : at.unsynced_names[n]->names) names[name] = file;
    }
    std::filesystem::create_directory(folder);
    for (const auto& [name, file] : names) {
        if (file == 0 || name == "t") continue;
        const auto synced = at.synced_bytes.find(file);
        const auto unsynced = at.unsynced_bytes.find(file);
        std::string content = synced == at.synced_bytes.end() ? "" : synced->second;
        const std::string more = unsynced == at.unsynced_bytes.end() ? "" : unsynced->second;
        if (bytes == rest::half) content += more.substr(0, more.size() / 2);
        if (bytes == rest::whole) content += more;
        if (bytes == rest::zeros) content += std::string(more.size(), '\0');
        put_file(path_join(folder, name), content);
    }
}

}  // namespace vistels::testing
