// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vaults/vault_scan.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <thread>

#include "support/temporary_folder.h"
#include "support/unprivileged_user.h"
#include "util/file_system.h"

namespace vistels {
namespace {

namespace fs = std::filesystem;
using testing::put_file;
using testing::temporary_folder;

void put_marker(const std::string& path) {
    fs::create_directories(path_folder(path));
    put_file(path, "");
}

// Later than any change that a test made.
double later() {
    return seconds_since_1970() + 60;
}

TEST(vault_scan, counts_by_marker_files) {
    const temporary_folder home;
    const std::string vault = home / "V.VVault";
    const char* const files[] = {
        "Video Groups/a/video group.plist",
        "Video Groups/a/chron data.plist",
        "Video Groups/a/Logger/logger.plist",
        "Video Groups/deep/b/video group.plist",
        "Composers/c/composer info.plist",
        "d/Table.plist",
        "e/Matrix.plist",
        ".hidden/video group.plist",
        "Other.VVault/video group.plist",
        "Table.plist temp file 7/nothing",
    };
    for (const char* file : files) put_marker(vault + "/" + file);
    fs::create_directory_symlink(vault, vault + "/loop");
    fs::create_directory_symlink("..", vault + "/Video Groups/a/loop");
    fs::create_directories(vault + "/folder/Matrix.plist");  // no file
    put_marker(vault + "/\xff\xfe/Table.plist");
    const auto found = scan_vault(vault);
    ASSERT_TRUE(found);
    EXPECT_EQ(found.value().counts, (std::array<std::size_t, 6>{2, 1, 1, 1, 2, 1}));
    EXPECT_EQ(found.value().items.size(), 8U);
    EXPECT_EQ(found.value().items.front().full_file_path, vault + "/Composers/c");
    EXPECT_EQ(found.value().items.back().file_name_, "\xff\xfe");
    EXPECT_TRUE(found.value().problems.empty());
    EXPECT_FALSE(scan_vault(home / "none"));
    EXPECT_FALSE(scan_vault(vault + "/d/Table.plist"));
}

TEST(vault_scan, looking_again_lists_only_what_changed) {
    const temporary_folder home;
    const std::string vault = home / "V.VVault";
    for (int n = 0; n < 50; ++n)
        put_marker(vault + "/Video Groups/" + std::to_string(n) + "/video group.plist");
    vault_tree tree(vault);
    ASSERT_TRUE(tree.look(later()));
    EXPECT_EQ(tree.folders_listed(), 52U);
    const auto look = [&tree] { return tree.look(later()).value(); };
    EXPECT_FALSE(look());
    EXPECT_EQ(tree.folders_listed(), 0U);
    put_file(vault + "/Video Groups/7/chron data.plist", "");
    EXPECT_TRUE(look());
    EXPECT_EQ(tree.folders_listed(), 1U);
    EXPECT_EQ(tree.content().counts[1], 1U);
    put_file(vault + "/Video Groups/7/movie.mp4", "");
    EXPECT_FALSE(look());
    fs::rename(vault + "/Video Groups/7", vault + "/Seven");
    EXPECT_TRUE(look());
    EXPECT_EQ(tree.content().items.front().full_file_path, vault + "/Seven");
    fs::remove_all(vault + "/Video Groups");
    EXPECT_TRUE(look());
    EXPECT_EQ(tree.content().items.size(), 2U);
    EXPECT_EQ(tree.folders(), (std::vector{vault, vault + "/Seven"}));
}

// A change that leaves the folder's time as it was is found while the time is that recent.
TEST(vault_scan, folders_that_changed_just_now_are_listed_again) {
    const temporary_folder home;
    put_marker(home / "V.VVault/a/Table.plist");
    vault_tree tree(home / "V.VVault");
    for (int looks = 0; looks < 2; ++looks) {
        ASSERT_TRUE(tree.look(seconds_since_1970()));
        EXPECT_EQ(tree.folders_listed(), 2U);
    }
}

TEST(vault_scan, a_vault_that_goes_away_and_comes_back) {
    const temporary_folder home;
    const std::string vault = home / "V.VVault";
    put_marker(vault + "/a/Table.plist");
    vault_tree tree(vault);
    ASSERT_TRUE(tree.look(later()));
    fs::rename(vault, home / "away");
    EXPECT_FALSE(tree.look(later()));
    EXPECT_TRUE(tree.content().items.empty() && tree.folders().empty());
    fs::rename(home / "away", vault);
    const auto back = tree.look(later());
    ASSERT_TRUE(back);
    EXPECT_TRUE(back.value());
    EXPECT_EQ(tree.content().items.size(), 1U);
}

TEST(vault_scan, a_vault_that_vanishes_while_it_is_looked_through) {
    const temporary_folder home;
    const std::string vault = home / "V.VVault";
    for (int n = 0; n < 500; ++n)
        put_marker(vault + "/" + std::to_string(n % 20) + "/" + std::to_string(n) + "/Table.plist");
    vault_tree tree(vault);
    ASSERT_TRUE(tree.look());
    std::thread remover([&vault] { fs::remove_all(vault); });
    while (tree.look()) {
        EXPECT_LE(tree.content().items.size(), 500U);
        EXPECT_TRUE(tree.content().problems.empty());
    }
    remover.join();
    EXPECT_FALSE(tree.look());
    EXPECT_TRUE(tree.content().items.empty());
}

TEST(vault_scan, folders_that_cannot_be_looked_into_are_told) {
    const temporary_folder home;
    const std::string vault = home / "V.VVault";
    put_marker(vault + "/closed/Table.plist");
    put_marker(vault + "/open/Table.plist");
    std::string deep = vault;
    for (int depth = 0; depth < 70; ++depth) deep += "/d";
    put_marker(deep + "/Table.plist");
    const testing::unprivileged_user user(home.path());
    ASSERT_EQ(::chmod((vault + "/closed").c_str(), 0), 0);
    vault_tree tree(vault);
    ASSERT_TRUE(tree.look(later()));
    EXPECT_EQ(tree.content().items.size(), 1U);
    ASSERT_EQ(tree.content().problems.size(), 2U);
    EXPECT_NE(tree.content().problems[0].message().find("\"" + vault + "/closed\" cannot be looked into"),
              std::string::npos);
    EXPECT_NE(tree.content().problems[1].message().find("too deep"), std::string::npos);
    ASSERT_EQ(::chmod((vault + "/closed").c_str(), 0700), 0);
    EXPECT_TRUE(tree.look(later()).value());
    EXPECT_EQ(tree.content().items.size(), 2U);
    ASSERT_EQ(::chmod(vault.c_str(), 0), 0);
    EXPECT_FALSE(tree.look(later()));
    ASSERT_EQ(::chmod(vault.c_str(), 0700), 0);
}

TEST(vault_scan, ten_thousand_folders) {
    const temporary_folder home;
    const std::string vault = home / "V.VVault";
    for (int n = 0; n < 10000; ++n) {
        const std::string folder = vault + "/" + std::to_string(n / 100) + "/" + std::to_string(n);
        fs::create_directories(folder);
        if (n % 10 == 0) put_file(folder + "/video group.plist", "");
    }
    vault_tree tree(vault);
    ASSERT_TRUE(tree.look(later()));
    EXPECT_EQ(tree.content().counts[0], 1000U);
    EXPECT_EQ(tree.folders_listed(), 10101U);
    EXPECT_FALSE(tree.look(later()).value());
    EXPECT_EQ(tree.folders_listed(), 0U);
}

}  // namespace
}  // namespace vistels
