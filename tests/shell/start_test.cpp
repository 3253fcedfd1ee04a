// SPDX-License-Identifier: GPL-3.0-or-later
// What happens before a window is there: options, the display, and where the window was.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "app/start/build_check.h"
#include "shell/keys/event_stamp.h"
#include "shell/program/application_options.h"
#include "shell/program/build_watch.h"
#include "shell/program/display_check.h"
#include "shell/program/qt_run_loop.h"
#include "shell/window/sleep_watch.h"
#include "shell/window/window_memory.h"
#include "support/patience.h"
#include "support/temporary_folder.h"
#include "util/safe_write.h"

namespace vistels {
namespace {

using testing::comes_true;
using testing::temporary_folder;

struct refused_options {
    const char* name;
    std::vector<std::string> arguments;
    std::string named;  // what the message must name
};

TEST(options, what_is_wrong_is_named) {
    const refused_options cases[] = {
        {"unknown", {"--fast"}, "--fast"},           {"value missing", {"--home"}, "--home"},
        {"value empty", {"--home="}, "--home"},      {"no theme", {"--theme", "blue"}, "blue"},
        {"half a size", {"--size", "1600"}, "1600"}, {"a size of nothing", {"--size", "0x100"}, "0x100"},
        {"a time before all", {"--at", "-3"}, "-3"}, {"no time", {"--at", "nan"}, "nan"},
    };
    for (const auto& one : cases) {
        const auto read = read_options(one.arguments);
        ASSERT_FALSE(read.ok()) << one.name;
        EXPECT_NE(read.message().find(one.named), std::string::npos) << one.name << ": " << read.message();
    }
}

TEST(options, are_read) {
    const auto read = read_options({"a.mp4", "--home=/h", "--theme", "light", "--size", "1600x1000",
                                    "--filter", "[RN]\"Shot\"", "--", "--b"});
    ASSERT_TRUE(read.ok()) << read.message();
    EXPECT_EQ(read.value().paths, (std::vector<std::string>{"a.mp4", "--b"}));
    EXPECT_EQ(read.value().home, "/h");
    EXPECT_EQ(read.value().theme, "light");
    EXPECT_EQ(read.value().filter, "[RN]\"Shot\"");
    EXPECT_EQ(read.value().width, 1600);
    EXPECT_EQ(read.value().height, 1000);
}

TEST(display, is_missed_only_when_it_is_needed) {
    struct line {
        std::map<std::string, std::string> set;
        bool missing;
    };
    const line cases[] = {
        {{}, true},
        {{{"DISPLAY", ":0"}}, false},
        {{{"WAYLAND_DISPLAY", "wayland-0"}}, false},
        {{{"QT_QPA_PLATFORM", "offscreen"}}, false},
        {{{"QT_QPA_PLATFORM", "xcb"}}, true},
        {{{"QT_QPA_PLATFORM", "wayland;xcb"}}, true},
    };
    for (const auto& one : cases) {
        const auto message = missing_display([&](const char* name) {
            const auto found = one.set.find(name);
            return found == one.set.end() ? std::string() : found->second;
        });
        ASSERT_EQ(message.has_value(), one.missing);
        if (message) {
            EXPECT_NE(message->find("vistels-cli"), std::string::npos);
        }
    }
}

TEST(input_clock, tells_the_moment_of_an_event_however_late_it_is_handled) {
    const double wrap = 4294967.296;  // where 32 bits of milliseconds begin anew
    struct handled {
        double happened;  // on the monotonic clock, seconds
        double late;
    };
    const handled events[] = {
        {5000, 0.04},       {5000.2, 0.0004}, {5001, 0.3},           {5002, 4},       {5900, 0.3},
        {9500, 2},          {9501, 0},        {wrap - 0.006, 0.016}, {wrap + 1, 0.3}, {wrap + 90'000, 0.25},
        {2 * wrap + 7, 0.3}};
    // The same clock, and others: behind, ahead, drifting.
    for (const auto& [offset, rate] :
         {std::pair(0.0, 1.0), {-4123.4567, 1.0}, {3.1e6, 1.0}, {777.7, 1.00001}}) {
        input_clock clock;
        for (const auto& [happened, late] : events) {
            const double stamp = offset + happened * rate;
            const double now = happened + late;
            const double told = clock.seconds_of(static_cast<std::uint64_t>(stamp * 1000), now);
            EXPECT_LE(told, now);
            // How late another clock's first event was is known when one comes with less delay, and for a
            // while.
            const bool is_learned = rate == 1 && happened > 5000.1 && happened < 10'000;
            EXPECT_NEAR(told, happened, offset == 0 || is_learned ? 0.0021 : late + 0.1) << offset;
        }
        EXPECT_EQ(clock.seconds_of(0, 5), 5) << "without a stamp";
    }
}

TEST(sleep_watch, calls_before_sleep_and_not_after_waking) {
    int calls = 0;
    sleep_watch watch([&] { ++calls; });
    EXPECT_GE(watch.metaObject()->indexOfSlot("about_to_sleep(bool)"), 0) << "the login manager's signal";
    watch.about_to_sleep(true);
    EXPECT_EQ(calls, 1);
    watch.about_to_sleep(false);
    EXPECT_EQ(calls, 1);
}

TEST(window_memory, comes_back) {
    const temporary_folder folder;
    const home_places places{folder.path(), folder.path()};
    window_memory memory;
    memory.place = {100, 40, 1600, 1000};
    memory.is_maximized = true;
    memory.side_bar_width = 240;
    memory.inspector_shown = false;
    memory.playback_health_shown = true;
    memory.tab = 1;
    memory.theme = "light";
    memory.folded_vaults = {"/a/Cup.VVault"};
    memory.work_sizes.set("rows", property_array{600, 300});
    window_memory other;
    other.place = {10, 20, 1100, 700};
    other.theme = "light";
    EXPECT_TRUE(load_window_memory(places, "R1").place.isNull());
    ASSERT_TRUE(save_window_memories(places, {{"R1", memory}, {"R2", other}}).ok());
    const window_memory behind = load_window_memory(places, "R2");
    EXPECT_EQ(behind.place, other.place);
    EXPECT_TRUE(behind.inspector_shown && !behind.is_maximized && behind.work_sizes.empty());
    EXPECT_EQ(behind.theme, "light");
    EXPECT_EQ(behind.folded_vaults, memory.folded_vaults);
    EXPECT_EQ(load_window_memory(places, "R1").place, memory.place);
    const window_memory read = load_window_memory(places, "of a file that knew one window");
    EXPECT_EQ(read.place, memory.place);
    EXPECT_TRUE(read.is_maximized);
    EXPECT_EQ(read.side_bar_width, 240);
    EXPECT_TRUE(read.side_bar_shown);
    EXPECT_FALSE(read.inspector_shown);
    EXPECT_TRUE(read.playback_health_shown && !behind.playback_health_shown);
    EXPECT_EQ(read.tab, 1);
    EXPECT_EQ(read.theme, "light");
    EXPECT_EQ(read.folded_vaults, memory.folded_vaults);
    EXPECT_EQ(read.work_sizes, memory.work_sizes);
}

TEST(window_memory, a_window_stays_within_reach) {
    const QRect screen(0, 30, 1920, 1050);
    const std::pair<QRect, QRect> cases[] = {
        {{100, 100, 800, 600}, {100, 100, 800, 600}},
        {{5000, 100, 800, 600}, {1120, 100, 800, 600}},
        {{-700, -500, 800, 600}, {0, 30, 800, 600}},
        {{0, 0, 4000, 3000}, {0, 30, 1920, 1050}},
    };
    for (const auto& [wanted, placed] : cases) EXPECT_EQ(place_on_screen(wanted, screen), placed);
}

TEST(window_memory, further_windows_are_cascaded_on_the_screen) {
    const QRect screen(0, 30, 1920, 1050);
    const QSize least(1024, 640);
    EXPECT_EQ(cascaded_place({100, 100, 1200, 800}, {}, least, screen), QRect(132, 132, 1200, 800));
    // As large as the screen: it becomes smaller rather than reach over the edge.
    EXPECT_EQ(cascaded_place(screen, {}, least, screen), QRect(32, 62, 1888, 1018));
    // Somewhere else altogether, such as on a screen that was taken away.
    EXPECT_TRUE(screen.contains(cascaded_place({5000, 100, 1200, 800}, {}, least, screen)));
    std::vector<QRect> all = {QRect(100, 100, 1200, 800)};
    for (int i = 0; i < 40; ++i) {
        const QRect next = cascaded_place(all.back(), all, least, screen);
        EXPECT_TRUE(screen.contains(next)) << i;
        EXPECT_TRUE(next.width() >= least.width() && next.height() >= least.height()) << i;
        const bool is_new = std::none_of(all.begin(), all.end(),
                                         [&](const QRect& one) { return one.topLeft() == next.topLeft(); });
        if (i < 12) {
            EXPECT_TRUE(is_new) << i;
        }
        all.push_back(next);
    }
}

TEST(build_watch, a_newer_build_is_told_once) {
    const temporary_folder home;
    const home_places places{home / "Home Vault.VVault", home / "Home Folder.VVault"};
    testing::put_file(home / "running", "this one");
    qt_run_loop loop;
    constexpr double often = 0.001;
    build_watch watch(places, 100, running_executable(home / "vistels", home / "running"), loop, often);
    std::vector<QString> told;
    QObject::connect(&watch, &build_watch::told, &watch,
                     [&](const user_message& message) { told.push_back(message.text); });
    for (const char* number : {"101", "102"}) {
        const std::string installed = std::string("Vistels build number: ") + number + ";";
        ASSERT_TRUE(safe_write_bytes(home / "vistels", installed));
        const auto is_noted = [&] {
            const auto stored = read_settings(places, build_number_file);
            return stored.number("build number available for download") == std::stod(number);
        };
        ASSERT_TRUE(comes_true([&] { return is_noted() && !told.empty() && told.back().contains(number); }));
    }
    EXPECT_EQ(told.size(), 2u);
}

}  // namespace
}  // namespace vistels
