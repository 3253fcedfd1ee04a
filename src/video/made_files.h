// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// For the sources of this folder only: work on files that leaves nothing behind when it fails.

#include <cstddef>
#include <filesystem>
#include <string>
#include <vector>

#include "util/job.h"

namespace vistels {

// Takes away what was made, unless it is kept.
class made_files {
  public:
    made_files() = default;
    ~made_files() {
        std::error_code ignored;
        for (const auto& path : whole_) std::filesystem::remove_all(path, ignored);
        // Deepest first; one that holds something by now stays.
        for (const auto& folder : when_empty_) std::filesystem::remove(folder, ignored);
    }
    made_files(const made_files&) = delete;
    made_files& operator=(const made_files&) = delete;

    // A file, or a folder with all it holds.
    void add(const std::string& path) { whole_.push_back(path); }
    // `path` and the folders above it that are not there yet.
    void add_missing_of(const std::string& path) {
        namespace fs = std::filesystem;
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

// Runs several pieces of work under one job, each the same share of its progress; cancelling it cancels the
// piece that is running.
class shared_progress {
  public:
    shared_progress(std::size_t pieces, job& work) : pieces_(pieces), work_(work) {}

    template <class Piece>
    auto run(Piece piece) {
        const auto all = static_cast<double>(pieces_);
        job one([&](double fraction) {
            work_.set_progress((static_cast<double>(done_) + fraction) / all);
            if (work_.is_cancelled()) one.cancel();
        });
        if (work_.is_cancelled()) one.cancel();
        auto made = piece(one);
        if (made) work_.set_progress(static_cast<double>(++done_) / all);
        return made;
    }

  private:
    const std::size_t pieces_;
    job& work_;
    std::size_t done_ = 0;
};

}  // namespace vistels
