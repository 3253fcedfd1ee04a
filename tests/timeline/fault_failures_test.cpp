// SPDX-License-Identifier: GPL-3.0-or-later
#include <sched.h>
#include <sys/mount.h>
#include <sys/stat.h>

#include <cstring>
#include <set>

#include "support/failure_runs.h"

namespace vistels {
namespace {

using testing::failing_files;
using testing::failure_run;
using testing::file_bytes;
using testing::opened;
using testing::put_file;
using testing::rows_text;
using testing::short_write;
using testing::temporary_folder;
using testing::unsynced_files;

// Which call fails (counted from the moment at which the fault begins), how, and whether those after it too.
struct fault {
    std::size_t call = 0;
    int error = 0;
    bool from_then_on = false;

    void begin(failing_files& files) const {
        const int first = files.calls() + static_cast<int>(call);
        files.set_fault(
            [*this, first](int now) { return now == first || (from_then_on && now > first) ? error : 0; });
    }
    std::string text() const {
        return "call " + std::to_string(call) + (from_then_on ? " and all after it: " : ": ") +
               (error == short_write ? "short write" : std::strerror(error));
    }
};

// Runs `one` for every fault of a work that makes so many calls.
void for_every_fault(const std::string& family, std::size_t cases, std::size_t calls,
                     const std::function<void(const fault&)>& one) {
    constexpr int errors[] = {ENOSPC, EIO, EROFS, EACCES, EMFILE, short_write};
    failure_run run(family, cases);
    for (const std::size_t number : run.order(calls * std::size(errors) * 2)) {
        if (!run.next()) return;
        const fault now{1 + number / 2 / std::size(errors), errors[number / 2 % std::size(errors)],
                        number % 2 == 1};
        SCOPED_TRACE(now.text());
        one(now);
        if (::testing::Test::HasFatalFailure()) return;
    }
}

std::size_t calls_since(const failing_files& files, int before) {
    return static_cast<std::size_t>(files.calls() - before);
}

// A document with its script half done and saved, and the other half to be done with a fault.
struct half_done {
    temporary_folder folder;
    unsynced_files files;
    simulated_run_loop loop;
    std::vector<timeline_edit> edits = testing::scripted_edits();
    std::vector<std::string> states = testing::states_of(edits);
    std::unique_ptr<timeline_document> document = opened(folder / "t", loop, files);
    std::size_t done = 0;
    std::size_t refused = 0;

