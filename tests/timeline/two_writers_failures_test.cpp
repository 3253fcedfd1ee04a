// SPDX-License-Identifier: GPL-3.0-or-later
#include <fcntl.h>

#include <map>

#include "support/failure_runs.h"
#include "util/property_list.h"

namespace vistels {
namespace {

using testing::failure_run;
using testing::file_bytes;
using testing::temporary_folder;

constexpr int edits_a_round = 120;

// As on a volume whose locks do not work: everybody gets them.
struct lockless_files : testing::unsynced_files {
    int lock(int) override { return 0; }
};

// One of two programs: codes in the timeline as long as it may, tells on `record` each clip that was
// acknowledged ("A 17") and each conflict that was told ("conflict").
int code_in_turns(const std::string& folder, const std::string& name, bool with_lock, unsigned seed,
                  int record) {
    std::mt19937 random(seed);
    testing::unsynced_files locked;
    lockless_files lockless;
    file_system& files = with_lock ? static_cast<file_system&>(locked) : lockless;
    const auto tell = [&](const std::string& line) {
        const std::string whole = line + "\n";
        if (::write(record, whole.data(), whole.size()) != static_cast<ssize_t>(whole.size())) ::_exit(99);
    };
    simulated_run_loop loop;
    std::unique_ptr<timeline_document> document;
    for (int n = 0; n < edits_a_round;) {
        if (!document) {
            auto opening = timeline_document::open(folder, loop, files);
            if (!opening) {
                tell("failed: " + opening.message());
                return 1;
            }
            document = std::move(opening).value();
            for (std::size_t at = 0; at < document->conflicts().size(); ++at) tell("conflict");
        }
        const auto told = document->conflict.connect([&](const file_conflict&) { tell("conflict"); });
        if (document->is_read_only()) (void)document->try_to_write();
        if (document->timeline().rows().empty()) {
            (void)document->apply({"Row", "", {operation::insert_row{0, testing::row_of("R", "R")}}});
        }
        const std::string clip = name + " " + std::to_string(n);
        const auto row = document->timeline().rows().empty() ? shared_text("R")
                                                             : document->timeline().rows().front()->uuid();
        if (!document->is_read_only() &&
            document->apply({"Clip", "", {operation::insert_clip{row, testing::clip_of(clip, n, n + 1)}}})) {
            tell(clip);
            ++n;
            if (random() % 5 == 0) document->save_soon();
            if (random() % 11 == 0) (void)document->save_now();
        }
        loop.run_posted();
        if (random() % (document->is_read_only() ? 400 : 40) == 0) document.reset();
    }
    document.reset();
    return 0;
}

// Reads the file over and over while the others write it.
int watch(const std::string& file, int stop) {
    ::fcntl(stop, F_SETFL, O_NONBLOCK);
    for (char byte = 0; ::read(stop, &byte, 1) != 0;) {  // 0: the other end was closed
        const auto bytes = read_file(file);
        if (!bytes) return 1;
        if (!read_property_list(bytes.value(), file)) return 2;
    }
    return 0;
}

pid_t forked(const std::function<int()>& work) {
    const pid_t child = ::fork();
    if (child == 0) ::_exit(work());
    return child;
}

int outcome_of(pid_t child) {
    int status = 0;
    ::waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

struct round_outcome {
    std::size_t clips = 0;
    std::size_t conflicts = 0;
};

void two_write(bool with_lock, unsigned seed, round_outcome& all) {
    const temporary_folder folder;
    const std::string timeline = folder / "t";
    const std::string file = timeline + "/chron data.plist";
    {
        simulated_run_loop loop;
        testing::unsynced_files files;
        (void)testing::opened(timeline, loop, files);
    }
    ASSERT_TRUE(file_exists(file));
    int record[2];
    int stop[2];
    ASSERT_EQ(::pipe(record), 0);
    ASSERT_EQ(::pipe(stop), 0);
    const pid_t watching = forked([&] {
        ::close(stop[1]);
        ::close(record[0]);
        ::close(record[1]);
        return watch(file, stop[0]);
    });
    std::vector<pid_t> writing;
    for (const std::string name : {"A", "B"}) {
        writing.push_back(forked([&] {
            ::close(record[0]);
            ::close(stop[1]);
            return code_in_turns(timeline, name, with_lock, seed + (name == "A" ? 0 : 1), record[1]);
        }));
    }
    ::close(record[1]);
    std::string told;
    char buffer[4096];
    for (ssize_t got = 0; (got = ::read(record[0], buffer, sizeof buffer)) > 0;)
        told.append(buffer, static_cast<std::size_t>(got));
    for (const pid_t child : writing) EXPECT_EQ(outcome_of(child), 0) << told;
    ::close(stop[1]);
    EXPECT_EQ(outcome_of(watching), 0) << "the file was missing or torn";
    ::close(record[0]);
    ::close(stop[0]);

    // Everything acknowledged is in the timeline or in a version kept beside it.
    std::string versions;
    for (const auto& name : names_in_folder(timeline)) versions += file_bytes(path_join(timeline, name));
    std::istringstream lines(told);
    for (std::string line; std::getline(lines, line);) {
        if (line == "conflict") {
            ++all.conflicts;
            continue;
        }
        ++all.clips;
        const bool is_kept = versions.find(">" + line + "<") != std::string::npos ||
                             versions.find("\"" + line + "\"") != std::string::npos;
        ASSERT_TRUE(is_kept) << line << " is in no version";
    }
    simulated_run_loop loop;
    testing::unsynced_files files;
    const auto last = testing::opened(timeline, loop, files);
    if (with_lock) {
        EXPECT_EQ(last->timeline().clip_count(), std::size_t{2 * edits_a_round});
    }
}

class two_writers : public ::testing::TestWithParam<bool> {};

TEST_P(two_writers, failures_lose_no_clip_and_never_miss_the_file) {
    failure_run run(GetParam() ? "two writers with the lock" : "two writers without the lock", 25, 250);
    round_outcome all;
    while (run.next()) {
        const auto seed = static_cast<unsigned>(run.random()());
        SCOPED_TRACE("seed of the round " + std::to_string(seed));
        two_write(GetParam(), seed, all);
        if (HasFatalFailure()) return;
    }
    EXPECT_EQ(all.conflicts == 0, GetParam());
    std::printf("failures: %zu clips, none lost, %zu conflicts told\n", all.clips, all.conflicts);
}

INSTANTIATE_TEST_SUITE_P(failures, two_writers, ::testing::Bool(), [](const auto& with_lock) {
    return std::string(with_lock.param ? "with_the_lock" : "without_the_lock");
});

}  // namespace
}  // namespace vistels
