// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cerrno>
#include <functional>
#include <mutex>
#include <utility>

#include "util/file_system.h"

namespace vistels::testing {

// The machine's files, but for what the fault answers: it is asked before each call (counted from 1) and
// gives the error number with which that call fails, or 0 to let it be done. Any thread may call.
class failing_files : public file_system {
  public:
    void set_fault(std::function<int(int call)> fault) {
        const std::lock_guard lock(mutex_);
        fault_ = std::move(fault);
    }
    int calls() const {
        const std::lock_guard lock(mutex_);
        return calls_;
    }

    int open(const std::string& path, int flags, int& descriptor) override {
        const int failed = ask();
        return failed ? failed : file_system::open(path, flags, descriptor);
    }
    // A failing write leaves half of its bytes, as a full volume does.
    int write(int descriptor, std::string_view bytes, std::size_t& written) override {
        const int failed = ask();
        if (!failed) return file_system::write(descriptor, bytes, written);
        (void)file_system::write(descriptor, bytes.substr(0, bytes.size() / 2), written);
        return failed;
    }
    int sync(int descriptor) override {
        const int failed = ask();
        return failed ? failed : file_system::sync(descriptor);
    }
    int sync_data(int descriptor) override {
        const int failed = ask();
        return failed ? failed : file_system::sync_data(descriptor);
    }
    int hard_link(const std::string& from, const std::string& to) override {
        const int failed = ask();
        return failed ? failed : file_system::hard_link(from, to);
    }
    int rename(const std::string& from, const std::string& to) override {
        const int failed = ask();
        return failed ? failed : file_system::rename(from, to);
    }
    int remove(const std::string& path) override {
        const int failed = ask();
        return failed ? failed : file_system::remove(path);
    }
    int sync_folder(const std::string& folder) override {
        const int failed = ask();
        return failed ? failed : file_system::sync_folder(folder);
    }

  private:
    int ask() {
        const std::lock_guard lock(mutex_);
        return fault_(++calls_);
    }

    mutable std::mutex mutex_;
    std::function<int(int call)> fault_ = [](int) { return 0; };
    int calls_ = 0;
};

}  // namespace vistels::testing
