// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vaults/files_MASTER_LIST.h"
#include "app/vaults/home_vault.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <functional>

#include "app/settings/vault_preferences.h"
#include "app/start/start_up.h"
#include "app/vaults/known_vaults.h"
#include "support/temporary_folder.h"
#include "util/file_system.h"
#include "util/folder_notifications.h"
#include "util/plain_run_loop.h"

namespace vistels {
namespace {

namespace fs = std::filesystem;
using testing::file_bytes;
using testing::put_file;
using testing::temporary_folder;

constexpr double patience_seconds = 30;  // only a failing test waits for so long
constexpr double never_seconds = 1e6;

class master_list : public ::testing::Test {
  protected:
    void SetUp() override {
        auto report = start_up(places, 100, 0);
        ASSERT_TRUE(report) << report.message();
    }

    std::unique_ptr<files_MASTER_LIST> started(files_MASTER_LIST::options how) {
        auto list = std::make_unique<files_MASTER_LIST>(places, loop, std::move(how));
        told = list->told.connect([this](const failure& one) { messages.push_back(one.message()); });
        list->start();
        EXPECT_TRUE(wait([&] { return list->last_time_file_list_updated() > 0; }));
        return list;
    }
    bool wait(const std::function<bool()>& until) { return loop.run_until(until, patience_seconds); }

    void put_marker(const std::string& path) {
        fs::create_directories(path_folder(path));
        put_file(path, "");
    }
    std::string made_vault(const std::string& name) {
        fs::create_directories(home / name);
        EXPECT_TRUE(add_known_vault(places, home / name));
        return home / name;
    }

