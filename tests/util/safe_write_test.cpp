// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/safe_write.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <set>

#include "support/failing_files.h"
#include "support/temporary_folder.h"
#include "util/checksum.h"
#include "util/property_list.h"

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
                if (refused) return failure{"not now"};
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

TEST(recovery, puts_back_the_newest_whole_copy) {
    const std::string torn = new_list.substr(0, new_list.size() / 2);
    struct {
        const char* what;
        std::string destination;  // empty: missing
        std::string temporary;
        std::string previous;
        std::string expected;  // empty: nothing was done
    } const cases[] = {
        {"whole destination", old_list, new_list, "", ""},
        {"missing, both copies", "", new_list, old_list, new_list},
        {"missing, torn temporary", "", torn, old_list, old_list},
        {"missing, only temporary", "", new_list, "", new_list},
        {"torn, previous", torn, "", old_list, old_list},
        {"torn, nothing whole", torn, torn, torn, ""},
    };
    for (const auto& one : cases) {
        const temporary_folder folder;
        const auto put = [&](const std::string& name, const std::string& bytes) {
            if (!bytes.empty()) put_file(folder / name, bytes);
        };
        put("a.plist", one.destination);
        put("a.plist temp file 12", one.temporary);
        put("a.plist <previous> 12", one.previous);
        const auto done = recover_folder(folder.path());
        EXPECT_EQ(done.recovered.size(), one.expected.empty() ? 0U : 1U) << one.what;
        EXPECT_EQ(file_bytes(folder / "a.plist"), one.expected.empty() ? one.destination : one.expected)
            << one.what;
        if (!one.expected.empty() && !one.destination.empty()) {
            EXPECT_EQ(file_bytes(folder / "a damaged 1.plist"), one.destination) << one.what;
        }
        EXPECT_TRUE(recover_folder(folder.path()).recovered.empty()) << one.what;
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
