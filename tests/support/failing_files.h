// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cerrno>
#include <functional>
#include <mutex>
#include <utility>

#include "util/file_system.h"

namespace vistels::testing {

inline constexpr int short_write = -1;  // no error: a write does half of its bytes, other calls are done

// The machine's files, but for what the fault answers: it is asked before each call (counted from 1) and
// gives the error number with which that call fails, 0 to let it be done, or `short_write`. Any thread may
// call.
class failing_files : public file_system {
  public:
    // An empty one: nothing fails any more.
    void set_fault(std::function<int(int call)> fault) {
        const std::lock_guard lock(mutex_);
        fault_ = fault ? std::move(fault) : [](int) { return 0; };
    }
    // Syncs are asked for but not done: what dies is a process, which takes nothing with it that was written.
    void leave_out_syncs() {
        const std::lock_guard lock(mutex_);
        syncs_ = false;
    }
    int calls() const {
        const std::lock_guard lock(mutex_);
        return calls_;
    }

    int open(const std::string& path, int flags, int& descriptor) override {
        const int failed = ask();
        return failed > 0 ? failed : file_system::open(path, flags, descriptor);
    }
    // A failing write leaves half of its bytes, as a full volume does; a short one says so.
    int write(int descriptor, std::string_view bytes, std::size_t& written) override {
        const int failed = ask();
        if (!failed) return file_system::write(descriptor, bytes, written);
        const int half = file_system::write(descriptor, bytes.substr(0, bytes.size() / 2), written);
        return failed != short_write ? failed
               : written > 0         ? half
                                     : file_system::write(descriptor, bytes, written);
    }
    int read(int descriptor, char* into, std::size_t room, std::size_t& got) override {
        const int failed = ask();
        return failed > 0 ? failed : file_system::read(descriptor, into, room, got);
    }
    int empty(int descriptor) override {
        const int failed = ask();
        return failed > 0 ? failed : file_system::empty(descriptor);
    }
    int lock(int descriptor) override {
        const int failed = ask();
        return failed > 0 ? failed : file_system::lock(descriptor);
    }
    int touch(int descriptor) override {
        const int failed = ask();
        return failed > 0 ? failed : file_system::touch(descriptor);
    }
    int sync(int descriptor) override {
        const int failed = ask();
        return failed > 0 || !syncs() ? std::max(failed, 0) : file_system::sync(descriptor);
    }
    int sync_data(int descriptor) override {
        const int failed = ask();
        return failed > 0 || !syncs() ? std::max(failed, 0) : file_system::sync_data(descriptor);
    }
    // A descriptor is gone after a failing close, too.
    int close(int descriptor) override {
        const int failed = ask();
        const int closing = file_system::close(descriptor);
        return failed > 0 ? failed : closing;
    }
    int hard_link(const std::string& from, const std::string& to) override {
        const int failed = ask();
        return failed > 0 ? failed : file_system::hard_link(from, to);
    }
    int rename(const std::string& from, const std::string& to) override {
        const int failed = ask();
        return failed > 0 ? failed : file_system::rename(from, to);
    }
    int exchange(const std::string& a, const std::string& b) override {
        const int failed = ask();
        return failed > 0 ? failed : file_system::exchange(a, b);
    }
    int remove(const std::string& path) override {
        const int failed = ask();
        return failed > 0 ? failed : file_system::remove(path);
    }
    int sync_folder(const std::string& folder) override {
        const int failed = ask();
        return failed > 0 || !syncs() ? std::max(failed, 0) : file_system::sync_folder(folder);
    }
    int make_folder(const std::string& path) override {
        const int failed = ask();
        return failed > 0 ? failed : file_system::make_folder(path);
    }
    int identity(const std::string& path, file_identity& found) override {
        const int failed = ask();
        return failed > 0 ? failed : file_system::identity(path, found);
    }
    int opened_identity(int descriptor, file_identity& found) override {
        const int failed = ask();
        return failed > 0 ? failed : file_system::opened_identity(descriptor, found);
    }
    int kind(const std::string& path, file_kind& found) override {
        const int failed = ask();
        return failed > 0 ? failed : file_system::kind(path, found);
    }
    int list(const std::string& folder, std::vector<std::string>& names) override {
        const int failed = ask();
        return failed > 0 ? failed : file_system::list(folder, names);
    }

  private:
    int ask() {
        const std::lock_guard lock(mutex_);
        return fault_(++calls_);
    }

    bool syncs() const {
        const std::lock_guard lock(mutex_);
        return syncs_;
    }

    mutable std::mutex mutex_;
    bool syncs_ = true;
    std::function<int(int call)> fault_ = [](int) { return 0; };
    int calls_ = 0;
};

// Files that are never synced to the volume, which the death of a process does not ask for: much faster.
struct unsynced_files : failing_files {
    int sync(int) override { return 0; }
    int sync_data(int) override { return 0; }
    int sync_folder(const std::string&) override { return 0; }
};

}  // namespace vistels::testing
