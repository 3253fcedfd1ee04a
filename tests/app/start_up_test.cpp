// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/start_up.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>

#include "app/settings.h"
#include "app/vaults.h"
#include "support/temporary_folder.h"
#include "util/property_list.h"
#include "util/safe_write.h"

namespace vistels {
namespace {

namespace fs = std::filesystem;
using testing::file_bytes;
using testing::put_file;
using testing::temporary_folder;

start_up_report started(const home_places& places, double build = 100, double running_seconds = 1) {
    auto report = start_up(places, build, running_seconds);
    EXPECT_TRUE(report) << report.message();
    return report ? std::move(report).value() : start_up_report{};
}

TEST(start_up, makes_what_is_missing_and_keeps_the_home_vaults_identity) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    EXPECT_EQ(places.home_vault, home / "Home Vault.VVault");
    EXPECT_EQ(places.state_folder, home / "Home Folder.VVault");
    EXPECT_TRUE(started(places).ended_well_before);
    const std::string information = places.home_vault + "/home vault information.plist";
    const std::string first = file_bytes(information);
    const auto stored = read_dictionary_or_empty(information);
    EXPECT_EQ(stored.text_or_empty("ID for this file:").size(), 36U);
    EXPECT_TRUE(is_home_vault(places.home_vault));
    EXPECT_FALSE(is_home_vault(places.state_folder));
    started(places);
    EXPECT_EQ(file_bytes(information), first);
}

TEST(start_up, a_home_that_cannot_be_made_is_an_error_that_names_it) {
    const temporary_folder home;
    put_file(home / "file", "x");
    const auto report = start_up(find_home_places(home / "file"), 100, 1);
    ASSERT_FALSE(report);
    EXPECT_NE(report.message().find(home / "file"), std::string::npos);
}

TEST(start_up, tells_a_run_that_was_killed_from_one_that_was_quit) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    started(places);
    EXPECT_FALSE(started(places).ended_well_before);
    EXPECT_TRUE(note_clean_quit(places, "FOCUS"));
    EXPECT_TRUE(started(places).ended_well_before);
    const auto stored = read_dictionary_or_empty(places.state_folder + "/correctly terminated.plist");
    EXPECT_EQ(stored.text_or_empty("uuid last focus 2"), "FOCUS");
    EXPECT_TRUE(stored.number("loaded at") && stored.number("terminated correctly at"));
}

TEST(start_up, build_check) {
    EXPECT_EQ(build_message(100, 100), "");
    EXPECT_EQ(build_message(101, 100), "");
    EXPECT_EQ(build_message(99.1234567, 100.5),
              "This version of Vistels is an older build than the previous version that was used.\r\r"
              "Build number of this version  99.12346.\rPrevious build number used  100.5.");
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    const std::pair<double, std::size_t> runs[] = {{100, 0}, {120, 0}, {110, 1}, {110, 0}, {111, 0}};
    for (const auto& [build, messages] : runs)
        EXPECT_EQ(started(places, build).messages.size(), messages) << build;
    const auto stored = read_dictionary_or_empty(places.state_folder + "/System/last build used.plist");
    EXPECT_EQ(stored.number("last build"), 111);
}

TEST(start_up, cleans_up_old_strays_in_the_inspector_folder_only) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    fs::create_directories(places.state_folder + "/Inspector/window");
    const struct {
        const char* name;
        int minutes_old;
        double running_seconds;
        bool goes;
    } cases[] = {
        {"Inspector/a.plist temp file 12", 61, 1, true},
        {"Inspector/window/a.plist <previous> 12", 61, 1, true},
        {"Inspector/a.plist temp file 13", 59, 1, false},
        {"Inspector/a.plist temp file 14", 61, 62 * 60, false},  // made by this run
        {"Inspector/a.plist", 600, 1, false},
        {"a.plist temp file 12", 600, 1, false},
    };
    for (const auto& one : cases) {
        const std::string path = places.state_folder + "/" + one.name;
        put_file(path, "not a list");
        fs::last_write_time(path, fs::file_time_type::clock::now() - std::chrono::minutes(one.minutes_old));
        const auto report = started(places, 100, one.running_seconds);
        EXPECT_EQ(report.cleaned, one.goes ? std::vector{path} : std::vector<std::string>()) << one.name;
        EXPECT_EQ(fs::exists(path), !one.goes) << one.name;
        fs::remove(path);
    }
}

TEST(start_up, mends_torn_files_in_every_known_vault) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    started(places);
    const auto vault = create_vault(home.path(), "Far");
    ASSERT_TRUE(vault);
    ASSERT_TRUE(add_known_vault(places, vault.value()));
    const std::string folders[] = {places.home_vault + "/Video Groups/a", vault.value() + "/Composers/b"};
    const std::string whole = write_property_list(property_dictionary());
    for (const auto& folder : folders) {
        fs::create_directories(folder);
        put_file(folder + "/x.plist", "<plist><di");
        put_file(folder + "/x.plist <previous> 7", whole);
    }
    const auto report = started(places);
    EXPECT_EQ(report.recovered, (std::vector{folders[0] + "/x.plist", folders[1] + "/x.plist"}));
    for (const auto& folder : folders) EXPECT_EQ(file_bytes(folder + "/x.plist"), whole);
    EXPECT_TRUE(started(places).recovered.empty());
}

TEST(start_up, windows_come_back_in_their_order) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    EXPECT_TRUE(load_open_windows(places).empty());
    ASSERT_TRUE(save_open_windows(places, {{"R2", "", 2, "/b"}, {"R1", "Final", 1, "/a"}}));
    const auto windows = started(places).windows;
    ASSERT_EQ(windows.size(), 2U);
    EXPECT_EQ(windows[0].root_id + windows[0].name + windows[0].open_from_path, "R1Final/a");
    EXPECT_EQ(windows[1].open_from_path, "/b");
}

