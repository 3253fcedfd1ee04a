// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/event_reader.h"

#include <gtest/gtest.h>

#include "app/vaults/home_vault.h"
#include "support/opened_event.h"
#include "support/run_until.h"
#include "support/stored_event.h"
#include "support/temporary_folder.h"
#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

using testing::comes_about;

// Two events, read on the reader's queue.
class event_reading : public ::testing::Test {
  protected:
    event_reading() {
        for (const auto& folder : {first, second}) testing::put_stored_event(home / "Cup.VVault", folder, 0);
    }
    void read(const std::string& folder) {
        reader.read(folder, places, [this, folder](result<std::unique_ptr<open_event>> event) {
            EXPECT_TRUE(event) << event.message();
            if (event) got.push_back(std::move(event).value());
        });
    }
    bool is_done() {
        return comes_about(loop, [this] { return !reader.is_at_work(); });
    }

    testing::temporary_folder home;
    const std::string first = home / "Cup.VVault/Video Groups/First";
    const std::string second = home / "Cup.VVault/Video Groups/Second";
    const home_places places = find_home_places(home.path());
    simulated_run_loop loop;
    std::vector<std::unique_ptr<open_event>> got;
    event_reader reader{loop};
};

TEST_F(event_reading, gives_what_was_asked_for_last_and_closes_the_others) {
    read(first);
    read(second);
    EXPECT_EQ(reader.coming(), second);
    ASSERT_TRUE(is_done());
    ASSERT_EQ(got.size(), 1U);
    EXPECT_EQ(got[0]->folder(), second);
    got[0]->begin();
    testing::code(*got[0], 2, 3);

    // The same event again at once: what was given up does not keep it from being written.
    read(first);
    reader.cancel();
    read(first);
    ASSERT_TRUE(is_done());
    ASSERT_EQ(got.size(), 2U);
    got[1]->begin();
    EXPECT_FALSE(got[1]->timeline().is_read_only());
    testing::code(*got[1], 4, 5);

    got.clear();
    read(second);
    ASSERT_TRUE(is_done());
    ASSERT_EQ(got.size(), 1U);
    reader.give_back(std::move(got[0]));  // which was not begun
    got.clear();
    read(second);
    ASSERT_TRUE(is_done());
    got[0]->begin();
    EXPECT_FALSE(got[0]->timeline().is_read_only());
    EXPECT_EQ(got[0]->timeline().timeline().clip_count(), 1U);
}

}  // namespace
}  // namespace vistels
