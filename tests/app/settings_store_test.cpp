// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings/settings_store.h"

#include <gtest/gtest.h>

#include <mutex>
#include <utility>
#include <vector>

#include "app/settings/search_patterns.h"
#include "app/settings/settings.h"
#include "app/settings/user_name.h"
#include "support/temporary_folder.h"
#include "util/file_system.h"

namespace vistels {
namespace {

property_dictionary user_name(property_value name) {
    property_dictionary values;
    values.add("user name", std::move(name));
    return values;
}

struct kept_settings : public ::testing::Test {
    testing::temporary_folder home;
    const home_places plain{home / "Home Vault.VVault", home / "Home Folder.VVault"};
};

TEST_F(kept_settings, count_at_once_and_reach_their_files) {
    ASSERT_TRUE(save_application_volume(plain, 0.25).ok());
    ASSERT_TRUE(write_settings(plain, user_name_file, user_name("Ada")).ok());
    {
        const home_places places = with_store(plain);
        // What another program writes meanwhile stays in the file, beside what is written here.
        ASSERT_TRUE(save_filtered_out_clips(plain, {true}).ok());
        EXPECT_FALSE(load_filtered_out_clips(places).are_hidden);
        EXPECT_EQ(load_application_volume(places), 0.25);
        for (const double volume : {0.5, 0.75, 1.0}) {
            ASSERT_TRUE(save_application_volume(places, volume).ok());
            EXPECT_EQ(load_application_volume(places), volume);
        }
        // A null takes the key away, in memory and in the file.
        ASSERT_TRUE(write_settings(places, user_name_file, user_name({})).ok());
        EXPECT_NE(load_user_name(places), "Ada");
        ASSERT_TRUE(remember_search_pattern(places, "row = Attack").ok());
        ASSERT_TRUE(remember_search_pattern(places, "row = Defence").ok());
        EXPECT_EQ(load_search_patterns(places).size(), 2U);
    }
    EXPECT_EQ(load_application_volume(plain), 1.0);
    EXPECT_NE(load_user_name(plain), "Ada");
    EXPECT_EQ(load_search_patterns(plain).size(), 2U);
    EXPECT_TRUE(load_filtered_out_clips(plain).are_hidden);
}

TEST_F(kept_settings, that_cannot_be_written_are_told_and_count_until_the_end) {
    std::mutex mutex;
    std::vector<std::string> told;
    const home_places places = with_store(plain, [&](const failure& why) {
        const std::lock_guard lock(mutex);
        told.push_back(result<void>(why).message());
    });
    // A folder in the place of the file.
    ASSERT_TRUE(make_folders(path_join(plain.state_folder, "application volume.plist")).ok());
    ASSERT_TRUE(save_application_volume(places, 0.5).ok());
    EXPECT_EQ(load_application_volume(places), 0.5);
    places.settings->wait_until_kept();
    ASSERT_EQ(told.size(), 1U);
    EXPECT_NE(told.front().find("application volume.plist"), std::string::npos) << told.front();
}

}  // namespace
}  // namespace vistels
