// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/vaults/vaults.h"
#include "app/vaults/home_vault.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>

#include "app/settings/vault_preferences.h"
#include "document/writer_lock.h"
#include "support/failing_files.h"
#include "support/temporary_folder.h"
#include "support/unprivileged_user.h"
#include "timeline/files/timeline_form.h"
#include "util/property_list.h"
#include "video/vault_lock.h"

namespace vistels {
namespace {

namespace fs = std::filesystem;
using testing::failing_files;
using testing::file_bytes;
using testing::put_file;
using testing::temporary_folder;

home_places made_places(const temporary_folder& home) {
    auto places = find_home_places(home.path());
    fs::create_directories(places.state_folder);
    fs::create_directories(places.home_vault);
    put_file(places.home_vault + "/home vault information.plist", "x");
    return places;
}

bool says(const std::string& message, const std::string& words) {
    return message.find(words) != message.npos;
}

TEST(vaults, names) {
    const temporary_folder home;
    const struct {
        std::string name;
        std::string made;    // empty: refused
        const char* reason;  // a part of it
    } cases[] = {
        {"Cup", "Cup.VVault", ""},
        {"  Cup 2\n", "Cup 2.VVault", ""},
        {"League.VVault", "League.VVault", ""},
        {" Final .VVault ", "Final.VVault", ""},
        {"Ünïcode 東京", "Ünïcode 東京.VVault", ""},
        {"..", "...VVault", ""},
        {"Cup", "", "Vault 'Cup' already exists."},
        {"", "", "needs a name"},
        {" \t", "", "needs a name"},
        {".VVault", "", "needs a name"},
        {"a/b", "", "holds \"/\""},
        {"tab\tinside", "", "no text"},
        {"\xff\xfe", "", "no text"},
        {std::string(248, 'x'), std::string(248, 'x') + ".VVault", ""},
        {std::string(249, 'x'), "", "256 bytes"},
    };
    for (const auto& one : cases) {
        const auto made = create_vault(home.path(), one.name);
        EXPECT_EQ(made.ok(), !one.made.empty()) << one.name << made.message();
        if (made) {
            EXPECT_EQ(made.value(), home / one.made);
            EXPECT_TRUE(is_folder(home / one.made));
        } else {
            EXPECT_TRUE(says(made.message(), one.reason)) << made.message();
        }
    }
    put_file(home / "file", "x");
    const auto below_file = create_vault(home / "file", "Cup");
    ASSERT_FALSE(below_file);
    EXPECT_TRUE(below_file.message().starts_with("Could not create folder.")) << below_file.message();
}

TEST(vaults, a_replaced_vault_goes_to_the_trash_whole) {
    const temporary_folder home;
    const auto places = made_places(home);
    for (int round = 1; round <= 2; ++round) {
        ASSERT_TRUE(create_vault(home.path(), "Cup 100%") || round == 2);
        put_file(home / "Cup 100%.VVault/inside", std::to_string(round));
        const auto replaced = replace_vault(places, home.path(), "Cup 100%");
        ASSERT_TRUE(replaced) << replaced.message();
        EXPECT_TRUE(names_in_folder(replaced.value()).empty());
    }
    EXPECT_EQ(names_in_folder(home / "Trash/files"),
              (std::vector<std::string>{"Cup 100%.VVault", "Cup 100%.VVault 2"}));
    EXPECT_EQ(names_in_folder(home / "Trash/files/Cup 100%.VVault"), std::vector<std::string>{"inside"});
    EXPECT_EQ(file_bytes(home / "Trash/files/Cup 100%.VVault 2/inside"), "2");
    const std::string information = file_bytes(home / "Trash/info/Cup 100%.VVault.trashinfo");
    EXPECT_TRUE(information.starts_with("[Trash Info]\nPath=" + home.path() + "/Cup%20100%25.VVault\n"))
        << information;
    EXPECT_TRUE(replace_vault(places, home.path(), "New"));
}

// Whichever call fails, and however many after it: the vault is the old one whole, or it is replaced and the
// old one is in the trash.
TEST(vaults, a_replace_that_fails_midway_leaves_the_old_vault) {
    for (const bool from_then_on : {false, true}) {
        bool reached_the_end = false;
        for (int failing = 1; !reached_the_end; ++failing) {
            const temporary_folder home;
            const auto places = made_places(home);
            ASSERT_TRUE(create_vault(home.path(), "Cup"));
            put_file(home / "Cup.VVault/inside", "kept");
            failing_files files;
            files.set_fault(
                [=](int call) { return call == failing || (from_then_on && call > failing) ? ENOSPC : 0; });
            const auto replaced = replace_vault(places, home.path(), "Cup", files);
            reached_the_end = files.calls() < failing;
            const std::string in_trash = file_bytes(home / "Trash/files/Cup.VVault/inside");
            const std::string in_place = file_bytes(home / "Cup.VVault/inside");
            if (replaced) {
                EXPECT_EQ(in_trash, "kept") << failing;
                EXPECT_TRUE(names_in_folder(home / "Cup.VVault").empty()) << failing;
            } else {
                EXPECT_EQ(in_place + in_trash, "kept") << failing << replaced.message();
                EXPECT_TRUE(in_trash.empty() || says(replaced.message(), "Trash/files/Cup.VVault"))
                    << failing << replaced.message();
            }
            for (const auto& name : names_in_folder(home.path())) {
                EXPECT_FALSE(name.starts_with(".making")) << failing;
            }
        }
    }
}

TEST(vaults, what_is_never_replaced) {
    const temporary_folder home;
    const auto places = made_places(home);
    ASSERT_TRUE(create_vault(home.path(), "Busy") && create_vault(home.path(), "Coded"));
    ASSERT_TRUE(create_vault(home / "far", "Linked"));
    fs::create_directory_symlink(home / "far/Linked.VVault", home / "Linked.VVault");
    const auto change = vault_lock::take(home / "Busy.VVault");
    ASSERT_TRUE(change);
    const auto second = vault_lock::take(home / "Busy.VVault");
    EXPECT_EQ(second.message(), "Vault 'Busy' is currently being modified.");
    fs::create_directories(home / "Coded.VVault/Video Groups/Final");
    const auto writer = writer_lock::take(home / "Coded.VVault/Video Groups/Final", timeline_form);
    ASSERT_TRUE(writer);
    const std::pair<const char*, const char*> cases[] = {
        {"Home Vault", "is the home vault"},
        {"Home Folder", "application's own state"},
        {"Linked", "symbolic link"},
        {"Busy", "Vault 'Busy' is currently being modified."},
        {"Coded", "Vault 'Coded' is currently being modified."},
    };
    for (const auto& [name, reason] : cases) {
        const auto replaced = replace_vault(places, home.path(), name);
        EXPECT_FALSE(replaced) << name;
        EXPECT_TRUE(says(replaced.message(), reason)) << replaced.message();
    }
    EXPECT_FALSE(fs::exists(home / "Trash/files"));
}

TEST(vaults, a_lock_ends_with_its_holder_and_leaves_nothing) {
    const temporary_folder home;
    ASSERT_TRUE(create_vault(home.path(), "Cup"));
    for (int round = 0; round < 2; ++round) EXPECT_TRUE(vault_lock::take(home / "Cup.VVault"));
    EXPECT_TRUE(names_in_folder(home / "Cup.VVault").empty());
    EXPECT_FALSE(vault_lock::take(home / "none"));
}

TEST(vaults, a_lock_is_that_of_the_vault_around_a_folder) {
    const temporary_folder home;
    const std::string inside = home / "Cup.VVault/Video Groups/new";
    EXPECT_TRUE(vault_lock::take_around(inside)) << "where the vault is still to be made";
    ASSERT_TRUE(create_vault(home.path(), "Cup"));
    fs::create_directories(home / "plain");
    for (const bool is_read_only : {false, true}) {
        const testing::unprivileged_user user(home.path());
        fs::permissions(home / "Cup.VVault", fs::perms(is_read_only ? 0500 : 0700));
        const auto lock = vault_lock::take_around(inside);
        ASSERT_TRUE(lock) << lock.message();
        EXPECT_EQ(vault_lock::take_around(home / "Cup.VVault").message(),
                  "Vault 'Cup' is currently being modified.");
        EXPECT_TRUE(vault_lock::take_around(home / "plain/folder"));
        EXPECT_TRUE(vault_lock::take_around({}));
    }
    EXPECT_TRUE(names_in_folder(home / "Cup.VVault").empty());
}

TEST(vaults, adding_and_removing) {
    const temporary_folder home;
    const auto places = made_places(home);
    fs::create_directories(home / "A.VVault");
    fs::create_directories(home / "plain");
    fs::create_directories(home / "\xff.VVault");
    put_file(home / "file.VVault", "x");
    fs::create_directory_symlink(home / "A.VVault", home / "link.VVault");
    const struct {
        std::string path;
        const char* refused;  // a part of the reason; empty: it is added
        std::string listed;   // as
        bool was_known;
    } cases[] = {
        {home / "none.VVault", "missing", {}, false},
        {home / "plain", "does not end in", {}, false},
        {home / "file.VVault", "no folder", {}, false},
        {places.state_folder, "own state", {}, false},
        {places.home_vault + "/", "", places.home_vault, true},
        {home / "link.VVault", "", home / "A.VVault", false},
        {home / "plain/../A.VVault", "", home / "A.VVault", true},
        {home / "\xff.VVault", "", home / "\xff.VVault", false},
    };
    for (const auto& one : cases) {
        const auto added = add_known_vault(places, one.path);
        EXPECT_EQ(added.ok(), !*one.refused) << one.path << added.message();
        EXPECT_TRUE(says(added.message(), one.refused)) << added.message();
        if (!added) continue;
        EXPECT_EQ(fs::path(added.value().path), fs::canonical(one.listed));
        EXPECT_EQ(added.value().was_known, one.was_known) << one.path;
    }
    EXPECT_EQ(known_vaults(places).size(), 3U);
    fs::remove_all(home / "A.VVault");
    EXPECT_EQ(known_vaults(places).size(), 3U);  // its volume is away
    EXPECT_TRUE(remove_known_vault(places, home / "A.VVault"));
    EXPECT_FALSE(remove_known_vault(places, places.home_vault));
    EXPECT_EQ(known_vaults(places), (std::vector<std::string>{places.home_vault, home / "\xff.VVault"}));
}

TEST(vaults, the_focus_vault_falls_back_and_comes_back) {
    const temporary_folder home;
    const auto places = made_places(home);
    EXPECT_EQ(focus_vault_of(places).path, places.home_vault);
    EXPECT_FALSE(choose_focus_vault(places, home / "none.VVault"));
    ASSERT_TRUE(create_vault(home.path(), "Cup"));
    ASSERT_TRUE(choose_focus_vault(places, home / "Cup.VVault"));
    EXPECT_EQ(focus_vault_of(places).path, home / "Cup.VVault");
    EXPECT_EQ(known_vaults(places).size(), 2U);
    fs::rename(home / "Cup.VVault", home / "away");
    EXPECT_EQ(focus_vault_of(places).path, places.home_vault);
    EXPECT_TRUE(says(focus_vault_of(places).problem.message(), home / "Cup.VVault"));
    fs::rename(home / "away", home / "Cup.VVault");
    EXPECT_EQ(focus_vault_of(places).path, home / "Cup.VVault");
    EXPECT_FALSE(focus_vault_of(places).problem);
    ASSERT_TRUE(remove_known_vault(places, home / "Cup.VVault"));
    EXPECT_EQ(focus_vault_of(places).path, places.home_vault);
    EXPECT_FALSE(focus_vault_of(places).problem);
}

TEST(vaults, a_bookmark_stays_with_its_path_byte_for_byte) {
    const temporary_folder home;
    const auto places = made_places(home);
    ASSERT_TRUE(create_vault(home.path(), "Cup"));
    const focus_vault_setting stored{home / "Cup.VVault", std::string("\0book\xff\n", 7)};
    ASSERT_TRUE(save_focus_vault_setting(places, stored));
    ASSERT_TRUE(choose_focus_vault(places, home / "Cup.VVault"));
    EXPECT_EQ(load_focus_vault_setting(places), stored);
    ASSERT_TRUE(choose_focus_vault(places, places.home_vault));
    EXPECT_FALSE(load_focus_vault_setting(places).bookmark);
}

TEST(vaults, a_new_vault_is_listed_and_becomes_the_focus_when_it_should) {
    const temporary_folder home;
    const auto places = made_places(home);
    for (const bool focus : {false, true}) {
        ASSERT_TRUE(save_set_focus_to_new_vault(places, {focus}));
        const std::string name = focus ? "Second" : "First";
        const auto made = create_new_vault(places, {home / "all", name});
        ASSERT_TRUE(made) << made.message();
        EXPECT_EQ(made.value().is_focus, focus);
        EXPECT_EQ(known_vaults(places).back(), made.value().path);
        EXPECT_EQ(focus_vault_of(places).path, focus ? made.value().path : places.home_vault);
        EXPECT_EQ(load_create_new_vault_settings(places), (create_new_vault_settings{home / "all", name}));
    }
    EXPECT_FALSE(create_new_vault(places, {home / "all", "Second"}));
    EXPECT_TRUE(create_new_vault(places, {home / "all", "Second", true}));
    EXPECT_EQ(known_vaults(places).size(), 3U);
}

TEST(vault_preferences, unknown_keys_and_damaged_files_are_kept) {
    const temporary_folder home;
    const auto places = made_places(home);
    const std::string path = places.state_folder + "/Vault preferences/show unavailable vaults.plist";
    fs::create_directories(path_folder(path));
    property_dictionary stored;
    stored.add("from a later build", 7);
    put_file(path, write_property_list(stored));
    EXPECT_TRUE(load_show_unavailable_vaults(places).shown);
    ASSERT_TRUE(save_show_unavailable_vaults(places, {false}));
    EXPECT_FALSE(load_show_unavailable_vaults(places).shown);
    EXPECT_EQ(read_dictionary_or_empty(path).integer("from a later build"), 7);
    put_file(path, "torn");
    ASSERT_TRUE(save_show_unavailable_vaults(places, {false}));
    EXPECT_EQ(file_bytes(path_folder(path) + "/show unavailable vaults damaged 1.plist"), "torn");
    for (const int percent : {0, 100, -1}) {
        EXPECT_FALSE(save_minimum_free_space(places, {percent})) << percent;
    }
    for (const int percent : {1, 99}) {
        EXPECT_TRUE(save_minimum_free_space(places, {percent}));
        EXPECT_EQ(load_minimum_free_space(places).percent, percent);
    }
}

TEST(vaults, limited_free_space_is_less_than_the_percentage) {
    const volume_space tenth{10, 100};
    EXPECT_FALSE(tenth.is_limited(10));
    EXPECT_TRUE(tenth.is_limited(11));
    EXPECT_TRUE((volume_space{0, 100}.is_limited(1)));
    EXPECT_FALSE(volume_space{}.is_limited(99));
    EXPECT_FALSE(space_of("/nowhere at all"));
}

}  // namespace
}  // namespace vistels
