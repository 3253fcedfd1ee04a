// SPDX-License-Identifier: GPL-3.0-or-later
// Events with files that are damaged or missing: what opens, what is told, and that nothing is overwritten.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <map>

#include "app/settings/settings.h"
#include "app/settings/vault_preferences.h"
#include "app/vaults/home_vault.h"
#include "logger/code_window_change.h"
#include "support/opened_event.h"
#include "support/run_until.h"
#include "support/stored_event.h"
#include "support/temporary_folder.h"
#include "util/file_system.h"
#include "util/safe_write.h"
#include "util/simulated_run_loop.h"
#include "video/synchronised_playback.h"

namespace vistels {
namespace {

namespace fs = std::filesystem;
using testing::clip_button;
using testing::code;
using testing::comes_about;
using testing::file_bytes;
using testing::put_file;
using testing::temporary_folder;

// A vault with a collection of two vistels that was opened and coded in before.
class damaged_event : public ::testing::Test {
  protected:
    void SetUp() override {
        testing::put_stored_event(vault, folder, 0);
        const auto opened = open(folder);
        ASSERT_TRUE(opened) << opened.message();
        code(*opened.value(), 4, 6);
    }

    result<std::unique_ptr<open_event>> open(const std::string& where) {
        return open_event::open(where, find_home_places(home.path()), loop);
    }
    static bool tells(const open_event& opened, const std::string& text) {
        const auto& all = opened.messages();
        return std::any_of(all.begin(), all.end(), [&](const auto& message) {
            return message.message().find(text) != std::string::npos;
        });
    }
    // Every file of the vault with what it holds.
    std::map<std::string, std::string> everything() const {
        std::map<std::string, std::string> files;
        for (const auto& entry : fs::recursive_directory_iterator(vault)) {
            const std::string path = entry.path().string();
            files[path] = entry.is_regular_file() ? file_bytes(path) : "";
        }
        return files;
    }