    half_done() {
        while (done < edits.size() / 2) EXPECT_TRUE(document->apply(edits[done++]));
        EXPECT_TRUE(document->save_now());
    }
    void apply_next() {
        const auto applied = document->apply(edits[done]);
        if (applied) {
            ++done;
        } else {
            ++refused;
            EXPECT_NE(applied.message().find(folder.path()), std::string::npos) << applied.message();
        }
        ASSERT_EQ(rows_text(document->timeline()), states[done]) << "memory is not as it should be";
    }
    void save() {
        const auto saved = document->save_now();
        EXPECT_TRUE(saved || saved.message().find(folder.path()) != std::string::npos) << saved.message();
    }
    // Some edits and saves, whatever they lead to.
    void go_on() {
        for (int n = 0; n < 5 && done < edits.size(); ++n) {
            apply_next();
            if (n == 1 || n == 3) save();
        }
    }
};

TEST(failures, a_failing_call_of_an_edit_or_a_save_harms_neither_file_nor_memory) {
    std::size_t calls = 0;
    {
        half_done at;
        const int before = at.files.calls();
        at.go_on();
        calls = calls_since(at.files, before);
    }
    for_every_fault("a call of edits and saves fails", 400, calls, [](const fault& now) {
        half_done at;
        now.begin(at.files);
        at.go_on();
        at.files.set_fault({});
        // The file stands there whole, and a process that dies now loses nothing.
        const auto file = load_timeline(at.folder / "t");
        ASSERT_TRUE(file) << file.message();
        ASSERT_EQ(testing::rows_found_in(at.folder / "t"), at.states[at.done]);
        const auto saved = at.document->save_now();
        ASSERT_TRUE(saved) << saved.message();
        EXPECT_TRUE(at.document->conflicts().empty());
        EXPECT_EQ(rows_text(sxy_DATA_root(load_timeline(at.folder / "t").value().content)),
                  at.states[at.done]);
        while (at.done < at.edits.size()) at.apply_next();
        at.document.reset();
        EXPECT_EQ(testing::rows_found_in(at.folder / "t"), at.states.back());
    });
}

// What a process left that died between the two renames of a save on a volume without hard links, with edits
// on record that no file holds.
void leave_behind(const std::string& folder) {
    half_done at;
    at.apply_next();
    std::filesystem::copy(at.folder / "t", folder);
    const std::string file = folder + "/chron data.plist";
    put_file(file + " temp file 7", file_bytes(file));
    std::filesystem::rename(file, file + " <previous> 7");
}

TEST(failures, a_failing_call_of_opening_and_recovering_leaves_all_to_the_next_opening) {
    const temporary_folder left;
    leave_behind(left / "t");
    const std::string expected = testing::rows_found_in(left / "t");
    ASSERT_NE(expected.find("c3"), std::string::npos);
    std::size_t calls = 0;
    {
        const temporary_folder copy;
        std::filesystem::copy(left / "t", copy / "t");
        unsynced_files files;
        simulated_run_loop loop;
        (void)opened(copy / "t", loop, files);
        calls = static_cast<std::size_t>(files.calls());
    }
    for_every_fault("a call of opening and recovering fails", 700, calls, [&](const fault& now) {
        const temporary_folder copy;
        std::filesystem::copy(left / "t", copy / "t");
        unsynced_files files;
        simulated_run_loop loop;
        now.begin(files);
        {
            auto document = timeline_document::open(copy / "t", loop, files);
            if (document) {
                EXPECT_EQ(rows_text(document.value()->timeline()), expected);
                // Tried again without the fault, a timeline that could only be read can be written.
                files.set_fault({});
                const auto writing = document.value()->try_to_write();
                EXPECT_TRUE(writing) << writing.message();
                EXPECT_TRUE(document.value()->apply(
                    {"Last", "", {operation::insert_row{0, testing::row_of("last", "")}}}));
            } else {
                EXPECT_NE(document.message().find(copy / "t"), std::string::npos) << document.message();
                EXPECT_EQ(testing::rows_found_in(copy / "t"), expected);
                files.set_fault({});
            }
        }
        const auto again = opened(copy / "t", loop, files);
        ASSERT_TRUE(again);
        EXPECT_FALSE(again->is_read_only());
        EXPECT_TRUE(again->conflicts().empty());
    });
}

constexpr std::size_t volume_bytes = 256 * 1024;
constexpr std::size_t block_bytes = 4096;

// The folder's volume has 256 KiB; counted in blocks, once for each file however many names it has.
struct small_volume : unsynced_files {
    explicit small_volume(std::string folder) : folder_(std::move(folder)) {}

    int open(const std::string& path, int flags, int& descriptor) override {
        if ((flags & O_CREAT) && !file_exists(path) && free_bytes() == 0) return ENOSPC;
        return unsynced_files::open(path, flags, descriptor);
    }
    int write(int descriptor, std::string_view bytes, std::size_t& written) override {
        file_identity file;
        (void)opened_identity(descriptor, file);
        const std::size_t slack = blocks(file.size) - static_cast<std::size_t>(file.size);
        const std::size_t room = free_bytes() + slack;
        written = 0;
        if (room == 0) return ENOSPC;
        return unsynced_files::write(descriptor, bytes.substr(0, room), written);
    }

  private:
    static std::size_t blocks(std::int64_t size) {
        return (static_cast<std::size_t>(size) + block_bytes - 1) / block_bytes * block_bytes;
    }
    std::size_t free_bytes() const {
        std::size_t used = 0;
        std::set<std::uint64_t> seen;
        for (const auto& name : names_in_folder(folder_)) {
            file_identity file;
            if (machine_files().identity(path_join(folder_, name), file) != 0) continue;
            if (seen.insert(file.inode).second) used += blocks(file.size);
        }
        return used < volume_bytes ? volume_bytes - used : 0;
    }

