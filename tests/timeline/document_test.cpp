// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/files/timeline_document.h"

#include <gtest/gtest.h>

#include <fcntl.h>

#include <chrono>
#include <filesystem>

#include "support/failing_files.h"
#include "support/opened_timeline.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "util/checksum.h"
#include "util/property_list.h"
#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

using testing::add_row;
using testing::clip_of;
using testing::failing_files;
using testing::file_bytes;
using testing::opened;
using testing::qualifier_of;
using testing::state_text;
using testing::temporary_folder;

timeline_edit add_clip(const std::string& uuid, double start) {
    return {"Clip", "", {operation::insert_clip{shared_text("R"), clip_of(uuid, start, start + 1)}}};
}

std::string state_of(const timeline_document& document) {
    return state_text(document.timeline());
}

// What a process that died now would leave: the folder as it is, opened by another program.
std::string state_after_death(const std::string& folder) {
    const temporary_folder grave;
    std::filesystem::copy(folder, grave / "copy", std::filesystem::copy_options::recursive);
    simulated_run_loop loop;
    const auto document = opened(grave / "copy", loop);
    return document ? state_of(*document) : std::string();
}

TEST(document, stamps_edits_and_tombstones_with_the_author_and_records_it) {
    const temporary_folder folder;
    simulated_run_loop loop;
    const auto document = opened(folder.path(), loop);
    document->set_author("Analyst");
    ASSERT_TRUE(document->apply(add_row("R")));
    ASSERT_TRUE(document->apply(add_clip("1", 1)));
    ASSERT_TRUE(document->apply(add_clip("2", 2)));
    const auto before = state_of(*document);
    timeline_edit made;
    timeline_edit inverse;
    const auto recording = document->edited.connect([&](const auto& edit, const auto& back) {
        made = edit;
        inverse = back;
    });
    constexpr double year_2020 = 1.6e9;
    ASSERT_TRUE(document->apply({"Edit", "", {operation::insert_qualifier{"1", 0, qualifier_of("q", "Q")}}}));
    const auto info = document->timeline().find_clip("1")->clip->edit_info();
    EXPECT_EQ(info.author, "Analyst");
    EXPECT_GT(info.edit_seconds.value_or(0), year_2020);
    ASSERT_TRUE(made.stamp);
    EXPECT_EQ(made.stamp->edit_seconds, info.edit_seconds);
    EXPECT_EQ(state_after_death(folder.path()), state_of(*document));
    document->set_author("Somebody else");
    ASSERT_TRUE(document->apply(inverse));
    EXPECT_EQ(state_of(*document), before);
    ASSERT_TRUE(document->apply(inverse));  // done again
    EXPECT_EQ(document->timeline().find_clip("1")->clip->edit_info(), info);

    ASSERT_TRUE(
        document->apply(plan_delete_clips(document->timeline(), {"1"}, "", info.edit_seconds.value())));
    ASSERT_TRUE(document->apply(plan_delete_clips(document->timeline(), {"2"}, "Her", year_2020)));
    const auto tombstones = document->timeline().rows().front()->deleted_clips();
    ASSERT_EQ(tombstones.size(), 2U);
    EXPECT_EQ(tombstones[0].edit_author + " " + tombstones[1].edit_author, "Somebody else Her");
}

TEST(document, saves_one_second_after_the_last_edit_and_ten_after_the_first) {
    const temporary_folder folder;
    simulated_run_loop loop;
    auto document = opened(folder.path(), loop);
    int saves = 0;
    const auto counting = document->saved.connect([&](const failure& fault) {
        EXPECT_FALSE(fault) << fault.message();
        ++saves;
    });
    ASSERT_TRUE(document->apply(add_row("R")));
    loop.advance(0.99);
    EXPECT_EQ(saves, 0);
    for (int n = 0; n < 11; ++n) {
        ASSERT_TRUE(document->apply(add_clip("c" + std::to_string(n), n)));
        loop.advance(0.9);
    }
    EXPECT_TRUE(document->save_now());
    EXPECT_EQ(saves, 1) << "when ten seconds were over";
    EXPECT_FALSE(document->has_unsaved_edits());
    ASSERT_TRUE(document->apply(add_clip("last", 1)));
    document.reset();
    for (const auto& name : names_in_folder(folder.path()))
        EXPECT_EQ(name.find("journal"), std::string::npos) << "left after closing: " << name;
}

