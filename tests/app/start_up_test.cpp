// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/start/start_up.h"
#include "app/start/start_failures.h"
#include "app/vaults/home_vault.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>

#include "app/settings/code_window_settings.h"
#include "app/settings/settings.h"
#include "app/settings/step_settings.h"
#include "app/settings/vault_preferences.h"
#include "app/start/last_focus.h"
#include "app/start/settings_in_force.h"
#include "app/vaults/vaults.h"
#include "document/writer_lock.h"
#include "support/temporary_folder.h"
#include "support/unprivileged_user.h"
#include "timeline/files/timeline_form.h"
#include "util/property_list.h"
#include "util/safe_write.h"
#include "video/vault_lock.h"

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
    EXPECT_TRUE(started(places).messages.empty());
    put_file(places.home_vault + "/x.plist temp file 7", write_property_list(property_dictionary()));
    {
        const auto after_kill = started(places);
        EXPECT_FALSE(after_kill.ended_well_before);
        EXPECT_TRUE(after_kill.unclean_end.message().starts_with("Vistels was not quit properly"));
        EXPECT_NE(after_kill.unclean_end.message().find(places.home_vault + "/x.plist"), std::string::npos);
        EXPECT_TRUE(note_focus(places, "FOCUS"));
        EXPECT_TRUE(note_clean_quit(after_kill));
    }
    const auto after_quit = started(places);
    EXPECT_TRUE(after_quit.ended_well_before);
    const auto stored = read_dictionary_or_empty(places.state_folder + "/correctly terminated.plist");
    EXPECT_EQ(stored.text_or_empty("uuid last focus 2"), "FOCUS");
    EXPECT_TRUE(stored.number("loaded at") && stored.number("terminated correctly at"));
}

TEST(start_up, a_second_program_beside_a_running_one_leaves_its_record_and_its_files_alone) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    const auto first = started(places);
    const std::string record = places.state_folder + "/correctly terminated.plist";
    const std::string begun = file_bytes(record);
    const std::string copy = places.state_folder + "/Windows/windows open.plist temp file 7";
    put_file(copy, write_property_list(property_dictionary()));  // the first one is writing it
    {
        const auto second = started(places);
        EXPECT_TRUE(second.ended_well_before);
        EXPECT_TRUE(second.recovered.empty() && second.messages.empty());
        EXPECT_TRUE(note_clean_quit(second));
    }
    EXPECT_EQ(file_bytes(record), begun);
    EXPECT_TRUE(file_exists(copy));
}

TEST(start_up, an_end_before_its_start_by_a_clock_set_back_is_an_end) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    property_dictionary future;
    future.add("loaded at", 4e9);
    future.add("terminated correctly at", property_date{4.1e9});
    fs::create_directories(places.state_folder);
    ASSERT_TRUE(safe_write(places.state_folder + "/correctly terminated.plist", future));
    EXPECT_TRUE(note_clean_quit(started(places)));
    EXPECT_TRUE(started(places).ended_well_before);
    EXPECT_FALSE(started(places).ended_well_before);
}

TEST(start_up, damaged_files_of_the_state_are_kept_told_and_replaced_by_defaults) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    started(places);
    const std::string names[] = {
        "Vault preferences/focus vault.plist", "Vault preferences/vaults.plist", "Windows/windows open.plist",
        "System/last build used.plist",        "application volume.plist",       "System/build number.plist"};
    for (const auto& name : names) put_file(places.state_folder + "/" + name, "<plist><dict>");
    const std::string information = places.home_vault + "/home vault information.plist";
    put_file(information, "");
    const auto report = started(places);
    for (const auto& name : names) {
        const std::string path = places.state_folder + "/" + name;
        EXPECT_EQ(
            std::count_if(report.messages.begin(), report.messages.end(),
                          [&](const auto& one) { return one.message().find(path) != std::string::npos; }),
            1)
            << name;
        const std::string kept = path.substr(0, path.size() - 6) + " damaged 1.plist";
        EXPECT_EQ(file_bytes(kept), "<plist><dict>") << name;
    }
    EXPECT_FALSE(read_dictionary_or_empty(information).text_or_empty("ID for this file:").empty());
    EXPECT_TRUE(file_exists(places.home_vault + "/home vault information damaged 1.plist"));
    EXPECT_EQ(read_dictionary_or_empty(places.state_folder + "/System/build number.plist").size(), 4U);
    // Once is enough.
    for (const auto& one : started(places).messages)
        EXPECT_EQ(one.message().find("damaged 1"), std::string::npos) << one.message();
}

TEST(start_up, a_home_that_is_read_only_starts_and_tells) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    ASSERT_TRUE(note_clean_quit(started(places)));
    const testing::unprivileged_user user(home.path());
    for (const char* mode : {"a-w", "u+w"}) {
        ASSERT_EQ(std::system(("chmod -R " + std::string(mode) + " '" + home.path() + "'").c_str()), 0);
        const auto report = started(places, 101);
        EXPECT_EQ(report.messages.empty(), *mode == 'u');
        for (const auto& one : report.messages)
            EXPECT_NE(one.message().find(home.path()), std::string::npos) << one.message();
        EXPECT_EQ(note_clean_quit(report).ok(), *mode == 'u');
    }
}

