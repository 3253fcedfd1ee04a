// SPDX-License-Identifier: GPL-3.0-or-later
#include "support/failure_runs.h"

namespace vistels {
namespace {

using testing::acknowledged_by_child;
using testing::died;
using testing::failure_run;
using testing::opened;
using testing::rows_text;
using testing::temporary_folder;

constexpr std::size_t edits_a_save = 3;

// Does the edits one after another with a save now and then; the document is closed properly at the end.
int code_and_save(const std::string& folder, file_system& files, const std::vector<timeline_edit>& edits,
                  const std::function<void()>& acknowledge) {
    simulated_run_loop loop;
    auto document = timeline_document::open(folder, loop, files);
    if (!document) return 1;
    for (std::size_t n = 0; n < edits.size(); ++n) {
        if (!document.value()->apply(edits[n])) return 2;
        acknowledge();
        if (n % edits_a_save == edits_a_save - 1 && !document.value()->save_now()) return 3;
    }
    return 0;
}

int open_and_close(const std::string& folder, file_system& files) {
    simulated_run_loop loop;
    return timeline_document::open(folder, loop, files) ? 0 : 1;
}

std::size_t calls_of(const std::function<void(file_system& files)>& work) {
    testing::unsynced_files files;
    work(files);
    return static_cast<std::size_t>(files.calls());
}

// The death of a process that recovers what another one left, before each of its calls.
void kill_the_recovery(const std::string& left, const std::vector<std::string>& states, std::size_t on_record,
                       failure_run& run) {
    std::size_t calls = 0;
    {
        const temporary_folder copy;
        std::filesystem::copy(left, copy / "t");
        calls = calls_of([&](file_system& files) { open_and_close(copy / "t", files); });
    }
    const std::size_t step = failure_run::is_full() ? 1 : 1 + run.below(calls);
    for (std::size_t before = step; before <= calls; before += step) {
        const temporary_folder copy;
        std::filesystem::copy(left, copy / "t");
        int ended = 0;
        acknowledged_by_child(
            [&](const auto&) {
                testing::unsynced_files files;
                testing::die_before(files, before);
                return open_and_close(copy / "t", files);
            },
            ended);
        ASSERT_TRUE(ended == died || ended == 0) << ended;
        const std::string found = testing::rows_opened_in(copy / "t");
        EXPECT_TRUE(found == states[on_record] || found == states[std::min(on_record + 1, states.size() - 1)])
            << "the recovery died before call " << before << ", after " << on_record << " edits:\n"
            << found;
    }
}

TEST(failures, killed_before_every_call_of_edits_and_saves_and_again_while_recovering) {
    const auto edits = testing::scripted_edits();
    const auto states = testing::states_of(edits);
    failure_run run("killed before every call", 80);
    std::size_t calls = 0;
    {
        const temporary_folder folder;
        calls = calls_of([&](file_system& files) { code_and_save(folder / "t", files, edits, [] {}); });
    }
    for (const std::size_t before : run.order(calls)) {
        if (!run.next()) break;
        SCOPED_TRACE("killed before call " + std::to_string(before + 1));
        const temporary_folder folder;
        int ended = 0;
        const std::size_t on_record = acknowledged_by_child(
            [&](const auto& acknowledge) {
                testing::unsynced_files files;
                testing::die_before(files, before + 1);
                return code_and_save(folder / "t", files, edits, acknowledge);
            },
            ended);
        ASSERT_TRUE(ended == died || ended == 0) << ended;
        if (!is_folder(folder / "t")) continue;  // before there was anything
        kill_the_recovery(folder / "t", states, on_record, run);
        if (::testing::Test::HasFatalFailure()) return;
        const std::string found = testing::rows_opened_in(folder / "t");
        EXPECT_TRUE(found == states[on_record] || found == states[std::min(on_record + 1, states.size() - 1)])
            << on_record << " edits were on record, found:\n"
            << found;
    }
}

// Random edits of what is there, until the end comes from outside or before a call.
int edit_at_random(const std::string& folder, unsigned seed, std::size_t dies_before,
                   const std::function<void()>& acknowledge) {
    testing::unsynced_files files;
    if (dies_before > 0) testing::die_before(files, dies_before);
    simulated_run_loop loop;
    auto opening = timeline_document::open(folder, loop, files);
    if (!opening) return 1;
    auto& document = *opening.value();
    testing::random_edits next(seed, false);
    for (unsigned n = 0; n < 3000; ++n) {
        if (document.apply(next.make(document.timeline()))) acknowledge();
        const unsigned luck = (n * 2654435761U + seed) >> 8U;
        if (luck % 13 == 0) document.save_soon();
        if (luck % 29 == 0 && !document.save_now()) return 3;
        loop.run_posted();
    }
    return 0;
}

timeline_snapshot state_of(const sxy_DATA_root& timeline) {
    return {timeline.uuid(), timeline.description(), timeline.kept(), timeline.rows(), {}, timeline.tags()};
}

// The state after so many of the same random edits, and the one after one more.
std::pair<std::string, std::string> expected_after(const timeline_snapshot& from, unsigned seed,
                                                   std::size_t edits) {
    sxy_DATA_root timeline(from);
    testing::random_edits next(seed, false);
    std::string before;
    for (unsigned n = 0; n < 3000; ++n) {
        if (edits == 0 && before.empty()) before = rows_text(timeline);
        change_set touched;
        if (!apply_edit(timeline, next.make(timeline), touched)) continue;
        if (edits == 0) break;
        --edits;
    }
    if (before.empty()) before = rows_text(timeline);
    return {before, rows_text(timeline)};
}

TEST(failures, killed_at_random_moments_loses_no_acknowledged_edit) {
    constexpr std::size_t kills_a_folder = 20;
    failure_run run("killed at random", 200, 10'000);
    std::size_t kills = 0;
    std::size_t acknowledged = 0;
    for (bool goes_on = true; goes_on;) {
        const temporary_folder folder;
        simulated_run_loop loop;
        testing::unsynced_files files;
        timeline_snapshot before = state_of(opened(folder / "t", loop, files)->timeline());
        for (std::size_t kill = 0; kill < kills_a_folder && goes_on; ++kill) {
            goes_on = run.next();
            if (!goes_on) break;
            const auto seed = static_cast<unsigned>(run.random()());
            const std::size_t after = run.below(60);
            const std::size_t calls = run.below(20'000);
            const bool by_signal = run.below(2) == 0;
            int ended = 0;
            const std::size_t on_record = acknowledged_by_child(
                [&](const auto& acknowledge) {
                    return edit_at_random(folder / "t", seed, by_signal ? 0 : 1 + calls % 400, acknowledge);
                },
                ended,
                by_signal ? [&](std::size_t count) {
                    if (count < after) return false;
                    for (std::size_t n = 0; n < calls; ++n) (void)::getppid();  // somewhere in what follows
                    return true;
                } : std::function<bool(std::size_t)>());
            ASSERT_EQ(ended, died);
            const auto document = opened(folder / "t", loop, files);
            ASSERT_TRUE(document);
            EXPECT_TRUE(document->conflicts().empty());
            const auto expected = expected_after(before, seed, on_record);
            const std::string found = rows_text(document->timeline());
            ASSERT_TRUE(found == expected.first || found == expected.second)
                << "kill " << kills << " after " << on_record << " edits, seed of the edits " << seed;
            before = state_of(document->timeline());
            ++kills;
            acknowledged += on_record;
        }
    }
    std::printf("failures: %zu kills, %zu acknowledged edits, none lost\n", kills, acknowledged);
}

}  // namespace
}  // namespace vistels
