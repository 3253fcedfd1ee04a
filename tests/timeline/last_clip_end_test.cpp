// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/files/last_clip_end.h"

#include <set>

#include "support/failing_files.h"
#include "support/opened_timeline.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

TEST(last_clip_end, is_what_looking_through_all_clips_finds_after_any_edit_and_its_undoing) {
    const testing::temporary_folder folder;
    testing::unsynced_files files;
    simulated_run_loop loop;
    const auto document = testing::opened(folder / "t", loop, files);
    ASSERT_TRUE(document);
    const last_clip_end followed(*document);
    timeline_edit taking_back;
    const auto noting = document->edited.connect(
        [&](const timeline_edit&, const timeline_edit& inverse) { taking_back = inverse; });
    std::set<double> ends;
    for (unsigned seed = 1; seed <= 6; ++seed) {
        testing::random_edits next(seed);
        for (int n = 0; n < 400; ++n) {
            if (!document->apply(next.make(document->timeline()))) continue;
            ASSERT_EQ(followed.seconds(), document->timeline().last_end())
                << "edit " << n << ", seed " << seed;
            ends.insert(followed.seconds());
            if (n % 3 != 0) continue;
            ASSERT_TRUE(document->apply(timeline_edit(taking_back)));
            ASSERT_EQ(followed.seconds(), document->timeline().last_end())
                << "edit " << n << ", seed " << seed;
        }
    }
    EXPECT_GT(ends.size(), 20U);
}

}  // namespace
}  // namespace vistels
