// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/timeline_document.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

#include "support/failing_files.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

using testing::clip_of;
using testing::failing_files;
using testing::file_bytes;
using testing::qualifier_of;
using testing::row_of;
using testing::state_text;
using testing::temporary_folder;

std::unique_ptr<timeline_document> opened(const std::string& folder, run_loop& loop,
                                          file_system& files = machine_files()) {
    auto document = timeline_document::open(folder, loop, files);
    EXPECT_TRUE(document) << document.message();
    return document ? std::move(document).value() : nullptr;
}

timeline_edit add_row(const std::string& uuid) {
    return {"Row", "", {operation::insert_row{99, row_of(uuid, uuid)}}};
}

timeline_edit add_clip(const std::string& uuid, double start) {
    return {"Clip", "", {operation::insert_clip{shared_text("R"), clip_of(uuid, start, start + 1)}}};
}

std::string state_of(const timeline_document& document) {
    sxy_DATA_root copy = document.timeline();
    return state_text(copy);
}

// What a process that died now would leave: the folder as it is, opened by another program.
std::string state_after_death(const std::string& folder) {
    const temporary_folder grave;
    std::filesystem::copy(folder, grave / "copy", std::filesystem::copy_options::recursive);
    simulated_run_loop loop;
    const auto document = opened(grave / "copy", loop);
    return document ? state_of(*document) : std::string();
}

TEST(document, every_applied_edit_survives_death_before_and_after_saves) {
    const temporary_folder folder;
    simulated_run_loop loop;
    {
        const auto document = opened(folder.path(), loop);
        testing::random_edits next(3);
        ASSERT_TRUE(document->apply(add_row("R")));
        for (int n = 0; n < 120; ++n) {
            auto edit = next.make(document->timeline());
            if (std::holds_alternative<operation::begin_clip>(edit.operations.front())) continue;
            (void)document->apply(std::move(edit));
            if (n % 30 == 29) {
                EXPECT_TRUE(document->save_now());
            }
            if (n % 7 == 0 && document->timeline().live_clips().empty()) {
                ASSERT_EQ(state_after_death(folder.path()), state_of(*document)) << n;
            }
        }
    }
    const auto names = names_in_folder(folder.path());
    for (const auto& name : names)
        EXPECT_EQ(name.find("journal"), std::string::npos) << "left after closing: " << name;
}

TEST(document, saves_one_second_after_the_last_edit_and_ten_after_the_first) {
    const temporary_folder folder;
    simulated_run_loop loop;
    const auto document = opened(folder.path(), loop);
    int saves = 0;
    const auto counting = document->saved.connect([&](const std::string& fault) {
        EXPECT_EQ(fault, "");
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
    EXPECT_NE(document->messages()[1].find("conflict"), std::string::npos);
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

TEST(document, a_damaged_timeline_is_not_opened_and_not_overwritten) {
    const temporary_folder folder;
    testing::put_file(folder / "chron data.plist", "<plist");
    simulated_run_loop loop;
    const auto document = timeline_document::open(folder.path(), loop);
    ASSERT_FALSE(document);
    EXPECT_NE(document.message().find(folder / "chron data.plist"), std::string::npos);
    EXPECT_EQ(file_bytes(folder / "chron data.plist"), "<plist");
}

// Codes and saves with files that end the process before a given call; tells each edit on record by a byte.
[[noreturn]] void code_until_death(const std::string& folder, int before_call, int acknowledge) {
    failing_files files;
    files.set_fault([before_call](int call) {
        if (call == before_call) ::_exit(9);
        return 0;
    });
    simulated_run_loop loop;
    auto document = timeline_document::open(folder, loop, files);
    if (!document) ::_exit(1);
    for (int n = 0; n < 6; ++n) {
        const auto edit = n == 0 ? add_row("R") : add_clip("c" + std::to_string(n), n);
        if (!document.value()->apply(edit)) ::_exit(2);
        if (::write(acknowledge, "x", 1) != 1) ::_exit(3);
        if (n % 2 == 1 && !document.value()->save_now()) ::_exit(4);
    }
    document.value().reset();
    ::_exit(0);
}

TEST(document, a_process_that_dies_before_any_file_call_loses_no_edit_on_record) {
    bool finished = false;
    for (int before = 1; before < 400 && !finished; ++before) {
        const temporary_folder folder;
        int ends[2];
        ASSERT_EQ(::pipe(ends), 0);
        const pid_t child = ::fork();
        if (child == 0) code_until_death(folder / "t", before, ends[1]);
        ::close(ends[1]);
        std::size_t on_record = 0;
        for (char byte; ::read(ends[0], &byte, 1) == 1;) ++on_record;
        ::close(ends[0]);
        int status = 0;
        ASSERT_EQ(::waitpid(child, &status, 0), child);
        ASSERT_TRUE(WIFEXITED(status) && (WEXITSTATUS(status) == 9 || WEXITSTATUS(status) == 0))
            << WEXITSTATUS(status);
        finished = WEXITSTATUS(status) == 0;
        simulated_run_loop loop;
        const auto document = opened(folder / "t", loop);
        ASSERT_TRUE(document);
        const std::size_t found = document->timeline().rows().size() + document->timeline().clip_count();
        EXPECT_GE(found, on_record) << "died before call " << before;
        EXPECT_LE(found, on_record + 1) << "died before call " << before;
    }
    EXPECT_TRUE(finished);
}

}  // namespace
}  // namespace vistels