    temporary_folder home;
    const std::string vault = home / "Cup.VVault";
    const std::string folder = vault + "/Video Groups/Final";
    simulated_run_loop loop;
};

constexpr const char* damages[] = {
    "",
    "<plist>",
    "\xff\xfe\x00\x01 no text at all",
    "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>rows</key><array>",
};

TEST_F(damaged_event, a_damaged_record_or_timeline_opens_nothing_and_stays_as_it_is) {
    for (const char* name : {"/video group.plist", "/chron data.plist"}) {
        const std::string whole = file_bytes(folder + name);
        ASSERT_FALSE(whole.empty()) << name;
        for (const char* damage : damages) {
            put_file(folder + name, damage);
            const auto before = everything();
            {
                const auto opened = open(folder);
                EXPECT_FALSE(opened) << name << " " << damage;
                if (!opened) {
                    EXPECT_NE(opened.message().find(folder + name), std::string::npos) << opened.message();
                }
            }
            EXPECT_TRUE(everything() == before) << name << " " << damage;
        }
        // Put back, all is there again.
        put_file(folder + name, whole);
        const auto opened = open(folder);
        ASSERT_TRUE(opened) << opened.message();
        EXPECT_EQ(opened.value()->timeline().timeline().clip_count(), 1U);
    }
}

TEST_F(damaged_event, a_damaged_code_window_is_replaced_for_the_time_being_only) {
    const std::string path = folder + "/Logger/button dict.plist";
    for (const char* damage : damages) {
        fs::create_directories(path_folder(path));
        put_file(path, damage);
        {
            const auto opened = open(folder);
            ASSERT_TRUE(opened) << opened.message();
            EXPECT_TRUE(tells(*opened.value(), "Logger/button dict.plist")) << damage;
            code(*opened.value(), 10, 12);
            EXPECT_TRUE(opened.value()->save_all());
        }
        EXPECT_EQ(file_bytes(path), damage);
    }
    const auto opened = open(folder);
    ASSERT_TRUE(opened);
    EXPECT_EQ(opened.value()->timeline().timeline().clip_count(), 1 + std::size(damages));
}

// What a damaged file beside the buttons held is neither lost without a word nor written over.
TEST_F(damaged_event, a_damaged_file_beside_the_buttons_is_told_and_kept_when_it_is_replaced) {
    for (const char* name : {"logger info.plist", "logger offsets.plist", "logger.plist"}) {
        for (const char* damage : damages) {
            const std::string path = folder + "/Logger/" + name;
            put_file(path, damage);
            std::string kept = path;
            {
                const auto opened = open(folder);
                ASSERT_TRUE(opened) << opened.message();
                EXPECT_TRUE(tells(*opened.value(), path)) << name << " " << damage;
                auto& window = opened.value()->code_window_file();
                auto settings = window.window().settings;
                settings.scroller_offset_x += 5;
                window.set_settings(settings);
                auto changed = clip_button(*opened.value());
                changed.set_secs_in(changed.secs_in() + 1);
                auto part = plan_button(window.window(), changed);
                ASSERT_TRUE(part);
                ASSERT_TRUE(window.make({"", "", {*part}}));
                EXPECT_TRUE(opened.value()->save_all());
                for (const auto& one : window.conflicts()) {
                    if (one.path == path) kept = one.kept_as;
                }
            }
            const bool is_replaced = name != std::string("logger offsets.plist");
            EXPECT_EQ(kept != path, is_replaced) << name << " " << damage;
            EXPECT_EQ(file_bytes(kept), damage) << name;
            fs::remove(kept);
            const auto again = open(folder);
            ASSERT_TRUE(again);
            EXPECT_FALSE(tells(*again.value(), path)) << name;
        }
    }
}

TEST_F(damaged_event, a_vistel_that_is_broken_or_gone_keeps_its_place_and_the_other_opens) {
    struct row {
        const char* name;
        const char* damage;  // null: the file is gone
    };
    const row rows[] = {{"part 001.mp4", nullptr},
                        {"part 001.mp4", ""},
                        {"single video.plist", nullptr},
                        {"single video.plist", ""},
                        {"single video.plist", "<plist><dict>"}};
    for (const row& each : rows) {
        SCOPED_TRACE(std::string(each.name) + (each.damage ? " damaged" : " gone"));
        const std::string path = vault + "/Single Videos/A/" + each.name;
        const std::string whole = file_bytes(path);
        fs::remove(path);
        if (each.damage) put_file(path, each.damage);
        const auto before = everything();
        {
            const auto opened = open(folder);
            ASSERT_TRUE(opened) << opened.message();
            const open_event& event = *opened.value();
            const bool is_record = each.name == std::string("single video.plist");
            EXPECT_EQ(tells(event, "Single Videos/A/single video.plist"), is_record);
            if (is_record && each.damage) {
                EXPECT_TRUE(event.problem("A"));
            } else {
                // Where nothing but the record is missing, too, the movie is to be shown, which is none.
                ASSERT_TRUE(comes_about(loop, [&] { return bool(event.problem("A")); }));
                const std::string told = event.problem("A").message();
                EXPECT_NE(told.find("part 001.mp4"), std::string::npos) << told;
            }
            EXPECT_EQ(opened.value()->collection().vistels().size(), 2U);
            EXPECT_EQ(opened.value()->timeline().timeline().clip_count(), 1U);
        }
        EXPECT_TRUE(everything() == before);
        put_file(path, whole);
    }
}

// In a vault that is not listed, so that no start has looked through it.
TEST_F(damaged_event, what_killed_saves_left_in_its_folders_is_put_in_order_by_opening) {
    { const auto opened = open(folder); }  // its code window is saved
    const std::string vistel = vault + "/Single Videos/A/single video.plist";
    const std::string whole = file_bytes(vistel);
    std::vector<std::string> old;
    for (const auto& file :
         {folder + "/chron data.plist", folder + "/video group.plist", folder + "/Logger/button dict.plist",
          vault + "/Single Videos/B/single video.plist"}) {
        old.push_back(file + " temp file 7");
        put_file(old.back(), file_bytes(file));
        fs::last_write_time(old.back(), fs::file_time_type::clock::now() - std::chrono::hours(48));
    }
    fs::rename(vistel, vistel + " <previous> 8");
    {
        // Puts its own folder in order.
        const auto other = timeline_document::open(folder, loop);
        ASSERT_TRUE(other);
        EXPECT_TRUE(open(folder));
        for (const auto& path : old) EXPECT_EQ(fs::exists(path), path_folder(path) != folder) << path;
        EXPECT_FALSE(fs::exists(vistel)) << "another program may be saving it";
    }
    const auto opened = open(folder);
    ASSERT_TRUE(opened) << opened.message();
    EXPECT_TRUE(tells(*opened.value(), "single video.plist\" was put back"));
    EXPECT_EQ(opened.value()->problem("A").message().find("single video.plist"), std::string::npos);
    EXPECT_EQ(file_bytes(vistel), whole);
    for (const auto& path : old) EXPECT_FALSE(fs::exists(path)) << path;
}

// A copy of the folder as it is on the disk at some moment is what a program that is killed then leaves.
TEST_F(damaged_event, what_was_coded_before_the_program_was_killed_comes_back) {
    const std::string killed = vault + "/Video Groups/Killed";
    {
        const auto opened = open(folder);
        ASSERT_TRUE(opened);
        code(*opened.value(), 10, 12);
        code(*opened.value(), 14, 15);
        EXPECT_TRUE(opened.value()->undo().undo());
        ASSERT_TRUE(comes_about(loop, [&] { return opened.value()->logger().unrecorded() == 0; }));
        fs::copy(folder, killed, fs::copy_options::recursive);
    }
    {
        const auto opened = open(killed);
        ASSERT_TRUE(opened) << opened.message();
        EXPECT_GE(opened.value()->recovered_edits(), 3U);
        EXPECT_EQ(opened.value()->timeline().timeline().clip_count(), 2U);
        EXPECT_TRUE(opened.value()->timeline().timeline().live_clips().empty());
    }
    // It is told once.
    const auto again = open(killed);
    ASSERT_TRUE(again);
    EXPECT_EQ(again.value()->recovered_edits(), 0U);
    EXPECT_EQ(again.value()->timeline().timeline().clip_count(), 2U);
}

TEST(settings_limits, whatever_the_file_says_stays_within_reach) {
    const char* values[] = {"<real>nan</real>",      "<real>inf</real>",   "<real>-inf</real>",
                            "<real>1e308</real>",    "<real>-3</real>",    "<integer>99999999999</integer>",
                            "<string>loud</string>", "<real>0.0001</real>"};
    const std::pair<const char*, const char*> files[] = {
        {"application volume.plist", "application volume"},
        {"Playback/playback top speed.plist", "playback top speed"},
        {"Vault preferences/minimum free space for vault for warning.plist",
         "minimum vault free space percent (valid range 1-99, default 10)"}};
    for (const char* value : values) {
        const temporary_folder home;
        const auto places = find_home_places(home.path());
        for (const auto& [file, key] : files) {
            const std::string path = places.state_folder + "/" + file;
            fs::create_directories(path_folder(path));
            put_file(path, std::string("<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>") + key +
                               "</key>" + value + "</dict></plist>");
        }
        const double volume = load_application_volume(places);
        EXPECT_TRUE(volume >= 0 && volume <= 1) << value << " " << volume;
        const double speed = load_playback_top_speed(places).rate;
        EXPECT_TRUE(speed >= -8 && speed <= 64) << value << " " << speed;
        const int percent = load_minimum_free_space(places).percent;
        EXPECT_TRUE(percent >= 1 && percent <= 99) << value << " " << percent;
    }
}

}  // namespace
}  // namespace vistels
