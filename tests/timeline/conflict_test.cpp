// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <filesystem>

#include "support/failing_files.h"
#include "support/opened_timeline.h"
#include "support/run_until.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "util/property_list.h"
#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

using testing::add_row;
using testing::clip_of;
using testing::file_bytes;
using testing::opened;
using testing::put_file;
using testing::temporary_folder;

// A saved timeline with the row "ours" and the bytes of another one with the row "theirs".
struct two_versions {
    temporary_folder folder;
    simulated_run_loop loop;
    testing::unsynced_files files;
    std::unique_ptr<timeline_document> document = opened(folder.path(), loop, files);
    std::string file = folder / "chron data.plist";
    std::string theirs;

    two_versions() {
        EXPECT_TRUE(document->apply(add_row("ours")));
        EXPECT_TRUE(document->save_now());
        sxy_DATA_root other;
        change_set touched;
        EXPECT_TRUE(apply_edit(other, add_row("theirs"), touched));
        theirs = write_property_list(write_timeline(other.snapshot()));
    }
    // Every version that lies in the folder, by its rows.
    bool has(const std::string& row) const {
        for (const auto& name : names_in_folder(folder.path())) {
            if (file_bytes(folder / name).find(row) != std::string::npos) return true;
        }
        return false;
    }
};

TEST(conflict, a_strangers_version_is_kept_beside_and_told_whenever_it_came) {
    for (const std::string when : {"before an edit", "with nothing to save", "before closing"}) {
        two_versions at;
        std::vector<file_conflict> told;
        const auto telling =
            at.document->conflict.connect([&](const file_conflict& one) { told.push_back(one); });
        ASSERT_TRUE(safe_write_bytes(at.file, at.theirs, at.files));
        if (when == "before an edit") {
            ASSERT_TRUE(at.document->apply(add_row("more")));
            ASSERT_TRUE(at.document->save_now());
        } else if (when == "with nothing to save") {
            at.loop.advance(writer_lock::renewal_seconds);
            ASSERT_TRUE(testing::comes_about(at.loop, [&] { return !told.empty(); }));
        } else {
            at.document.reset();
        }
        const std::string kept = at.folder / "chron data conflict 1.plist";
        ASSERT_EQ(told.size(), 1U) << when;
        EXPECT_EQ(told[0].path, at.file);
        EXPECT_EQ(told[0].kept_as, kept);
        EXPECT_NE(told[0].told.message().find("chron data conflict 1.plist"), std::string::npos);
        EXPECT_EQ(file_bytes(kept), at.theirs) << when;
        EXPECT_NE(file_bytes(at.file).find("ours"), std::string::npos) << when;
        if (!at.document) continue;
        ASSERT_TRUE(at.document->apply(add_row("later")));
        ASSERT_TRUE(at.document->save_now());
        EXPECT_EQ(told.size(), 1U) << "told once";
    }
}

TEST(conflict, a_volume_without_hard_links_keeps_a_strangers_version_too) {
    struct : testing::unsynced_files {
        int hard_link(const std::string&, const std::string&) override { return EPERM; }
    } files;
    two_versions at;
    at.document.reset();
    at.document = opened(at.folder.path(), at.loop, files);
    ASSERT_TRUE(safe_write_bytes(at.file, at.theirs, files));
    ASSERT_TRUE(at.document->apply(add_row("more")));
    ASSERT_TRUE(at.document->save_now());
    EXPECT_EQ(at.document->conflicts().size(), 1U);
    EXPECT_EQ(file_bytes(at.folder / "chron data conflict 1.plist"), at.theirs);
    EXPECT_NE(file_bytes(at.file).find("more"), std::string::npos);
    at.document.reset();
}

TEST(conflict, only_another_content_is_one) {
    two_versions at;
    // A file written anew with the same bytes, and one written in place with its size and time as before.
    ASSERT_TRUE(safe_write_bytes(at.file, file_bytes(at.file)));
    ASSERT_TRUE(at.document->apply(add_row("more")));
    ASSERT_TRUE(at.document->save_now());
    EXPECT_TRUE(at.document->conflicts().empty());

    const auto time = std::filesystem::last_write_time(at.file);
    std::string changed = file_bytes(at.file);
    changed.replace(changed.find("ours"), 4, "Ours");
    put_file(at.file, changed);
    std::filesystem::last_write_time(at.file, time);
    ASSERT_TRUE(save_save_time(at.folder.path(), "somebody else"));
    ASSERT_TRUE(at.document->apply(add_row("again")));
    ASSERT_TRUE(at.document->save_now());
    EXPECT_EQ(at.document->conflicts().size(), 1U) << "the saver's identity raised the doubt";
    EXPECT_TRUE(at.has("Ours"));

    put_file(at.folder / "chron data header.plist", write_property_list(property_dictionary()));
    ASSERT_TRUE(at.document->apply(add_row("header")));
    ASSERT_TRUE(at.document->save_now());
    EXPECT_TRUE(file_exists(at.folder / "chron data header conflict 1.plist"));
}

