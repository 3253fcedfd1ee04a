// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <limits>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "support/failing_files.h"
#include "support/opened_timeline.h"
#include "support/sanitized.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "util/simulated_run_loop.h"

namespace vistels::testing {

// How many cases a family of failure tests does, by the environment:
//   VISTELS_FAILURE_TIMES  how many times the number of cases that the family has in an ordinary run (1)
//   VISTELS_FAILURE_FULL   set: every case, or the family's full number
//   VISTELS_FAILURE_SEED   which cases are drawn when not all are (1)
// Prints what was done when it ends.
class failure_run {
  public:
    // `cases`: in an ordinary run, about two seconds' worth; fewer with a sanitizer. `full_cases`: where
    // there is no end of cases by itself.
    failure_run(std::string family, std::size_t cases,
                std::size_t full_cases = std::numeric_limits<std::size_t>::max())
        : family_(std::move(family)), wanted_(is_full() ? full_cases : cases * times()), random_(seed()) {
        if (is_sanitized) wanted_ = wanted_ / 8 + 1;
    }
    ~failure_run() {
        std::printf("failures: %s: %zu cases%s in %.1f s, seed %u\n", family_.c_str(), cases_,
                    is_over_ ? "" : ", all there are,", elapsed(), seed());
        std::fflush(stdout);
    }
    failure_run(const failure_run&) = delete;
    failure_run& operator=(const failure_run&) = delete;

    static bool is_full() { return std::getenv("VISTELS_FAILURE_FULL") != nullptr; }
    static unsigned seed() { return number("VISTELS_FAILURE_SEED"); }

    // Counts a case and tells whether it is still to be done.
    bool next() {
        is_over_ = cases_ >= wanted_;
        if (!is_over_) ++cases_;
        return !is_over_;
    }
    // 0 to count - 1, drawn by the seed unless all are done anyway.
    std::vector<std::size_t> order(std::size_t count) {
        std::vector<std::size_t> all(count);
        std::iota(all.begin(), all.end(), std::size_t{0});
        if (!is_full()) std::shuffle(all.begin(), all.end(), random_);
        return all;
    }
    std::size_t below(std::size_t limit) { return random_() % limit; }
    std::mt19937& random() { return random_; }

  private:
    static std::size_t times() { return number("VISTELS_FAILURE_TIMES"); }
    static unsigned number(const char* name) {
        const char* value = std::getenv(name);
        return value ? static_cast<unsigned>(std::stoul(value)) : 1;
    }
    double elapsed() const {
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - began_).count();
    }

    std::string family_;
    std::size_t wanted_;
    std::mt19937 random_;
    std::chrono::steady_clock::time_point began_ = std::chrono::steady_clock::now();
    std::size_t cases_ = 0;
    bool is_over_ = false;
};

// The rows with all that is in them; not the timeline's identity, which differs from run to run.
inline std::string rows_text(const sxy_DATA_root& timeline) {
    timeline_snapshot snapshot;
    snapshot.description = timeline.description();
    snapshot.kept = timeline.kept();
    snapshot.rows = timeline.rows();
    snapshot.tags = timeline.tags();
    return write_json(write_timeline(snapshot), json_layout::one_line);
}

// What somebody finds who opens the folder.
inline std::string rows_opened_in(const std::string& folder) {
    simulated_run_loop loop;
    unsynced_files files;
    const auto document = opened(folder, loop, files);
    return document ? rows_text(document->timeline()) : std::string();
}

// The same of a copy of the folder as it is now.
inline std::string rows_found_in(const std::string& folder) {
    const temporary_folder grave;
    std::filesystem::copy(folder, grave / "copy", std::filesystem::copy_options::recursive);
    return rows_opened_in(grave / "copy");
}