TEST(document, a_growing_clip_is_finished_at_the_last_noted_time_whatever_came_after) {
    for (const std::string after : {"nothing", "save before", "save behind", "closing"}) {
        const temporary_folder folder;
        simulated_run_loop loop;
        auto document = opened(folder.path(), loop);
        ASSERT_TRUE(document->apply(add_row("R")));
        ASSERT_TRUE(
            document->apply({"Live", "", {operation::begin_clip{shared_text("R"), clip_of("L", 10, 10)}}}));
        if (after == "save before") {
            ASSERT_TRUE(document->save_now());
        }
        ASSERT_TRUE(
            document->apply({"Stamp", "", {operation::insert_qualifier{"L", 0, qualifier_of("Q", "Goal")}}}));
        ASSERT_TRUE(document->note_time(12.25));
        if (after == "save behind") {
            ASSERT_TRUE(document->save_now());
        }
        if (after == "closing") document.reset();
        const std::string state = state_after_death(folder.path());
        EXPECT_NE(state.find(R"("uuid":"L","time_start":10.0,"time_end":12.25)"), std::string::npos) << after;
        EXPECT_NE(state.find(R"("name":"Goal")"), std::string::npos) << after;
    }
}

TEST(document, a_change_from_outside_is_a_conflict_and_both_are_kept) {
    const temporary_folder folder;
    simulated_run_loop loop;
    {
        const auto document = opened(folder.path(), loop);
        ASSERT_TRUE(document->apply(add_row("R")));
        ASSERT_TRUE(document->save_now());
        ASSERT_TRUE(document->apply(add_clip("unsaved", 1)));
        std::filesystem::copy(folder.path(), folder / "died");
    }
    testing::put_file(folder / "died/chron data.plist", file_bytes(folder / "chron data.plist") + "\n");
    const auto document = opened(folder / "died", loop);
    ASSERT_EQ(document->messages().size(), 2U);
    EXPECT_NE(document->messages()[1].message().find("conflict"), std::string::npos);
    EXPECT_EQ(document->recovered_edits(), 0U);
    bool kept = false;
    for (const auto& name : names_in_folder(folder / "died")) kept |= name.ends_with(" conflict");
    EXPECT_TRUE(kept);
}

TEST(document, a_torn_or_changed_journal_loses_nothing_before_the_damage) {
    const temporary_folder folder;
    simulated_run_loop loop;
    const auto document = opened(folder.path(), loop);
    ASSERT_TRUE(document->apply(add_row("R")));
    std::vector<std::string> states{state_of(*document)};
    std::vector<std::size_t> sizes{file_bytes(folder / "chron data journal 1").size()};
    for (int n = 0; n < 5; ++n) {
        ASSERT_TRUE(document->apply(add_clip("c" + std::to_string(n), n)));
        states.push_back(state_of(*document));
        sizes.push_back(file_bytes(folder / "chron data journal 1").size());
    }
    const std::string whole = file_bytes(folder / "chron data journal 1");
    for (std::size_t edits = 0; edits < sizes.size(); ++edits) {
        const std::size_t end = edits + 1 < sizes.size() ? sizes[edits + 1] - 1 : sizes[edits];
        const temporary_folder torn;
        testing::put_file(torn / "chron data.plist", file_bytes(folder / "chron data.plist"));
        testing::put_file(torn / "chron data journal 1", whole.substr(0, end));
        EXPECT_EQ(opened(torn.path(), loop)->timeline().clip_count(), edits) << "torn within the next";
    }
    std::string changed = whole;
    changed[sizes[2] + 40] ^= 1;
    const temporary_folder damaged;
    testing::put_file(damaged / "chron data.plist", file_bytes(folder / "chron data.plist"));
    testing::put_file(damaged / "chron data journal 1", changed);
    const auto rest = opened(damaged.path(), loop);
    EXPECT_EQ(rest->timeline().clip_count(), 2U);
    ASSERT_EQ(rest->messages().size(), 2U);
    EXPECT_EQ(file_bytes(damaged / "chron data journal 1 conflict"), changed);
    ASSERT_TRUE(rest->apply(add_clip("new", 9)));
    EXPECT_EQ(state_after_death(damaged.path()), state_of(*rest)) << "old numbers were mixed with new ones";
}

