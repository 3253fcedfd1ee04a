// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "support/timeline_builder.h"
#include "timeline/edits/timeline_edit.h"

namespace vistels {
namespace {

std::string text_of(const timeline_snapshot& snapshot) {
    return write_json(write_timeline(snapshot), json_layout::one_line);
}

struct revision {
    timeline_snapshot snapshot;
    std::string text;  // as the editing thread saw it
};

// Readers and a saver write revisions while the editor goes on: none of them may see a later edit, and the
// thread sanitizer may see no race.
TEST(SnapshotThreads, RevisionsStayAsTheyWereWhileTheEditorGoesOn) {
    constexpr std::size_t revision_count = 150;
    constexpr std::size_t reader_count = 3;
    std::vector<revision> revisions(revision_count);
    std::atomic<std::size_t> ready = 0;
    std::atomic<std::size_t> changed = 0;
    const auto read = [&](std::size_t reader) {
        for (std::size_t next = reader; next < revision_count; next += reader_count) {
            for (auto known = ready.load(); known <= next; known = ready.load()) ready.wait(known);
            if (text_of(revisions[next].snapshot) != revisions[next].text) ++changed;
            // An old revision must still be the same after many later edits.
            if (text_of(revisions[next / 2].snapshot) != revisions[next / 2].text) ++changed;
        }
    };
    std::vector<std::thread> readers;
    for (std::size_t n = 0; n < reader_count; ++n) readers.emplace_back(read, n);

    sxy_DATA_root timeline;
    testing::random_edits next(11);
    std::size_t largest = 0;
    for (auto& one : revisions) {
        for (int n = 0; n < 4; ++n) {
            change_set touched;
            // Edits that cannot be done are part of the mixture.
            static_cast<void>(apply_edit(timeline, next.make(timeline), touched));
        }
        one.snapshot = timeline.snapshot();
        one.text = text_of(one.snapshot);
        largest = std::max(largest, timeline.clip_count());
        ++ready;
        ready.notify_all();
    }
    for (auto& reader : readers) reader.join();
    EXPECT_EQ(changed, 0U);
    EXPECT_GT(largest, 3U);
}

}  // namespace
}  // namespace vistels