// Edits of every kind that tests of failures do: rows and clips come, a clip changes, some are deleted, notes
// come, change and go. No two of them lead to the same state.
inline std::vector<timeline_edit> scripted_edits() {
    const auto change = [](const std::string& clip, const char* key, const property_value& value) {
        property_dictionary set;
        set.add(key, value);
        return operation::change_clip{clip, set, {}};
    };
    const shared_text row("R");
    std::vector<timeline_edit> edits;
    edits.push_back({"Row", "", {operation::insert_row{0, row_of("R", "Shots")}}});
    for (int n = 0; n < 4; ++n) {
        const std::string clip = "c" + std::to_string(n);
        edits.push_back({"Clip", "", {operation::insert_clip{row, clip_of(clip, n, n + 1)}}});
    }
    edits.push_back({"Goal", "", {operation::insert_qualifier{"c1", 0, qualifier_of("q", "Goal")}}});
    edits.push_back({"Trim", "", {change("c2", "time_end", 9.5), change("c1", "stars", 3)}});
    sxy_DATA_root so_far;
    change_set touched;
    for (const auto& edit : edits) (void)apply_edit(so_far, edit, touched);
    constexpr double never_outdated = 4e9;
    edits.push_back(plan_delete_clips(so_far, {"c0", "c3"}, "analyst", never_outdated));
    edits.push_back({"Row", "", {operation::insert_row{0, row_of("S", "Corners")}}});
    edits.push_back({"Move", "", {operation::move_clip{"c2", shared_text("S")}}});
    const auto note = [&](const std::string& clip, const std::string& text) {
        property_dictionary stored;
        stored.add("note_string", text);
        edits.push_back({"Note", "", {change(clip, "notes_dict", std::move(stored))}});
    };
    const auto noted_clip = [&](const std::string& text) {
        sxy_CLIP clip = clip_of("c9", 7, 8);
        clip.set_note(std::make_shared<const clip_note>(clip_note().with_text(text)));
        edits.push_back({"Clip", "", {operation::insert_clip{row, std::move(clip)}}});
    };
    note("c1", "one");
    note("c1", "two");
    // With saves after every three edits: one that changes nothing but notes.
    note("c2", "of another");
    note("c1", "three");
    edits.push_back({"No Note", "", {operation::change_clip{"c1", {}, {property_value("notes_dict")}}}});
    noted_clip("came with it");
    edits.push_back({"Delete", "", {operation::remove_clip{"c9"}, change("c1", "stars", 4)}});
    noted_clip("came back");
    double seconds = 1e9;
    for (auto& edit : edits) edit.stamp = edit_stamp{"analyst", seconds++};
    return edits;
}

// The rows before the first edit and after each.
inline std::vector<std::string> states_of(const std::vector<timeline_edit>& edits) {
    sxy_DATA_root timeline;
    std::vector<std::string> states{rows_text(timeline)};
    for (const auto& edit : edits) {
        change_set touched;
        const auto applied = apply_edit(timeline, edit, touched);
        EXPECT_TRUE(applied) << applied.message();
        states.push_back(rows_text(timeline));
    }
    return states;
}

// Runs `work` in a child process, which acknowledges what it has done by a byte each, and ends with what it
// returns; returns the number of bytes and, by `ended_with`, that number (-1: killed).
inline std::size_t acknowledged_by_child(const std::function<int(std::function<void()> acknowledge)>& work,
                                         int& ended_with,
                                         const std::function<bool(std::size_t)>& is_to_be_killed = {}) {
    int ends[2];
    if (::pipe(ends) != 0) std::abort();
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        ::_exit(work([&] {
            if (::write(ends[1], "x", 1) != 1) ::_exit(99);
        }));
    }
    ::close(ends[1]);
    std::size_t count = 0;
    const auto take = [&] {
        char byte = 0;
        const bool is_there = ::read(ends[0], &byte, 1) == 1;
        if (is_there) ++count;
        return is_there;
    };
    while (!is_to_be_killed || !is_to_be_killed(count)) {
        if (!take()) break;
    }
    if (is_to_be_killed) ::kill(child, SIGKILL);
    while (take()) {
    }
    ::close(ends[0]);
    int status = 0;
    ::waitpid(child, &status, 0);
    ended_with = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return count;
}

inline constexpr int died = -1;

// Files that end the process before a given call.
inline void die_before(failing_files& files, std::size_t call) {
    files.set_fault([last = files.calls() + static_cast<int>(call)](int now) {
        if (now == last) ::kill(::getpid(), SIGKILL);
        return 0;
    });
}

}  // namespace vistels::testing