TEST(start_up, a_newer_build_is_told_from_what_is_installed) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    started(places, 101.5);
    const std::string file = places.state_folder + "/System/build number.plist";
    const char* const available = "build number available for download";
    const auto known = read_dictionary_or_empty(file);
    EXPECT_EQ(known.number("build number of Vistels being used now"), 101.5);
    EXPECT_EQ(known.number(available), 101.5);
    EXPECT_GT(known.number("last time checked").value_or(0), 1.6e9);
    const std::string self = fs::read_symlink("/proc/self/exe").string();
    EXPECT_EQ(known.text_or_empty("latest build information url"), "file://" + self);
    EXPECT_EQ(build_number_in(self), VISTELS_BUILD_NUMBER);
    EXPECT_EQ(known.size(), 4U);

    const std::string mark = std::string("Vistels build ") + "number: ";  // not in this file
    const struct {
        std::string installed;  // empty: the running file itself
        const char* told;       // a part of the message; null: none
        double available;
    } cases[] = {
        {"", nullptr, 100},
        {"some other program", nullptr, 100},
        {"x" + std::string((1 << 20) - 9, 'y') + mark + "120; and more", "  120.", 120},
        {mark + "; " + mark + "100.5;", "  100.5.", 100.5},
        {mark + "99;", nullptr, 99},
    };
    put_file(home / "running", "this one");
    for (const auto& one : cases) {
        fs::remove(home / "vistels");
        if (one.installed.empty()) fs::create_hard_link(home / "running", home / "vistels");
        if (!one.installed.empty()) put_file(home / "vistels", one.installed);
        const running_executable executable(home / "vistels", home / "running");
        EXPECT_EQ(executable.is_replaced(), !one.installed.empty());
        const std::string message = check_for_newer_build(places, 100, executable).message();
        EXPECT_EQ(message.empty(), one.told == nullptr) << message;
        if (one.told) {
            EXPECT_NE(message.find(one.told), std::string::npos) << message;
        }
        EXPECT_EQ(read_dictionary_or_empty(file).number(available), one.available);
    }
}

TEST(start_up, build_check) {
    EXPECT_FALSE(older_build(100, 100));
    EXPECT_FALSE(older_build(101, 100));
    EXPECT_EQ(older_build(99.1234567, 100.5).message(),
              "This version of Vistels is an older build than the previous version that was used.\r\r"
              "Build number of this version  99.12346.\rPrevious build number used  100.5.");
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    const std::pair<double, std::size_t> runs[] = {{100, 0}, {120, 0}, {110, 1}, {110, 0}, {111, 0}};
    for (const auto& [build, messages] : runs) {
        const auto report = started(places, build);
        EXPECT_EQ(report.messages.size(), messages) << build;
        if (messages) {
            EXPECT_TRUE(report.messages[0].is(build_is_older)) << build;
        }
        EXPECT_TRUE(note_clean_quit(report));
    }
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
    const std::string open_elsewhere = vault.value() + "/Video Groups/c";
    for (const auto& folder : {folders[0], folders[1], open_elsewhere}) {
        fs::create_directories(folder);
        put_file(folder + "/x.plist", "<plist><di");
        put_file(folder + "/x.plist <previous> 7", whole);
    }
    const auto writer = writer_lock::take(open_elsewhere, timeline_form);
    ASSERT_TRUE(writer);
    const auto report = started(places);
    EXPECT_EQ(file_bytes(open_elsewhere + "/x.plist"), "<plist><di");
    EXPECT_EQ(report.recovered, (std::vector{folders[0] + "/x.plist", folders[1] + "/x.plist"}));
    for (const auto& folder : folders) EXPECT_EQ(file_bytes(folder + "/x.plist"), whole);
    EXPECT_TRUE(started(places).recovered.empty());
}