    const temporary_folder home;
    const home_places places = find_home_places(home.path());
    plain_run_loop loop;
    connection told;
    std::vector<std::string> messages;
};

TEST_F(master_list, shows_vaults_with_counts_and_items) {
    put_marker(places.home_vault + "/Video Groups/a/video group.plist");
    const std::string cup = made_vault("Cup.VVault");
    put_marker(cup + "/b/Table.plist");
    ASSERT_TRUE(choose_focus_vault(places, cup));
    const auto list = started({false, {}, never_seconds});
    ASSERT_EQ(list->vaults().size(), 2U);
    const auto& first = list->vaults()[0];
    EXPECT_TRUE(first.is_home && !first.is_focus && first.is_available);
    EXPECT_EQ(first.name, "Home Vault");
    EXPECT_EQ(first.content->counts[0], 1U);
    EXPECT_TRUE(list->vaults()[1].is_focus);
    EXPECT_EQ(list->focus_vault(), cup);
    ASSERT_EQ(list->files_Items_App_MASTER_FILE_LIST().size(), 2U);
    EXPECT_EQ(list->files_Items_App_MASTER_FILE_LIST()[1].full_file_path, cup + "/b");
    EXPECT_TRUE(wait([&] { return list->vaults()[1].space.has_value(); }));
}

TEST_F(master_list, a_change_is_told_by_the_file_system) {
    const std::string cup = made_vault("Cup.VVault");
    const auto list = started({true, {}, never_seconds});
    if (folder_notifications(loop, {}).watch("", {cup}).is_told) {
        ASSERT_TRUE(wait([&] { return list->is_told_of_changes(); }));
    } else {
        GTEST_SKIP() << "the volume of the temporary folder tells of no changes";
    }
    const auto items = [&list] { return list->files_Items_App_MASTER_FILE_LIST().size(); };
    int signals = 0;
    const auto counted = list->changed.connect([&signals] { ++signals; });
    put_marker(cup + "/a/b/Table.plist");
    ASSERT_TRUE(wait([&] { return items() == 1; }));
    put_marker(cup + "/a/b/Matrix.plist");  // in a folder that is new itself
    ASSERT_TRUE(wait([&] { return items() == 2; }));
    fs::rename(cup + "/a", cup + "/c");
    ASSERT_TRUE(
        wait([&] { return list->files_Items_App_MASTER_FILE_LIST()[0].full_file_path == cup + "/c/b"; }));
    fs::remove(cup + "/c/b/Table.plist");
    ASSERT_TRUE(wait([&] { return items() == 1; }));
    EXPECT_GE(signals, 4);
}

TEST_F(master_list, without_notifications_a_change_is_found_on_the_timer) {
    const std::string cup = made_vault("Cup.VVault");
    const auto list = started({true, {}, 0.01, 1});  // watches for one folder are left
    EXPECT_FALSE(list->is_told_of_changes());
    put_marker(cup + "/a/Table.plist");
    EXPECT_TRUE(wait([&] { return list->files_Items_App_MASTER_FILE_LIST().size() == 1; }));
}

TEST_F(master_list, a_vault_that_goes_away_is_told_shown_or_hidden_and_comes_back) {
    const std::string cup = made_vault("Cup.VVault");
    put_marker(cup + "/a/Table.plist");
    const auto list = started({true, {}, 0.01});
    ASSERT_TRUE(wait([&] { return list->files_Items_App_MASTER_FILE_LIST().size() == 1; }));
    fs::rename(cup, home / "away");
    ASSERT_TRUE(wait([&] { return list->files_Items_App_MASTER_FILE_LIST().empty(); }));
    ASSERT_EQ(list->vaults().size(), 2U);
    EXPECT_FALSE(list->vaults()[1].is_available);
    EXPECT_TRUE(list->vaults()[1].problem);
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_NE(messages[0].find(cup), std::string::npos);
    ASSERT_TRUE(save_show_unavailable_vaults(places, {false}));
    list->refresh();
    ASSERT_TRUE(wait([&] { return list->vaults().size() == 1; }));
    fs::rename(home / "away", cup);
    ASSERT_TRUE(wait([&] { return list->vaults().size() == 2; }));
    EXPECT_EQ(list->files_Items_App_MASTER_FILE_LIST().size(), 1U);
    EXPECT_EQ(messages.size(), 1U);
}

TEST_F(master_list, an_item_met_twice_is_listed_once_and_logged_once) {
    const std::string cup = made_vault("Cup.VVault");
    put_marker(cup + "/Inner/a/Table.plist");
    auto paths = load_added_vaults(places);
    paths.paths.push_back(cup + "/Inner");
    ASSERT_TRUE(save_added_vaults(places, paths));
    put_marker(places.home_vault + "/b/Matrix.plist");
    const auto list = started({false, {}, never_seconds});
    EXPECT_EQ(list->files_Items_App_MASTER_FILE_LIST().size(), 2U);
    std::vector<std::string> items;  // by vault
    for (const auto& vault : list->vaults()) {
        items.push_back(vault.name + ":");
        for (const auto& item : list->items_in(vault)) items.back() += " " + item.file_name_;
    }
    EXPECT_EQ(items, (std::vector<std::string>{"Home Vault: b", "Cup: a", "Inner:"}));
    const double before = list->last_time_file_list_updated();
    list->refresh();
    ASSERT_TRUE(wait([&] { return list->last_time_file_list_updated() > before; }));
    const std::string log = file_bytes(places.state_folder + "/System/vistels log.txt");
    const auto at = log.find("duplicate found 🥁🥁🥁 " + cup + "/Inner/a");
    EXPECT_NE(at, std::string::npos) << log;
    EXPECT_EQ(log.find("duplicate found", at + 1), std::string::npos) << log;
}

TEST_F(master_list, a_focus_vault_that_is_away_is_told_once) {
    const std::string cup = made_vault("Cup.VVault");
    ASSERT_TRUE(choose_focus_vault(places, cup));
    fs::remove_all(cup);
    const auto list = started({true, {}, 0.01});
    EXPECT_EQ(list->focus_vault(), places.home_vault);
    const double before = list->last_time_file_list_updated();
    ASSERT_TRUE(wait([&] { return list->last_time_file_list_updated() > before; }));
    ASSERT_EQ(messages.size(), 1U);
    EXPECT_NE(messages[0].find("focus vault \"" + cup), std::string::npos);
}

TEST_F(master_list, what_start_up_saw_is_not_listed_again) {
    put_marker(places.home_vault + "/a/Table.plist");
    vault_tree seen(places.home_vault);
    ASSERT_TRUE(seen.look(seconds_since_1970() + 60));
    files_MASTER_LIST::options how{false, {}, never_seconds};
    how.known_trees.push_back(std::move(seen));
    const auto list = started(std::move(how));
    EXPECT_EQ(list->vaults()[0].content->items.size(), 1U);
    EXPECT_EQ(list->files_Items_App_MASTER_FILE_LIST().size(), 1U);
}

}  // namespace
}  // namespace vistels
