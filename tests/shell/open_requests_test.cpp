// SPDX-License-Identifier: GPL-3.0-or-later
// What paths stand for, what the side bar lists, and how fast a shuttle goes.
#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "app/event/shuttle.h"
#include "app/start/open_requests.h"
#include "app/start/start_up.h"
#include "app/vaults/content_list.h"
#include "support/temporary_folder.h"
#include "util/file_system.h"

namespace vistels {
namespace {

using testing::put_file;
using testing::temporary_folder;

// A home with a vault that holds two collections, one of them with a code window.
struct vault_home : public ::testing::Test {
    vault_home() {
        places = {home / "Home Vault.VVault", home / "Home Folder.VVault"};
        EXPECT_TRUE(start_up(places, 1, 0).ok());
        for (const char* name : {"Match 10", "Match 2"})
            make(path_join("Video Groups", name), "video group.plist");
        make("Video Groups/Match 2", "chron data.plist");
        make("Video Groups/Match 2/Logger", "logger.plist");
        put_file(home / "a.mp4", "movie");
        put_file(home / "b.mov", "movie");
        put_file(home / "notes.txt", "text");
        EXPECT_TRUE(make_folders(home / "empty").ok());
    }
    void make(const std::string& folder, const char* file) {
        const std::string whole = path_join(places.home_vault, folder);
        ASSERT_TRUE(make_folders(whole).ok());
        put_file(path_join(whole, file),
                 "<?xml version=\"1.0\"?><plist version=\"1.0\"><dict><key>a</key><true/></dict></plist>");
    }
    std::string in_vault(const char* path) const { return path_join(places.home_vault, path); }