    std::string folder_;
};

timeline_edit long_clip(std::size_t number) {
    sxy_CLIP clip = testing::clip_of("clip " + std::to_string(number), static_cast<double>(number),
                                     static_cast<double>(number) + 0.5);
    qual_ITEM note = testing::qualifier_of("q " + std::to_string(number), std::string(700, 'n'));
    return {
        "Clip",
        "",
        {operation::insert_clip{shared_text("R"), clip}, operation::insert_qualifier{clip.id(), 0, note}}};
}

// Codes on a volume on which `taken` bytes are no longer free, until there is room again.
void fill_volume(const std::string& folder, file_system& files, std::size_t taken) {
    simulated_run_loop loop;
    auto document = opened(folder, loop, files);
    ASSERT_TRUE(document->apply({"Row", "", {operation::insert_row{0, testing::row_of("R", "R")}}}));
    ASSERT_TRUE(document->save_now());
    const std::string ballast = path_join(folder, "ballast");
    put_file(ballast, std::string(taken, 'b'));
    std::size_t refused = 0;
    for (std::size_t n = 0; n < 40; ++n) {
        const std::string before = rows_text(document->timeline());
        const auto applied = document->apply(long_clip(n));
        if (!applied) {
            ++refused;
            ASSERT_EQ(rows_text(document->timeline()), before);
            ASSERT_NE(applied.message().find("no space"), std::string::npos) << applied.message();
        }
        if (n % 8 == 7) (void)document->save_now();
    }
    const std::string all = rows_text(document->timeline());
    ASSERT_EQ(testing::rows_found_in(folder), all);
    // A new opening of the full volume is told what is wrong, or reads what is there.
    document.reset();
    put_file(ballast, std::string(volume_bytes, 'b'));
    {
        const auto full = timeline_document::open(folder, loop, files);
        ASSERT_TRUE(full) << full.message();
        ASSERT_EQ(rows_text(full.value()->timeline()), all);
        if (full.value()->is_read_only()) {
            EXPECT_NE(full.value()->read_only_reason().message().find("no space"), std::string::npos);
        }
        std::filesystem::remove(ballast);
        ASSERT_TRUE(full.value()->try_to_write());
        ASSERT_TRUE(full.value()->apply(long_clip(100)));
        ASSERT_TRUE(full.value()->save_now());
    }
    EXPECT_TRUE(refused > 0 || taken < volume_bytes - block_bytes) << "the full volume was not felt";
}

TEST(failures, a_volume_filled_to_every_level_loses_nothing_that_it_took) {
    failure_run run("a volume of 256 KiB is filled", 100);
    const std::size_t step = failure_run::is_full() ? 512 : block_bytes;
    for (const std::size_t level : run.order(volume_bytes / step + 1)) {
        if (!run.next()) break;
        SCOPED_TRACE("filled by " + std::to_string(level * step));
        const temporary_folder folder;
        small_volume files(folder / "t");
        fill_volume(folder / "t", files, level * step);
        if (::testing::Test::HasFatalFailure()) return;
    }
}

// In a process of its own, since a volume can be mounted only where nobody else sees it.
int fill_a_real_volume(const std::string& folder, std::size_t taken) {
    constexpr int not_allowed = 77;
    if (::unshare(CLONE_NEWNS) != 0) return not_allowed;
    if (::mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return not_allowed;
    if (::mount("tmpfs", folder.c_str(), "tmpfs", 0, "size=256k") != 0) return not_allowed;
    fill_volume(folder, machine_files(), taken);
    return ::testing::Test::HasFailure() ? 1 : 0;
}

TEST(failures, a_real_volume_filled_to_every_level_loses_nothing_that_it_took) {
    failure_run run("a real volume of 256 KiB is filled", 100);
    for (const std::size_t level : run.order(volume_bytes / block_bytes + 1)) {
        if (!run.next()) break;
        const temporary_folder folder;
        int ended = 0;
        testing::acknowledged_by_child(
            [&](const auto&) { return fill_a_real_volume(folder.path(), level * block_bytes); }, ended);
        if (ended == 77) GTEST_SKIP() << "no volume may be mounted here; the counted one stands for it";
        ASSERT_EQ(ended, 0) << "filled by " << level * block_bytes;
    }
}

}  // namespace
}  // namespace vistels
