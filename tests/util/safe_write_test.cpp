// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/safe_write.h"
#include "util/job_failures.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <set>

#include "support/failing_files.h"
#include "support/temporary_folder.h"
#include "util/checksum.h"
#include "util/property_list.h"
#include "util/recovery.h"

namespace vistels {
namespace {

using testing::failing_files;
using testing::file_bytes;
using testing::put_file;
using testing::temporary_folder;

const std::string old_list = write_property_list("old");
const std::string new_list = write_property_list("new");

TEST(safe_write, numbers_are_never_the_same_twice) {
    std::set<std::int64_t> seen;
    for (int n = 0; n < 10'000; ++n) EXPECT_TRUE(seen.insert(safe_write_number()).second);
}

TEST(safe_write, replaces_and_leaves_nothing_behind) {
    const temporary_folder folder;
    for (const auto& bytes : {old_list, new_list, std::string()}) {
        const auto written = safe_write_bytes(folder / "a.plist", bytes);
        EXPECT_TRUE(written) << written.message();
        EXPECT_EQ(file_bytes(folder / "a.plist"), bytes);
    }
    EXPECT_EQ(names_in_folder(folder.path()).size(), 1U);
}

TEST(safe_write, every_failing_call_leaves_the_old_file_and_names_it) {
    for (const int error : {ENOSPC, EIO, EROFS, EACCES, EMFILE}) {
        for (const bool from_then_on : {false, true}) {
            for (int failing = 1;; ++failing) {
                const temporary_folder folder;
                put_file(folder / "a.plist", old_list);
                failing_files files;
                files.set_fault([&](int call) {
                    return call == failing || (from_then_on && call > failing) ? error : 0;
                });
                const auto written = safe_write_bytes(folder / "a.plist", new_list, files);
                if (files.calls() < failing) break;  // it never came to that call
                const std::string now = file_bytes(folder / "a.plist");
                if (written) {
                    EXPECT_EQ(now, new_list);
                } else {
                    EXPECT_NE(written.message().find(folder / "a.plist"), std::string::npos);
                    EXPECT_TRUE(now == old_list || now == new_list) << "call " << failing;
                }
                const auto again = safe_write_bytes(folder / "a.plist", new_list);
                EXPECT_TRUE(again) << again.message();
                EXPECT_EQ(file_bytes(folder / "a.plist"), new_list);
            }
        }
    }
}

// Content in blocks, whose mark is told before any whole copy of it is there.
TEST(safe_write, blocks_are_announced_before_they_are_whole_and_only_then_put_in_place) {
    const std::string_view blocks[] = {std::string_view(new_list).substr(0, 60), "",
                                       std::string_view(new_list).substr(60, 20)};
    const std::string_view last = std::string_view(new_list).substr(80);
    const auto put_all = [&](const block_writer& put) {
        for (const auto block : blocks) put(block);
        return last;
    };
    for (const bool refused : {true, false}) {
        for (int failing = 0;; ++failing) {  // 0: none
            const temporary_folder folder;
            const std::string path = folder / "a.plist";
            put_file(path, old_list);
            known_file known;
            ASSERT_TRUE(read_known(path, known));
            failing_files files;
            files.set_fault([&](int call) { return call == failing ? EIO : 0; });
            int announced = 0;
            const auto announce = [&](const coming_content& coming) -> result<void> {
                ++announced;
                EXPECT_EQ(coming.size, static_cast<std::int64_t>(new_list.size()));
                EXPECT_EQ(coming.hash, checksum(new_list));
                const temporary_folder grave;  // what a death now, without the old file, would leave
                for (const auto& name : names_in_folder(folder.path())) {
                    if (name != "a.plist") put_file(grave / name, file_bytes(folder / name));
                }
                EXPECT_TRUE(recover_folder(grave.path()).recovered.empty());
                if (refused) return job_was_cancelled();
                return {};
            };
            const auto written = safe_write_known_blocks(path, put_all, announce, known, false, files);
            if (failing > files.calls()) break;
            EXPECT_LE(announced, 1);
            const std::string now = file_bytes(path);
            if (written) {
                EXPECT_EQ(now, new_list);
                EXPECT_EQ(known.hash, checksum(new_list));
            } else {
                EXPECT_TRUE(now == old_list || (!refused && announced == 1 && now == new_list)) << failing;
            }
            EXPECT_FALSE(refused && written);
            EXPECT_TRUE(failing != 0 || names_in_folder(folder.path()).size() == 1) << "something is left";
        }
    }
}

TEST(safe_write, works_on_a_volume_without_hard_links) {
    const temporary_folder folder;
    put_file(folder / "a.plist", old_list);
    struct : failing_files {
        int hard_link(const std::string&, const std::string&) override { return EPERM; }
    } files;
    ASSERT_TRUE(safe_write_bytes(folder / "a.plist", new_list, files));
    EXPECT_EQ(file_bytes(folder / "a.plist"), new_list);
    EXPECT_EQ(names_in_folder(folder.path()).size(), 1U);
}

// Ends the process before a given call.
struct dying_files : failing_files {
    explicit dying_files(int before) {
        set_fault([before](int call) {
            if (call == before) ::_exit(9);
            return 0;
        });
    }
};

TEST(safe_write, a_process_that_dies_before_any_call_leaves_a_whole_file) {
    for (const bool existed : {true, false}) {
        for (int before = 1; before < 30; ++before) {
            const temporary_folder folder;
            if (existed) put_file(folder / "a.plist", old_list);
            const pid_t child = ::fork();
            if (child == 0) {
                dying_files files(before);
                (void)safe_write_bytes(folder / "a.plist", new_list, files);
                ::_exit(0);
            }
            int status = 0;
            ASSERT_EQ(::waitpid(child, &status, 0), child);
            (void)recover_folder(folder.path());
            const std::string now = file_bytes(folder / "a.plist");
            EXPECT_TRUE(now == new_list || (existed ? now == old_list : now.empty())) << before;
            if (WEXITSTATUS(status) == 0) break;
        }
    }
}

void make_old(const std::string& path, int hours) {
    std::filesystem::last_write_time(
        path, std::filesystem::file_time_type::clock::now() - std::chrono::hours(hours));
}

TEST(safe_write, what_is_no_plain_file_is_refused_and_left_alone) {
    for (const char* what : {"folder", "link", "pipe"}) {
        const temporary_folder folder;
        const std::string path = folder / "a.plist";
        put_file(folder / "linked.plist", old_list);
        if (*what == 'f') {
            std::filesystem::create_directory(path);
            put_file(path + "/inside", "x");
        } else if (*what == 'l') {
            std::filesystem::create_symlink("linked.plist", path);
        } else {
            ASSERT_EQ(::mkfifo(path.c_str(), 0600), 0);
        }
        const auto names = names_in_folder(folder.path());
        known_file known;
        const auto last = [](const block_writer&) { return std::string_view(new_list); };
        const auto announce = [](const coming_content&) { return result<void>(); };
        const std::string messages[] = {safe_write_bytes(path, new_list).message(),
                                        safe_write(path, "new").message(),
                                        safe_write_known(path, new_list, known).message(),
                                        safe_write_known_blocks(path, last, announce, known).message()};
        for (const auto& message : messages) EXPECT_NE(message.find(path), std::string::npos) << what;
        EXPECT_EQ(names_in_folder(folder.path()), names) << what;
        EXPECT_EQ(file_bytes(folder / "linked.plist"), old_list);
        file_kind kind{};
        EXPECT_EQ(machine_files().kind(path, kind), 0);
        EXPECT_NE(kind, file_kind::plain_file) << what;
    }
}

TEST(folders, something_else_in_the_place_of_one_is_told) {
    const temporary_folder folder;
    put_file(folder / "file", "x");
    for (const std::string& path : {folder / "file", folder / "file/below"}) {
        const auto made = make_folders(path);
        EXPECT_NE(made.message().find(folder / "file"), std::string::npos) << path;
    }
    EXPECT_TRUE(make_folders(folder / "a/b"));
    EXPECT_TRUE(make_folders(folder / "a/b"));
}

constexpr int day = 24;  // hours

TEST(recovery, puts_back_the_newest_whole_copy_that_counts) {
    const std::string torn = new_list.substr(0, new_list.size() / 2);
    using known = held_content;
    const struct {
        const char* what;
        std::string destination;  // empty: missing
        std::string temporary;
        std::string previous;
        std::string expected;  // of the file; empty: as it was
        std::vector<std::string> names_beside;
        int temporary_hours = 0;
        int previous_hours = 0;
        held_content content = known::not_known;
    } cases[] = {
        {"whole", old_list, new_list, "", "", {"a.plist temp file 12"}},
        {"whole, old copies", old_list, new_list, old_list, "", {}, day + 1, 99 * day},
        {"whole, a save that broke off just now",
         old_list,
         torn,
         old_list,
         "",
         {"a.plist <previous> 12", "a.plist temp file 12"},
         1,
         99 * day},
        {"missing, both copies", "", new_list, old_list, new_list, {"a.plist <previous> 12"}},
        {"missing, both, the last save long ago",
         "",
         new_list,
         old_list,
         new_list,
         {"a.plist <previous> 12"},
         1,
         99 * day},
        {"missing, torn temporary", "", torn, old_list, old_list, {"a.plist temp file 12"}, 1, 99 * day},
        {"missing, only temporary", "", new_list, "", new_list, {}},
        {"missing, only temporary, old", "", new_list, "", "", {"a copy 1.plist"}, day + 1},
        {"missing, both old",
         "",
         new_list,
         old_list,
         "",
         {"a copy 1.plist", "a copy 2.plist"},
         day + 1,
         day + 1},
        {"missing, both old, known",
         "",
         new_list,
         old_list,
         new_list,
         {"a.plist <previous> 12"},
         3 * day,
         3 * day,
         known::yes},
        {"missing, temporary, old, known", "", new_list, "", "", {"a copy 1.plist"}, 3 * day, 0, known::yes},
        {"missing, temporary, fresh, known", "", new_list, "", new_list, {}, 1, 0, known::yes},
        {"missing, previous, old, known", "", "", old_list, old_list, {}, 0, 3 * day, known::yes},
        {"missing, fresh, another content", "", new_list, "", "", {"a copy 1.plist"}, 0, 0, known::no},
        {"missing, cannot be told now",
         "",
         new_list,
         old_list,
         "",
         {"a.plist <previous> 12", "a.plist temp file 12"},
         0,
         0,
         known::cannot_be_told_now},
        {"missing, never written whole", "", torn, "", "", {"a damaged 1.plist"}},
        {"missing, nothing whole", "", torn, torn, "", {"a.plist <previous> 12", "a.plist temp file 12"}},
        {"torn, previous", torn, "", old_list, old_list, {"a damaged 1.plist"}},
        {"torn, old copy", torn, new_list, "", "", {"a copy 1.plist"}, day + 1},
        {"torn, nothing whole", torn, torn, torn, "", {"a.plist <previous> 12", "a.plist temp file 12"}},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.what);
        const temporary_folder folder;
        const auto put = [&](const std::string& name, const std::string& bytes, int hours) {
            if (bytes.empty()) return;
            put_file(folder / name, bytes);
            make_old(folder / name, hours);
        };
        put("a.plist", one.destination, 0);
        put("a.plist temp file 12", one.temporary, one.temporary_hours);
        put("a.plist <previous> 12", one.previous, one.previous_hours);
        const auto count = names_in_folder(folder.path()).size();
        const auto judge = [&](const std::string& name, const std::string&) {
            EXPECT_EQ(name, "a.plist");
            return one.content;
        };
        const auto done = recover_folder(folder.path(), machine_files(), judge);
        EXPECT_EQ(done.recovered.size(), one.expected.empty() ? 0U : 1U);
        EXPECT_EQ(file_bytes(folder / "a.plist"), one.expected.empty() ? one.destination : one.expected);
        auto names = names_in_folder(folder.path());
        std::erase(names, "a.plist");
        std::sort(names.begin(), names.end());
        EXPECT_EQ(names, one.names_beside);
        EXPECT_EQ(done.cleaned.size(), count - names_in_folder(folder.path()).size());
        const bool is_whole = one.destination == old_list;
        EXPECT_EQ(done.messages.empty(), is_whole);
        const auto again = recover_folder(folder.path(), machine_files(), judge);
        EXPECT_TRUE(again.recovered.empty());
        // What is still open is told again, everything else once.
        const bool is_open = one.content == known::cannot_be_told_now || one.temporary == torn;
        if (!is_open || one.names_beside[0] == "a damaged 1.plist") {
            EXPECT_TRUE(again.messages.empty());
        }
    }
}

TEST(natural_order, compares_numbers_by_value) {
    const char* const ascending[] = {"part 1",  "part 2", "part 10",      "part 010 b",
                                     "part 11", "part a", "part \xc3\xa4"};
    for (std::size_t a = 0; a < std::size(ascending); ++a) {
        for (std::size_t b = 0; b < std::size(ascending); ++b) {
            EXPECT_EQ(natural_before(ascending[a], ascending[b]), a < b)
                << ascending[a] << " " << ascending[b];
        }
    }
}

}  // namespace
}  // namespace vistels