// Another program puts its file in place before a given call of a save.
TEST(conflict, what_comes_between_the_steps_of_a_save_is_kept_too) {
    bool is_over = false;
    for (int before = 1; before < 200 && !is_over; ++before) {
        two_versions at;
        testing::unsynced_files others;
        ASSERT_TRUE(at.document->apply(add_row("mine")));
        const int first = at.files.calls();
        at.files.set_fault([&](int call) {
            if (call == first + before) (void)safe_write_bytes(at.file, at.theirs, others);
            return 0;
        });
        ASSERT_TRUE(at.document->save_now()) << before;
        is_over = at.files.calls() < first + before;
        at.document.reset();
        if (is_over) break;
        EXPECT_TRUE(at.has("theirs")) << "before call " << before;
        EXPECT_TRUE(at.has("mine")) << "before call " << before;
    }
    EXPECT_TRUE(is_over);
}

TEST(conflict, a_reader_becomes_the_writer_when_the_writer_is_gone_or_by_a_persons_word) {
    for (const bool by_word : {false, true}) {
        two_versions at;
        auto& writer = at.document;
        auto reader = opened(at.folder.path(), at.loop, at.files);
        EXPECT_TRUE(reader->is_held_elsewhere());
        ASSERT_TRUE(writer->apply(add_row("unsaved")));
        const auto refused = reader->try_to_write();
        ASSERT_FALSE(refused);
        EXPECT_NE(refused.message().find("process"), std::string::npos);
        if (!by_word) writer.reset();
        int reloaded = 0;
        const auto counting = reader->changed.connect(
            [&](const change_set& all) { reloaded += all.kinds == change_set::everything; });
        const auto taken = reader->try_to_write(by_word);
        ASSERT_TRUE(taken) << taken.message();
        EXPECT_EQ(reloaded, 1);
        EXPECT_EQ(reader->timeline().rows().size(), 2U) << "what was done meanwhile is there";
        ASSERT_TRUE(reader->apply(add_row("second")));
        if (by_word) {
            const auto lost = writer->apply(add_row("too late"));
            ASSERT_FALSE(lost);
            EXPECT_NE(lost.message().find("taken over"), std::string::npos);
            EXPECT_TRUE(writer->is_read_only());
            writer.reset();
        }
        ASSERT_TRUE(reader->save_now());
        EXPECT_TRUE(reader->conflicts().empty());
        reader.reset();
        EXPECT_FALSE(file_exists(at.folder / "chron data writer.plist"));
        EXPECT_EQ(opened(at.folder.path(), at.loop)->timeline().rows().size(), 3U);
    }
}

TEST(conflict, where_the_kernel_knows_no_locks_the_name_of_a_living_process_keeps_others_out) {
    struct : testing::unsynced_files {
        int lock(int) override { return ENOLCK; }
    } files;
    const temporary_folder folder;
    simulated_run_loop loop;
    auto writer = opened(folder.path(), loop, files);
    ASSERT_TRUE(writer->apply(add_row("R")));
    const std::string lock_file = folder / "chron data writer.plist";
    const std::string ours = file_bytes(lock_file);
    EXPECT_TRUE(opened(folder.path(), loop, files)->is_read_only());
    writer.reset();
    // Left by a process of the boot before this one.
    std::string earlier = ours;
    const auto boot = earlier.find("<string>", earlier.find("<key>boot</key>"));
    earlier.replace(boot, std::string("<string>").size(), "<string>before ");
    put_file(lock_file, earlier);
    EXPECT_FALSE(opened(folder.path(), loop, files)->is_read_only());
}

// As on a volume whose locks do not work.
struct lockless_files : testing::unsynced_files {
    int lock(int) override { return 0; }
};

TEST(conflict, journals_of_two_writers_at_once_are_not_mixed_and_both_kept) {
    for (const bool first_saves : {false, true}) {
        temporary_folder folder;
        simulated_run_loop loop;
        lockless_files files;
        auto first = opened(folder.path(), loop, files);
        ASSERT_TRUE(first->apply(add_row("common")));
        auto second = opened(folder.path(), loop, files);
        ASSERT_TRUE(second->apply(add_row("second")));
        for (int n = 0; n < 3; ++n) ASSERT_TRUE(first->apply(add_row("first" + std::to_string(n))));
        if (first_saves) {
            ASSERT_TRUE(first->save_now());
        }
        const temporary_folder grave;
        std::filesystem::copy(folder.path(), grave / "copy");
        const auto found = opened(grave / "copy", loop);
        ASSERT_EQ(found->conflicts().size(), 1U);
        EXPECT_NE(file_bytes(found->conflicts()[0].kept_as).find(first_saves ? "second" : "first2"),
                  std::string::npos);
        EXPECT_EQ(found->timeline().rows().size(), first_saves ? 4U : 2U);
    }
}

}  // namespace
}  // namespace vistels
