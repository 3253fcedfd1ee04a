// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings/user_name.h"
#include "app/vaults/home_vault.h"

#include <gtest/gtest.h>

#include "app/event/open_event.h"
#include "support/temporary_folder.h"
#include "timeline/files/sxy_Save_Load.h"
#include "util/file_system.h"
#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

using testing::temporary_folder;

TEST(user_name, is_the_full_name_of_an_account_or_else_its_login) {
    const struct {
        const char* login;
        const char* full_name;
        const char* name;
    } cases[] = {
        {"ab", "Ada Byron", "Ada Byron"},
        {"ab", " Ada Byron ,Room 3,12345,", "Ada Byron"},
        {"ada", "& Byron", "Ada Byron"},
        {"ab", "", "ab"},
        {"ab", " ,,,", "ab"},
        {"ab", "Ada \xff", "ab"},
    };
    for (const auto& one : cases) EXPECT_EQ(name_from_account(one.login, one.full_name), one.name);
}

TEST(user_name, that_is_saved_counts_and_stamps_the_edits_of_an_event) {
    const temporary_folder folder;
    const auto places = find_home_places(folder / "home");
    const std::string of_machine = load_user_name(places);
    EXPECT_FALSE(of_machine.empty());
    const auto save = [&places](const char* name) {
        property_dictionary values;
        values.add("user name", name);
        return write_settings(places, user_name_file, values).ok();
    };
    ASSERT_TRUE(save(" Ada Byron\n"));
    EXPECT_EQ(load_user_name(places), "Ada Byron");

    ASSERT_TRUE(make_folders(folder / "event"));
    ASSERT_TRUE(save_timeline(sxy_DATA_root().snapshot(), folder / "event"));
    simulated_run_loop loop;
    const auto event = open_event::open(folder / "event", places, loop);
    ASSERT_TRUE(event) << event.message();
    EXPECT_EQ(event.value()->timeline().author(), "Ada Byron");

    ASSERT_TRUE(save(" "));
    EXPECT_EQ(load_user_name(places), of_machine);
}

}  // namespace
}  // namespace vistels