TEST(start_up, cleans_and_keeps_aside_what_killed_saves_left_in_vaults_that_nobody_changes) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    started(places);
    const std::string event = places.home_vault + "/Video Groups/a";
    const std::string whole = write_property_list(property_dictionary());
    // Each with a stray of two days and one of now.
    const std::string files[] = {event + "/chron data.plist", event + "/video group.plist",
                                 event + "/Logger/button dict.plist",
                                 places.home_vault + "/Single Videos/U/single video.plist",
                                 places.state_folder + "/Windows/windows open.plist"};
    std::vector<std::string> old;
    for (const auto& file : files) {
        fs::create_directories(path_folder(file));
        put_file(file, whole);
        put_file(file + " <previous> 8", whole);
        old.push_back(file + " temp file 7");
        put_file(old.back(), whole);
        fs::last_write_time(old.back(), fs::file_time_type::clock::now() - std::chrono::hours(48));
    }
    const auto cleaned_now = [&] {
        auto cleaned = started(places).cleaned;
        std::sort(cleaned.begin(), cleaned.end());
        return cleaned;
    };
    {
        const auto writer = writer_lock::take(event, timeline_form);
        const auto lock = vault_lock::take(places.home_vault);
        ASSERT_TRUE(writer && lock);
        EXPECT_EQ(cleaned_now(), std::vector{old[4]});
    }
    {
        const auto writer = writer_lock::take(event, timeline_form);
        ASSERT_TRUE(writer);
        EXPECT_EQ(cleaned_now(), std::vector{old[3]}) << "the code window belongs to the open timeline";
    }
    EXPECT_EQ(cleaned_now(), (std::vector{old[2], old[0], old[1]}));
    for (const auto& file : files) EXPECT_TRUE(file_exists(file + " <previous> 8")) << file;

    // A file that is gone, and one that never was whole: kept aside and told, once.
    const std::string gone = places.home_vault + "/gone.plist";
    put_file(gone + " temp file 7", whole);
    fs::last_write_time(gone + " temp file 7", fs::file_time_type::clock::now() - std::chrono::hours(72));
    put_file(places.home_vault + "/torn.plist temp file 9", "<plist>");
    auto first = started(places);
    std::erase_if(first.messages,
                  [](const auto& one) { return one.message().starts_with("Vistels was not quit"); });
    EXPECT_EQ(first.messages.size(), 2U);
    EXPECT_TRUE(first.recovered.empty());
    EXPECT_TRUE(file_exists(places.home_vault + "/gone copy 1.plist") && !file_exists(gone));
    ASSERT_TRUE(note_clean_quit(first));
    first = {};
    EXPECT_TRUE(started(places).messages.empty());
}

TEST(start_up, the_home_vaults_identity_comes_back_from_a_copy) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    started(places);
    const std::string path = places.home_vault + "/home vault information.plist";
    const std::string identity = file_bytes(path);
    fs::rename(path, path + " temp file 7");
    EXPECT_EQ(started(places).recovered, std::vector{path});
    EXPECT_EQ(file_bytes(path), identity);
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
        {"Formulas/filtered out clips.plist", "filtered out clips", "hide", "filtered out clips", "hide"},
        {"Formulas/filtered out clips.plist", "filtered out clips", true, "filtered out clips", "dim"},
        {"application volume.plist", "application volume", 0.25, "application volume", 0.25},
        {"application volume.plist", "application volume", "0.25", "application volume", 1.0},
        {"Collection/show vistel number name.plist", "show_vistel_name_with_number", true,
         "show_vistel_name_with_number", true},
        {"Collection/local video data.plist", "store video data in collection folder", true,
         "store video data in collection folder", true},
        {"Collection/local video data.plist", "store video data in collection folder", "yes",
         "store video data in collection folder", false},
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
    EXPECT_TRUE(save_minimum_free_space(places, {25}));
    EXPECT_TRUE(save_show_vistel_number_name(places, {true}));
    EXPECT_TRUE(save_view_offsets(places, {-12.5}));
    EXPECT_EQ(load_playback_top_speed(places).rate, 64);
    EXPECT_EQ(load_pitch_algorithm(places), pitch_algorithm::time_domain);
    EXPECT_EQ(load_step_settings(places), step_settings());
    EXPECT_TRUE(save_step_settings(places, {3, 999, -1}));
    EXPECT_EQ(load_step_settings(places), (step_settings{3, 250, 0}));
    EXPECT_EQ(load_application_volume(places), 0.5);
    EXPECT_EQ(load_default_formula_operator(places), '|');
    EXPECT_EQ(load_minimum_free_space(places).percent, 25);
    EXPECT_TRUE(load_show_vistel_number_name(places).shown);
    EXPECT_EQ(load_view_offsets(places).vertical, -12.5);
}

TEST(settings, of_the_code_windows_are_each_in_a_file_of_their_own) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    EXPECT_EQ(load_press_settings(places), press_settings());
    const press_settings pressed{true, 2.5, true, true};
    const test_press_settings tested{true, 3, 0.02, true, true};
    EXPECT_TRUE(save_press_settings(places, pressed));
    EXPECT_TRUE(save_test_press_settings(places, tested));
    EXPECT_TRUE(save_default_link_type(places, "ON_UP_SET_UP"));
    EXPECT_EQ(load_press_settings(places), pressed);
    EXPECT_EQ(load_test_press_settings(places), tested);
    EXPECT_EQ(load_default_link_type(places), "ON_UP_SET_UP");
    const auto margin = path_of(places, {"Logger", "margin padding seconds.plist"});
    for (const property_value& wrong : {property_value(-1.0), property_value("3"), property_value(true)}) {
        property_dictionary stored;
        stored.add("margin padding seconds", wrong);
        ASSERT_TRUE(safe_write(margin, stored));
        EXPECT_EQ(load_press_settings(places).margin_padding_seconds, 5);
    }
    EXPECT_TRUE(save_test_press_settings(places, {false, 0, 1e9, false, false}));
    const test_press_settings limits{false, 1, test_press_settings::most_seconds, false, false};
    EXPECT_EQ(load_test_press_settings(places), limits);
}

}  // namespace
}  // namespace vistels