    temporary_folder home;
    home_places places;
};

TEST_F(vault_home, paths_are_what_they_stand_for) {
    struct line {
        std::vector<std::string> paths;
        open_request::kind what;
        std::string folder;
        std::size_t movies;
    };
    const std::string match = in_vault("Video Groups/Match 2");
    make("Timelines/Alone", "chron data.plist");
    const std::string alone = in_vault("Timelines/Alone");
    const line cases[] = {
        {{places.home_vault}, open_request::kind::vault, places.home_vault, 0},
        {{match}, open_request::kind::collection, match, 0},
        {{match + "/"}, open_request::kind::collection, match, 0},
        {{match + "/Logger"}, open_request::kind::collection, match, 0},
        {{match + "/video group.plist"}, open_request::kind::collection, match, 0},
        {{alone}, open_request::kind::timeline, alone, 0},
        {{alone + "/chron data.plist"}, open_request::kind::timeline, alone, 0},
        {{home / "b.mov", home / "a.mp4"}, open_request::kind::movies, "", 2},
        {{home.path()}, open_request::kind::movies, "", 2},
    };
    for (const auto& one : cases) {
        const auto wanted = what_to_open(one.paths);
        EXPECT_TRUE(wanted.refused.empty());
        ASSERT_EQ(wanted.found.size(), 1u) << one.paths.front();
        EXPECT_EQ(wanted.found.front().what, one.what);
        EXPECT_EQ(wanted.found.front().folder, one.folder);
        EXPECT_EQ(wanted.found.front().movies.size(), one.movies);
    }
    for (const std::string& path : {home / "gone.mp4", home / "notes.txt", home / "empty"}) {
        const auto wanted = what_to_open({path});
        EXPECT_TRUE(wanted.found.empty()) << path;
        ASSERT_EQ(wanted.refused.size(), 1u) << path;
        EXPECT_NE(wanted.refused.front().message().find(path_name(path)), std::string::npos);
    }
}

TEST_F(vault_home, several_paths_are_several_openings_and_movies_are_one) {
    const std::string match = in_vault("Video Groups/Match 2");
    const std::string other = in_vault("Video Groups/Match 10");
    const auto wanted = what_to_open({home / "a.mp4", match, home / "gone.mp4", home / "b.mov",
                                      match + "/Logger", places.home_vault, other});
    ASSERT_EQ(wanted.found.size(), 4u);
    EXPECT_EQ(wanted.found[0].movies, (std::vector<std::string>{home / "a.mp4", home / "b.mov"}));
    EXPECT_EQ(wanted.found[1].folder, match);
    EXPECT_EQ(wanted.found[2].what, open_request::kind::vault);
    EXPECT_EQ(wanted.found[3].folder, other);
    EXPECT_EQ(wanted.refused.size(), 1u);
    EXPECT_TRUE(what_to_open({}).found.empty());
}

TEST_F(vault_home, the_last_event_comes_back_or_else_the_first) {
    const std::string last = in_vault("Video Groups/Match 10");
    EXPECT_EQ(event_to_reopen(places, last), last);
    EXPECT_EQ(event_to_reopen(places, in_vault("Video Groups/Gone")), in_vault("Video Groups/Match 2"));
}

TEST_F(vault_home, new_collections_get_folders_of_their_own) {
    const auto name_of = [&](const char* name) {
        return path_name(new_collection_folder(places.home_vault, name));
    };
    EXPECT_EQ(name_of("Match 2"), "Match 2 2");
    EXPECT_EQ(name_of("Cup 1/2: final"), "Cup 1-2- final");
    EXPECT_EQ(name_of(".."), "Collection");
}

TEST_F(vault_home, the_list_shows_each_thing_once) {
    make("Timelines/Alone", "chron data.plist");
    make("Video Groups/Match 2/Second half", "chron data.plist");
    make("Video Groups/Match 2/Set pieces", "composer info.plist");
    make("Video Groups/Match 2/Shots", "Table.plist");
    make("Video Groups/Match 10/Passes", "Matrix.plist");
    const auto content = scan_vault(places.home_vault);
    ASSERT_TRUE(content.ok());
    const auto items = items_of(content.value().items);
    std::vector<std::pair<item_kind, std::string>> found;
    for (const auto& item : items) found.emplace_back(item.kind, item.name);
    const std::vector<std::pair<item_kind, std::string>> expected = {
        {item_kind::collection, "Match 2"},  {item_kind::collection, "Match 10"},
        {item_kind::timeline, "Alone"},      {item_kind::timeline, "Second half"},
        {item_kind::composer, "Set pieces"}, {item_kind::markup, "Match 2"},
        {item_kind::table, "Shots"},         {item_kind::matrix, "Passes"}};
    EXPECT_EQ(found, expected);
    EXPECT_EQ(items[2].opens, in_vault("Timelines/Alone"));
    EXPECT_EQ(items[3].opens, in_vault("Video Groups/Match 2/Second half"));
    EXPECT_EQ(items[5].opens, in_vault("Video Groups/Match 2"));
    for (const std::size_t kept_closed : {4, 6, 7}) EXPECT_EQ(items[kept_closed].opens, "");
}

TEST(shuttle, goes_faster_at_each_press_and_turns_at_once) {
    struct line {
        double rate;
        bool playing;
        int direction;
        double next;
    };
    const line cases[] = {{1, false, 1, 1},  {1, true, 1, 2},   {2, true, 1, 4},    {8, true, 1, 8},
                          {0.5, true, 1, 1}, {4, true, -1, -1}, {-1, true, -1, -2}, {-2, true, 1, 1},
                          {4, false, 1, 1},  {1, false, -1, -1}};
    for (const auto& one : cases) {
        EXPECT_EQ(next_shuttle_rate(one.rate, one.playing, one.direction, 8), one.next) << one.rate;
    }
    // On to the top speed, whatever it is, and no further.
    const double tops[] = {64, 5, 0.5};
    const std::vector<double> rates[] = {{1, 2, 4, 8, 16, 32, 64, 64}, {1, 2, 4, 5, 5}, {0.5, 0.5}};
    for (std::size_t i = 0; i < std::size(tops); ++i) {
        for (const int direction : {1, -1}) {
            double rate = direction;
            bool plays = false;
            for (const double next : rates[i]) {
                rate = next_shuttle_rate(rate, std::exchange(plays, true), direction, tops[i]);
                EXPECT_EQ(rate, direction * next);
            }
        }
    }
    const line slow[] = {{1, false, 1, 0.5},      {8, true, 1, 0.5},      {0.5, true, 1, 0.25},
                         {0.25, true, 1, 0.1},    {0.1, true, 1, 0.1},    {0.25, true, -1, -0.5},
                         {-0.5, true, -1, -0.25}, {0.25, false, -1, -0.5}};
    for (const auto& one : slow) {
        EXPECT_EQ(next_slow_rate(one.rate, one.playing, one.direction, 64), one.next) << one.rate;
    }
    EXPECT_EQ(next_shuttle_rate(0.1, true, 1, 64), 1);
    EXPECT_EQ(next_slow_rate(1, true, 1, 0.3), 0.3);
    EXPECT_EQ(looped(20, 1, 10, 20), 10);
    EXPECT_EQ(looped(10, -1, 10, 20), 20);
    EXPECT_EQ(looped(15, 1, 10, 20), 15);
    EXPECT_EQ(looped(15, 1, 10, 10), 15);
}

}  // namespace
}  // namespace vistels
