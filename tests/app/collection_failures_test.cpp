// SPDX-License-Identifier: GPL-3.0-or-later
// Changes of a collection, and of its timeline with it, on volumes that fail and lose power: both are found
// as they were before the change, or both as they are after it.
#include <atomic>

#include "app/event/collection_changes.h"
#include "app/event/offset_changes.h"
#include "support/failure_runs.h"
#include "support/power_loss.h"
#include "util/file_failures.h"
#include "util/safe_write.h"
#include "video/video_coll_LOAD.h"

namespace vistels {
namespace {

using testing::failing_files;
using testing::failure_run;
using testing::recording_files;
using testing::rest;
using testing::step;
using testing::temporary_folder;

constexpr std::size_t step_count = 12;

// The times of all clips, and the offsets of both vistels.
std::string state_of(const sxy_DATA_root& timeline, const video_collection_ROOT& collection) {
    std::string text;
    for (const auto& row : timeline.rows()) {
        for (const auto& clip : row->clips()) {
            text += clip->id() + " " + std::to_string(clip->secs_start()) + " " +
                    std::to_string(clip->secs_end()) + "\n";
        }
    }
    for (const auto& vistel : collection.vistels()) {
        text += vistel->uuid() + " " + std::to_string(vistel->manual_start_offset().value_or(0)) + "\n";
    }
    return text;
}

// What somebody finds who opens the folder.
std::string state_found_in(const std::string& folder) {
    simulated_run_loop loop;
    testing::unsynced_files files;
    const auto document = testing::opened(folder, loop, files);
    auto loaded = load_collection(folder);
    EXPECT_TRUE(loaded) << loaded.message();
    if (!document || !loaded) return {};
    collection_document collection(folder, loop, files);
    collection.take_up(std::move(loaded).value());
    collection.take_up_recovered(document->recovered_others());
    return state_of(document->timeline(), collection.record());
}

std::string state_left_in(const std::string& folder) {
    const temporary_folder grave;
    std::filesystem::copy(folder, grave / "t", std::filesystem::copy_options::recursive);
    return state_found_in(grave / "t");
}

// A volume on which the collection's record cannot be replaced.
class volume_without_collections : public testing::unsynced_files {
  public:
    int open(const std::string& path, int flags, int& descriptor) override {
        const bool is_refused = refuses && path_name(path).starts_with(collection_file_name) && flags != 0;
        return is_refused ? EACCES : testing::unsynced_files::open(path, flags, descriptor);
    }
    std::atomic<bool> refuses = false;
};

// A collection of two vistels and its timeline. Every second step changes both, by an offset.
class coded_collection {
  public:
    coded_collection(const std::string& folder, file_system& files) : collection(folder, loop_, files) {
        EXPECT_TRUE(make_folders(folder));
        property_array items;
        for (const char* uuid : {"A", "B"}) {
            property_dictionary item;
            item.add("UUID single video - g", uuid);
            item.add("Vistel name UUID - coll", *uuid == 'A' ? 1.0 : 2.0);
            items.emplace_back(std::move(item));
        }
        property_dictionary record;
        record.add("array video group items", std::move(items));
        EXPECT_TRUE(safe_write(path_join(folder, collection_file_name), record, files));
        document = testing::opened(folder, loop_, files);
        collection.take_up(load_collection(folder).value());
        collection.set_keeper(*document);
        changes = std::make_unique<collection_changes>(collection, *document);
        EXPECT_TRUE(document->apply({"Row", "", {operation::insert_row{0, testing::row_of("R", "R")}}}));
        EXPECT_TRUE(document->save_now());
    }
    result<void> make(std::size_t number) {
        const double seconds = static_cast<double>(number);
        if (number % 2 == 0)
            return changes->make(plan_offset(number % 4 == 0 ? "A" : "B", 1.5 * seconds + 1));
        return document->apply(
            {"Clip",
             "",
             {operation::insert_clip{shared_text("R"),
                                     testing::clip_of("c" + std::to_string(number), seconds, seconds + 1)}}});
    }
    std::string state() const { return state_of(document->timeline(), collection.record()); }

  private:
    simulated_run_loop loop_;