TEST(vaults, create_says_what_is_in_the_way) {
    const temporary_folder home;
    const auto made = create_vault(home.path(), "Cup");
    ASSERT_TRUE(made);
    EXPECT_EQ(made.value(), home / "Cup.VVault");
    put_file(home / "Cup.VVault/inside", "x");
    const auto again = create_vault(home.path(), "Cup");
    ASSERT_FALSE(again);
    EXPECT_NE(again.message().find("Vault 'Cup' already exists."), std::string::npos);
    EXPECT_TRUE(file_exists(home / "Cup.VVault/inside"));
    EXPECT_TRUE(create_vault(home.path(), "Cup", true));
    EXPECT_EQ(names_in_folder(home.path()), std::vector<std::string>{"Cup.VVault"});
    EXPECT_TRUE(names_in_folder(home / "Cup.VVault").empty());
    for (const char* name : {"", "a/b", ".."}) {
        const auto bad = create_vault(home.path(), name, true);
        EXPECT_TRUE(bad ? path_folder(bad.value()) == home.path() : !bad.message().empty()) << name;
    }
    put_file(home / "file", "x");
    const auto below_file = create_vault(home / "file", "Cup");
    ASSERT_FALSE(below_file);
    EXPECT_TRUE(below_file.message().starts_with("Could not create folder."));
}

TEST(vaults, the_home_vault_is_never_replaced) {
    const temporary_folder home;
    started(find_home_places(home.path()));
    EXPECT_FALSE(create_vault(home.path(), "Home Vault", true));
    EXPECT_TRUE(is_home_vault(home / "Home Vault.VVault"));
}

TEST(vaults, scan_counts_by_marker_files) {
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
    };
    for (const char* file : files) {
        fs::create_directories(path_folder(vault + "/" + file));
        put_file(vault + "/" + file, "");
    }
    fs::create_directory_symlink(vault, vault + "/loop");
    const auto found = scan_vault(vault);
    ASSERT_TRUE(found);
    EXPECT_EQ(found.value().counts, (std::array<std::size_t, 6>{2, 1, 1, 1, 1, 1}));
    EXPECT_EQ(found.value().items.size(), 7U);
    EXPECT_EQ(found.value().items[0].full_file_path, vault + "/Composers/c");
    EXPECT_FALSE(scan_vault(home / "none"));

    std::vector<std::string> messages;
    EXPECT_EQ(files_MASTER_LIST({vault, home / "none", vault}, messages).size(), 7U);
    ASSERT_EQ(messages.size(), 7U);
    EXPECT_TRUE(messages[0].starts_with("duplicate found 🥁🥁🥁 "));
}

TEST(settings, values_in_force) {
    const struct {
        const char* file;
        const char* key;
        property_value stored;
        const char* shown_key;
        property_value shown;
    } cases[] = {
        {"Playback/playback top speed.plist", "playback top speed", 100.0, "playback top speed", 64.0},
        {"Playback/playback top speed.plist", "playback top speed", -20, "playback top speed", -8.0},
        {"Playback/playback top speed.plist", "playback top speed", 4, "playback top speed", 4.0},
        {"Collection/pitch algorithm.plist", "pitch algorithm", "TimeDomain", "pitch algorithm",
         "TimeDomain"},
        {"Collection/pitch algorithm.plist", "pitch algorithm", "timedomain", "pitch algorithm", "Varispeed"},
        {"Formulas/default formula operator.plist", "default formula operator", "not",
         "default formula operator", "!"},
        {"Formulas/default formula operator.plist", "default formula operator", 3, "default formula operator",
         "&"},
        {"application volume.plist", "application volume", 0.25, "application volume", 0.25},
        {"application volume.plist", "application volume", "0.25", "application volume", 1.0},
        {"Vault preferences/minimum free space for vault for warning.plist",
         "minimum vault free space percent (valid range 1-99, default 10)", 99,
         "minimum vault free space percent", 99},
        {"Vault preferences/minimum free space for vault for warning.plist",
         "minimum vault free space percent (valid range 1-99, default 10)", 0,
         "minimum vault free space percent", 10},
    };
    for (const auto& one : cases) {
        const temporary_folder home;
        const auto places = find_home_places(home.path());
        const std::string path = places.state_folder + "/" + one.file;
        fs::create_directories(path_folder(path));
        property_dictionary stored;
        stored.add(one.key, one.stored);
        ASSERT_TRUE(safe_write(path, stored));
        EXPECT_EQ(*settings_in_force(places).find(one.shown_key), one.shown) << one.file;
    }
}

TEST(settings, what_is_saved_is_in_force) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    EXPECT_TRUE(save_playback_top_speed(places, {80}));
    EXPECT_TRUE(save_pitch_algorithm(places, pitch_algorithm::time_domain));
    EXPECT_TRUE(save_application_volume(places, 0.5));
    EXPECT_TRUE(save_default_formula_operator(places, '|'));
    EXPECT_TRUE(save_minimum_free_space_percent(places, 25));
    EXPECT_EQ(load_playback_top_speed(places).rate, 64);
    EXPECT_EQ(load_pitch_algorithm(places), pitch_algorithm::time_domain);
    EXPECT_EQ(load_application_volume(places), 0.5);
    EXPECT_EQ(load_default_formula_operator(places), '|');
    EXPECT_EQ(load_minimum_free_space_percent(places), 25);
}

}  // namespace
}  // namespace vistels