TEST(document, an_edit_that_cannot_be_recorded_is_refused_and_the_next_one_is_not_harmed) {
    const temporary_folder folder;
    simulated_run_loop loop;
    failing_files files;
    const auto document = opened(folder.path(), loop, files);
    ASSERT_TRUE(document->apply(add_row("R")));
    const auto before = state_of(*document);
    files.set_fault([](int) { return ENOSPC; });
    const auto refused = document->apply(add_clip("lost", 1));
    ASSERT_FALSE(refused);
    EXPECT_NE(refused.message().find("chron data journal"), std::string::npos);
    EXPECT_EQ(state_of(*document), before);
    EXPECT_FALSE(document->save_now());
    files.set_fault([](int) { return 0; });
    ASSERT_TRUE(document->apply(add_clip("kept", 2)));
    EXPECT_EQ(state_after_death(folder.path()), state_of(*document));
    EXPECT_TRUE(document->save_now());
    EXPECT_EQ(state_after_death(folder.path()), state_of(*document));
}

// The end of its line is all that was not written of the refused edit.
TEST(document, a_refused_edit_does_not_come_back_with_the_next_line) {
    struct : testing::unsynced_files {
        bool is_full = false;
        int write(int descriptor, std::string_view bytes, std::size_t& written) override {
            if (!is_full) return unsynced_files::write(descriptor, bytes, written);
            if (bytes.size() <= 1) return ENOSPC;
            return unsynced_files::write(descriptor, bytes.substr(0, bytes.size() - 1), written);
        }
    } files;
    const temporary_folder folder;
    simulated_run_loop loop;
    const auto document = opened(folder.path(), loop, files);
    ASSERT_TRUE(document->apply(add_row("R")));
    ASSERT_TRUE(document->apply({"Live", "", {operation::begin_clip{shared_text("R"), clip_of("L", 1, 1)}}}));
    files.is_full = true;
    ASSERT_FALSE(document->apply(add_clip("refused", 2)));
    files.is_full = false;
    ASSERT_TRUE(document->note_time(5));
    const std::string found = state_after_death(folder.path());
    EXPECT_EQ(found.find("refused"), std::string::npos);
    EXPECT_NE(found.find("\"time_end\":5"), std::string::npos) << "the line after it is read";
}

TEST(document, one_writes_and_a_second_one_reads_until_the_first_is_gone) {
    const temporary_folder folder;
    simulated_run_loop loop;
    auto writer = opened(folder.path(), loop);
    ASSERT_TRUE(writer->apply(add_row("R")));
    const auto names = names_in_folder(folder.path());
    auto reader = opened(folder.path(), loop);
    EXPECT_EQ(reader->timeline().rows().size(), 1U) << "what is in the journal is seen";
    const auto refused = reader->apply(add_clip("c", 1));
    ASSERT_FALSE(refused);
    EXPECT_NE(refused.message().find(folder.path()), std::string::npos);
    EXPECT_FALSE(reader->save_now());
    reader.reset();
    EXPECT_EQ(names_in_folder(folder.path()), names) << "a reader leaves no trace";
    ASSERT_TRUE(writer->apply(add_clip("c", 1)));
    writer.reset();
    EXPECT_TRUE(opened(folder.path(), loop)->apply(add_clip("d", 1)));

    testing::put_file(folder / "chron data writer.plist",
                      "<plist><dict><key>machine</key><string>elsewhere</string></dict></plist>");
    EXPECT_FALSE(opened(folder.path(), loop)->apply(add_clip("e", 1))) << "another machine may be writing";
}

// What broken-off saves left of "chron data.plist", by what the header says of it.
struct strays {
    temporary_folder folder;
    simulated_run_loop loop;
    std::vector<std::string> saved;  // the file's content after each save
    const std::string path = folder / "t/chron data.plist";

    strays() {
        const auto document = opened(folder / "t", loop);
        EXPECT_TRUE(document->apply(add_row("R")));
        for (const char* clip : {"a", "b", "c"}) {
            EXPECT_TRUE(document->apply(add_clip(clip, 1)));
            EXPECT_TRUE(document->save_now());
            saved.push_back(file_bytes(path));
        }
    }
    void put(const std::string& mark, const std::string& bytes, int days) const {
        testing::put_file(path + mark + "7", bytes);
        std::filesystem::last_write_time(path + mark + "7", std::filesystem::file_time_type::clock::now() -
                                                                std::chrono::hours(24 * days + 1));
    }
    std::size_t clips_found() {
        const auto document = opened(folder / "t", loop);
        return document ? document->timeline().clip_count() : 0;
    }
};