  public:
    std::unique_ptr<timeline_document> document;
    collection_document collection;
    std::unique_ptr<collection_changes> changes;
};

// The states before the first step and after each.
std::vector<std::string> all_states() {
    const temporary_folder folder;
    testing::unsynced_files files;
    coded_collection at(folder / "t", files);
    std::vector<std::string> states{at.state()};
    for (std::size_t number = 0; number < step_count; ++number) {
        EXPECT_TRUE(at.make(number));
        states.push_back(at.state());
    }
    return states;
}

// Goes on from step `done`; after one in three the collection is saved while the next is made, after another
// both are, and waited for.
void go_on(coded_collection& at, std::size_t& done, const std::vector<std::string>& states) {
    for (; done < step_count; ++done) {
        const auto made = at.make(done);
        const std::string now = at.state();
        if (now == states[done]) {
            EXPECT_FALSE(made);
            (void)at.collection.save_now();  // so that nothing writes any more
            return;                          // refused
        }
        ASSERT_EQ(now, states[done + 1]) << made.message();
        if (done % 3 == 1) at.collection.save_soon();
        if (done % 3 == 2) (void)at.document->save_now();
    }
}

TEST(failures, a_failing_call_leaves_collection_and_timeline_in_step) {
    const auto states = all_states();
    int calls = 0;
    {
        const temporary_folder folder;
        testing::unsynced_files files;
        coded_collection at(folder / "t", files);
        const int before = files.calls();
        std::size_t done = 0;
        go_on(at, done, states);
        calls = files.calls() - before;
    }
    failure_run run("a call of changes of a collection fails", 250);
    for (const std::size_t number : run.order(static_cast<std::size_t>(calls) * 4)) {
        if (!run.next()) return;
        const int error = number % 2 == 0 ? ENOSPC : EIO;
        const bool from_then_on = number / 2 % 2 == 1;
        SCOPED_TRACE("call " + std::to_string(number / 4 + 1) + (from_then_on ? " and all after it" : ""));
        const temporary_folder folder;
        testing::unsynced_files files;
        coded_collection at(folder / "t", files);
        const int first = files.calls() + static_cast<int>(number / 4) + 1;
        files.set_fault([=](int now) { return now == first || (from_then_on && now > first) ? error : 0; });
        std::size_t done = 0;
        go_on(at, done, states);
        files.set_fault({});
        ASSERT_EQ(state_left_in(folder / "t"), states[done]);
        ASSERT_TRUE(at.document->save_now());
        ASSERT_TRUE(at.collection.save_now());
        ASSERT_EQ(state_left_in(folder / "t"), states[done]);
        go_on(at, done, states);
        ASSERT_EQ(done, step_count);
        ASSERT_EQ(state_left_in(folder / "t"), states[done]);
    }
}

// The timeline's file would make the journal forget the change that the collection's file lacks; also when
// both are closed.
TEST(failures, a_collection_that_cannot_be_saved_keeps_the_timeline_from_being_saved) {
    const auto states = all_states();
    const temporary_folder folder;
    volume_without_collections files;
    for (const bool closes : {false, true}) {
        const std::string place = folder / (closes ? "closed" : "open");
        files.refuses = false;
        auto at = std::make_unique<coded_collection>(place, files);
        files.refuses = true;
        std::size_t done = 0;
        go_on(*at, done, states);
        ASSERT_EQ(done, step_count);
        EXPECT_NE(at->document->save_now().message().find(collection_file_name), std::string::npos);
        EXPECT_TRUE(at->document->has_unsaved_edits());
        EXPECT_EQ(state_left_in(place), states.back());
        if (closes) {
            at.reset();
            EXPECT_EQ(state_left_in(place), states.back());
            continue;
        }
        files.refuses = false;
        EXPECT_TRUE(at->document->save_now());
        EXPECT_EQ(load_collection(place).value().collection.find_vistel("A")->manual_start_offset(), 13);
        EXPECT_EQ(state_left_in(place), states.back());
    }
}

TEST(failures, lost_power_leaves_collection_and_timeline_in_step) {
    const auto states = all_states();
    const temporary_folder folder;
    recording_files files;
    {
        coded_collection at(folder / "t", files);
        files.note(step::kind::saved, 0);
        for (std::size_t number = 0; number < step_count; ++number) {
            ASSERT_TRUE(at.make(number));
            files.note(step::kind::edit, number + 1);
            if (number % 3 == 1) at.collection.save_soon();
            if (number % 3 != 2) continue;
            ASSERT_TRUE(at.document->save_now());
            files.note(step::kind::saved, number + 1);
        }
    }
    const auto steps = files.steps();
    std::size_t begun = 0;  // from where the collection and its timeline are there
    while (steps[begun].what != step::kind::saved) ++begun;
    failure_run run("power loss while a collection changes", 300);
    for (const std::size_t after_begun : run.order(steps.size() - begun)) {
        if (!run.next()) break;
        const auto at = testing::lose_power(steps, begun + 1 + after_begun);
        const std::size_t count = std::min<std::size_t>(at.unsynced_names.size(), 6);
        for (std::size_t subset = 0; subset < std::size_t{1} << count; ++subset) {
            for (const rest bytes : {rest::lost, rest::half, rest::whole, rest::zeros}) {
                if (!failure_run::is_full() && run.below(4) != 0) continue;
                const temporary_folder after;
                testing::put_folder(at, subset, bytes, after / "t");
                const std::string found = state_found_in(after / "t");
                const auto state = std::find(states.begin(), states.end(), found);
                const auto number = static_cast<std::size_t>(state - states.begin());
                ASSERT_TRUE(state != states.end() && number >= at.synced_edits && number <= at.edits + 1)
                    << "power lost after step " << begun + 1 + after_begun << ", names " << subset << ": "
                    << at.synced_edits << " to " << at.edits << " changes were to be found, not\n"
                    << found;
            }
        }
    }
}

}  // namespace
}  // namespace vistels
