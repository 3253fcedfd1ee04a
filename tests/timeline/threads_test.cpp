// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "timeline/edits/timeline_edit.h"
#include "timeline/files/sxy_Save_Load.h"
#include "util/serial_queue.h"

namespace vistels {
namespace {

using testing::clip_of;
using testing::row_of;

constexpr const char* marker_row = "marker";

std::string text_of(const timeline_snapshot& snapshot) {
    return write_json(write_timeline(snapshot), json_layout::one_line);
}

// The revision's number is the name of a row, so that it is in the file and in every snapshot.
timeline_edit mark_edit(const sxy_DATA_root& timeline, int number) {
    const std::string name = std::to_string(number);
    if (!timeline.row(shared_text(marker_row))) {
        return {"", "", {operation::insert_row{0, row_of(marker_row, name)}}};
    }
    property_dictionary set;
    set.add("row_name", name);
    return {"", "", {operation::change_row{shared_text(marker_row), std::move(set), {}}}};
}

std::string marked(const std::vector<std::string>& row_names,
                   const std::map<std::string, std::string>& known) {
    for (const auto& name : row_names) {
        if (known.contains(name)) return name;
    }
    return {};
}

// Reads every value of a qualifier, a clip and a row as a view or a job would.
std::size_t walk(const qual_ITEM& item) {
    std::size_t sum = item.uuid().size() + item.name().str().size() + item.category().str().size();
    sum += item.time() >= 0 ? 1 : 0;
    sum += item.col() ? 1 : 0;
    return sum + item.real_local_time().size() + item.attributes().size();
}

std::size_t walk(const sxy_CLIP& clip) {
    std::size_t sum = clip.id().size() + (clip.secs_start() <= clip.secs_end() ? 1 : 0);
    sum += clip.row_category_in_clip().str().size() + clip.row_uuid_in_clip().str().size();
    sum += static_cast<std::size_t>(clip.stars()) + (clip.col() ? 1 : 0);
    sum += clip.type() == clip_type::normal ? 1 : 0;
    sum += clip.selected() ? 1 : 0;
    sum += clip.filtered_in() ? 1 : 0;
    const auto qualifiers = clip.qualifiers();
    for (const auto& item : *qualifiers) sum += walk(item);
    return sum;
}

std::size_t walk(const sxy_ROW& row) {
    std::size_t sum = row.name().size() + row.category().size() + row.uuid().str().size();
    sum += (row.col() ? 1 : 0) + (row.is_timer_row() ? 1 : 0) + row.deleted_clips().size();
    sum += static_cast<std::size_t>(row.height() + row.real_height().value_or(0));
    sum += row.compacted_rows().empty() ? 1 : 0;
    for (const auto& clip : row.clips()) sum += walk(*clip);
    if (!row.clips().empty()) {
        const auto& clip = *row.clips()[row.clips().size() / 2];
        sum += row.clips().position(clip) + row.clips().first_starting_at(clip.secs_start());
    }
    return sum;
}

// One thread edits; of each revision one saves, one reads the files that are replaced meanwhile, one walks
// the records and one sets what is shown of them. Every file that is read is one revision, whole.
class ThreadsTest : public ::testing::Test {
  protected:
    ThreadsTest() {
        change_set touched;
        timeline_edit many{"", "", {operation::insert_row{0, row_of("many", "many")}}};
        constexpr int clip_count = 700;
        for (int n = 0; n < clip_count; ++n) {
            many.operations.emplace_back(operation::insert_clip{
                shared_text("many"), clip_of("m" + std::to_string(n), n * 7 % clip_count, clip_count)});
        }
        EXPECT_TRUE(apply_edit(timeline_, many, touched));
    }

    void edit_all(int revision_count) {
        for (int number = 1; number <= revision_count; ++number) {
            change_set touched;
            // Edits that cannot be done are part of the mixture.
            (void)apply_edit(timeline_, next_.make(timeline_), touched);
            (void)apply_edit(timeline_, next_.make(timeline_), touched);
            ASSERT_TRUE(apply_edit(timeline_, mark_edit(timeline_, number), touched));
            auto snapshot = timeline_.snapshot();
            texts_[std::to_string(number)] = text_of(snapshot);
            post(std::move(snapshot));
        }
        saver_.drain();
        post_reading();  // the last one, now that it is there
        for (auto* queue : {&reader_, &walker_, &marker_}) queue->drain();
    }

    void post(timeline_snapshot snapshot) {
        post_reading();
        saver_.post([this, snapshot] {
            if (!save_timeline(snapshot, folder_.path(), files_)) ++failed_saves_;
        });
        marker_.post([snapshot, mark = texts_.size() % 2 == 0] {
            for (const auto& row : snapshot.rows) {
                for (const auto& clip : row->clips()) {
                    clip->set_selected(mark);
                    clip->set_filtered_in(!mark);
                }
            }
        });
        walker_.post([this, snapshot = std::move(snapshot)] {
            for (const auto& row : snapshot.rows) walked_ += walk(*row);
            for (const auto& live : snapshot.live_clips) walked_ += walk(*live.clip);
        });
    }

    void post_reading() {
        reader_.post([this] {
            auto names = read_row_names(folder_.path());
            auto loaded = load_timeline(folder_.path());
            if (names) read_names_.push_back(std::move(*names));
            if (loaded) read_.push_back(std::move(loaded).value().content);
        });
    }

    // Nothing waits for the disk.
    class unsynced_files : public file_system {
        int sync(int) override { return 0; }
        int sync_data(int) override { return 0; }
        int sync_folder(const std::string&) override { return 0; }
    };

    const testing::temporary_folder folder_;
    unsynced_files files_;
    sxy_DATA_root timeline_;
    testing::random_edits next_{23};
    std::map<std::string, std::string> texts_;  // by the number of the revision
    // Each of these by the work on one queue, until that is drained.
    std::vector<timeline_snapshot> read_;
    std::vector<std::vector<std::string>> read_names_;
    std::size_t walked_ = 0;
    int failed_saves_ = 0;
    serial_queue saver_{"saver"};
    serial_queue reader_{"reader"};
    serial_queue walker_{"walker"};
    serial_queue marker_{"marker"};
};

TEST_F(ThreadsTest, files_that_are_replaced_and_records_that_are_edited_are_read_whole) {
    constexpr int revision_count = 40;
    edit_all(revision_count);
    EXPECT_EQ(failed_saves_, 0);
    EXPECT_GT(walked_, 0U);
    ASSERT_FALSE(read_.empty());
    ASSERT_FALSE(read_names_.empty());
    for (const auto& names : read_names_) EXPECT_NE(marked(names, texts_), "");
    for (const auto& timeline : read_) {
        std::vector<std::string> names;
        for (const auto& row : timeline.rows) names.push_back(row->name());
        const auto number = marked(names, texts_);
        ASSERT_NE(number, "");
        ASSERT_EQ(text_of(timeline), texts_[number]) << "the file read is not revision " << number;
    }
    EXPECT_EQ(text_of(read_.back()), texts_[std::to_string(revision_count)]);
}

}  // namespace
}  // namespace vistels