TEST(document, its_header_names_the_content_saved_last_and_the_one_before) {
    const strays at;
    const auto header = load_timeline_header(at.folder / "t");
    EXPECT_EQ(header.data, content_mark_of(at.saved[2]));
    EXPECT_EQ(header.data_before, content_mark_of(at.saved[1]));
    const auto stored = read_dictionary_or_empty(at.folder / "t/chron data header.plist");
    EXPECT_EQ(stored.integer("data size"), static_cast<std::int64_t>(at.saved[2].size()));
    EXPECT_EQ(stored.text_or_empty("data hash"), checksum_text(checksum(at.saved[2])));
    // Saved by itself, it names the file that it is saved beside.
    testing::put_file(at.path, at.saved[0]);
    timeline_header other = header;
    other.data = {5, 5};
    ASSERT_TRUE(save_timeline_header(other, at.folder / "t"));
    EXPECT_EQ(load_timeline_header(at.folder / "t").data, content_mark_of(at.saved[0]));
    EXPECT_EQ(load_timeline_header(at.folder / "t").data_before, content_mark_of(at.saved[2]));
}

TEST(document, a_copy_comes_back_only_as_what_was_saved_last_or_before) {
    const struct {
        const char* what;
        const char* mark;
        std::size_t save;  // whose content the copy has
        int days_old;
        std::size_t clips;
    } cases[] = {
        {"the last, moved aside by a save, found after a holiday", " <previous> ", 2, 20, 3},
        {"the one before", " <previous> ", 1, 20, 2},
        {"an older one, of a save that was killed", " <previous> ", 0, 3, 0},
        {"an older one", " temp file ", 0, 0, 0},
        {"the last, beside a file that a person took away", " temp file ", 2, 3, 0},
        {"an older one of three days, after that", " temp file ", 0, 3, 0},
        {"the last, just now", " temp file ", 2, 0, 3},
    };
    for (const auto& one : cases) {
        SCOPED_TRACE(one.what);
        strays at;
        std::filesystem::remove(at.path);
        at.put(one.mark, at.saved[one.save], one.days_old);
        EXPECT_EQ(at.clips_found(), one.clips);
        const auto kept = read_file(at.folder / "t/chron data copy 1.plist");
        EXPECT_EQ(kept.ok(), one.clips == 0) << "kept aside, not thrown away";
        EXPECT_EQ(at.clips_found(), one.clips);
    }
}

// The file is in place, the header is not yet: then the file goes, and what it replaced is there.
TEST(document, a_save_that_died_between_file_and_header_is_judged_by_its_journal) {
    struct : testing::unsynced_files {
        std::string fails;
        int open(const std::string& path, int flags, int& descriptor) override {
            if (!fails.empty() && path.find(fails) != std::string::npos && (flags & O_CREAT)) return EIO;
            return unsynced_files::open(path, flags, descriptor);
        }
    } files;
    strays at;
    const temporary_folder grave;
    {
        const auto document = opened(at.folder / "t", at.loop, files);
        ASSERT_TRUE(document->apply(add_clip("d", 4)));
        files.fails = "chron data header.plist";
        ASSERT_FALSE(document->save_now());
        std::filesystem::copy(at.folder / "t", grave / "t");
        files.fails.clear();
    }
    EXPECT_EQ(load_timeline_header(grave / "t").data, content_mark_of(at.saved[2]));
    const std::string path = grave / "t/chron data.plist";
    const std::string coming = file_bytes(path);
    ASSERT_NE(coming, at.saved[2]);
    for (const auto& [mark, bytes] : {std::pair{" <previous> ", at.saved[2]}, {" temp file ", coming}}) {
        const temporary_folder copy;
        std::filesystem::copy(grave / "t", copy / "t");
        std::filesystem::remove(copy / "t/chron data.plist");
        testing::put_file(copy / "t/chron data.plist" + mark + "7", bytes);
        EXPECT_EQ(opened(copy / "t", at.loop)->timeline().clip_count(), 4U) << mark;
    }
}

}  // namespace
}  // namespace vistels
