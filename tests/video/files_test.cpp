// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/video_coll_Files.h"

#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <set>

#include "media/movie_information.h"
#include "media/picture.h"
#include "support/small_movies.h"
#include "support/stored_collection.h"
#include "video/video_coll_Duplicate_funcs.h"
#include "video/video_coll_Pictures.h"

namespace vistels {
namespace {

using testing::file_bytes;
using testing::put_file;
using testing::stored_collection;
using testing::temporary_folder;
namespace fs = std::filesystem;

std::set<std::string> files_below(const std::string& folder) {
    std::set<std::string> found;
    for (const auto& entry : fs::recursive_directory_iterator(folder)) found.insert(entry.path().string());
    return found;
}

TEST(adding_movies, choices) {
    const struct {
        std::size_t movies;
        bool on_vistel;
        std::vector<const char*> titles;
        std::vector<const char*> explanations;
    } cases[] = {
        {1, false, {"Create A New Vistel"}, {"Create a new vistel for each file."}},
        {2,
         true,
         {"Create A New Vistel For Each File", "Create A New Vistel And Append Movies",
          "Append video files to this vistel."},
         {"Create a new vistel for each file.",
          "Create a single new vistel and add video files to this vistel.",
          "Append video files to this vistel."}},
    };
    for (const auto& one : cases) {
        const auto choices = adding_choices(one.movies, one.on_vistel);
        ASSERT_EQ(choices.size(), one.titles.size());
        for (std::size_t index = 0; index < choices.size(); ++index) {
            EXPECT_STREQ(choices[index].title, one.titles[index]);
            EXPECT_STREQ(choices[index].explanation, one.explanations[index]);
        }
    }
}

TEST(adding_movies, an_item_of_a_list_stands_for_its_movies) {
    const stored_collection stored;
    const auto parts = movies_of_item(stored.vistel_folder("A"));
    ASSERT_TRUE(parts);
    EXPECT_EQ(parts.value().size(), 2U);
    const temporary_folder folder;
    for (const char* name : {"take 10.MOV", "take 9.mp4", "notes.txt", ".hidden.mp4"})
        put_file(folder / name, "");
    EXPECT_EQ(movies_of_item(folder.path()).value(),
              (std::vector<std::string>{folder / "take 9.mp4", folder / "take 10.MOV"}));
    EXPECT_EQ(movies_of_item(folder / "notes.txt").value().size(), 1U);
    EXPECT_NE(movies_of_item(stored.folder()).message().find("File list item has no movie parts."),
              std::string::npos);
    fs::remove_all(stored.vistel_folder("B") + "camera 7.MOV");
    EXPECT_NE(movies_of_item(stored.vistel_folder("B")).message().find("There are no movie parts."),
              std::string::npos);
    EXPECT_FALSE(movies_of_item(folder / "none"));
}

TEST(bring_movie, a_link_a_copy_or_nothing) {
    const temporary_folder folder;
    const std::string bytes(std::size_t{9} << 20, 'm');
    put_file(folder / "from.mp4", bytes);
    job work;
    ASSERT_TRUE(bring_movie(folder / "from.mp4", folder / "link.mp4", work));
    EXPECT_EQ(fs::hard_link_count(folder / "from.mp4"), 2U);
    ASSERT_TRUE(bring_movie(folder / "from.mp4", folder / "copy.mp4", work, true));
    EXPECT_EQ(fs::hard_link_count(folder / "from.mp4"), 2U);
    EXPECT_EQ(file_bytes(folder / "copy.mp4"), bytes);
    put_file(folder / "taken.mp4", "mine");
    for (const bool as_copy : {false, true}) {
        EXPECT_FALSE(bring_movie(folder / "from.mp4", folder / "taken.mp4", work, as_copy));
        EXPECT_FALSE(bring_movie(folder / "none.mp4", folder / "new.mp4", work, as_copy));
    }
    EXPECT_EQ(file_bytes(folder / "taken.mp4"), "mine");
    job cancelled;
    cancelled.cancel();
    EXPECT_FALSE(bring_movie(folder / "from.mp4", folder / "new.mp4", cancelled, true));
    EXPECT_EQ(names_in_folder(folder.path()).size(), 4U);
}

TEST(copy_vistel_movie, gets_free_names_after_the_vistel) {
    const stored_collection stored;
    const temporary_folder desktop;
    auto collection = stored.load().collection;
    job work;
    const auto copy = [&](const char* uuid, const char* name) {
        const auto vistel = collection.find_vistel(uuid);
        vistel->set_name(name);
        std::vector<std::string> names;
        const auto copies = copy_vistel_movie(*vistel, desktop.path(), work);
        EXPECT_TRUE(copies) << copies.message();
        if (copies) {
            for (const auto& path : copies.value()) names.push_back(path_name(path));
        }
        return names;
    };
    EXPECT_EQ(copy("A", "Wide"), (std::vector<std::string>{"Wide 1.mp4", "Wide 2.mp4"}));
    EXPECT_EQ(copy("A", "Wide"), (std::vector<std::string>{"Wide 1 (2).mp4", "Wide 2 (2).mp4"}));
    EXPECT_EQ(copy("B", "../a/b"), std::vector<std::string>{"-a-b.MOV"});
    EXPECT_EQ(copy("B", ""), std::vector<std::string>{"Vistel.MOV"});
    const single_Vistel_CTR empty;
    EXPECT_NE(copy_vistel_movie(empty, desktop.path(), work).message().find("There are no movie parts."),
              std::string::npos);
}

TEST(duplicate_vistel, has_data_of_its_own) {
    const stored_collection stored;
    put_file(stored.vistel_folder("A") + "overlay 1.png", "picture");
    auto collection = stored.load().collection;
    const auto source = collection.find_vistel("A");
    source->set_manual_start_offset(-2.5);
    source->set_overlay(vistel_overlay{"overlay 1.png", {0, 0, 1, 1}, 1});
    auto stored_item = source->stored_item();
    stored_item.set("a key of later", 1);
    source->set_stored_item(stored_item);
    const std::string folder = path_folder(path_folder(stored.vistel_folder("A") + "x"));
    job work;
    const auto clone = duplicate_vistel(*source, {folder, "me", false}, work);
    ASSERT_TRUE(clone) << clone.message();
    add_new_vistels(collection, {clone.value()});
    ASSERT_TRUE(save_collection(collection, stored.folder()));
    const auto loaded = stored.load();
    EXPECT_TRUE(loaded.messages.empty());
    const auto made = loaded.collection.vistels().back();
    EXPECT_NE(made->uuid(), "A");
    EXPECT_EQ(made->number(), 3);
    EXPECT_EQ(made->manual_start_offset(), -2.5);
    EXPECT_EQ(made->parts().starts(), source->parts().starts());
    EXPECT_EQ(made->stored_item().integer("a key of later"), 1);
    EXPECT_EQ(file_bytes(overlay_path(*made)), "picture");
    fs::remove_all(stored.vistel_folder("A"));
    EXPECT_TRUE(file_exists(made->parts().parts[1].path));

    const auto before = files_below(folder);
    job cancelled;
    cancelled.cancel();
    EXPECT_FALSE(duplicate_vistel(*made, {folder, "me", false}, cancelled));
    EXPECT_EQ(files_below(folder), before);
}

TEST(remove_unfinished_copies, takes_what_nobody_writes_any_more) {
    const temporary_folder folder;
    for (const char* name : {"dead", "alive", "copying"}) fs::create_directory(folder / name);
    const auto old = [&](const std::string& name) {
        put_file(folder / name, "half");
        fs::last_write_time(folder / name, fs::file_time_type::clock::now() - std::chrono::hours(25));
    };
    old("dead/part 001.mp4 temp file 3");
    old("alive/part 002.mp4 temp file 3");
    for (const char* kept : {"alive/part 001.mp4", "alive/my movie.mp4 temp file 3", "alive/part 003.mp4"})
        old(kept);
    put_file(folder / "alive/single video.plist", "");
    put_file(folder / "copying/part 001.mp4 temp file 4", "half");
    remove_unfinished_copies(folder.path());
    remove_unfinished_copies(folder / "nothing");
    EXPECT_FALSE(fs::exists(folder / "dead"));
    EXPECT_FALSE(fs::exists(folder / "alive/part 002.mp4 temp file 3"));
    EXPECT_EQ(files_below(folder.path()).size(), 2U + 4 + 1);
}

TEST(add_new_vistels, shows_the_lowest_numbers_that_are_free) {
    video_collection_ROOT collection;
    const auto make = [] { return std::make_shared<single_Vistel_CTR>(); };
    add_new_vistels(collection, {make(), make(), make()});
    collection.remove_vistel(*collection.vistels()[1]);
    collection.vistels()[1]->set_vistel_number_displayed(0);  // shows its place, which is 2
    add_new_vistels(collection, {make(), make()});
    EXPECT_EQ(collection.vistels()[2]->vistel_number_displayed(), 3);
    EXPECT_EQ(collection.vistels()[3]->vistel_number_displayed(), 4);
}

#if VISTELS_HAVE_MEDIA

class new_vistel_files : public ::testing::Test {
  protected:
    new_vistel_files() {
        EXPECT_TRUE(testing::write_small_movie(home_ / "wide.mp4", 1));
        EXPECT_TRUE(testing::write_small_movie(home_ / "end.mov", 0.5));
        picture_pool pool;
        EXPECT_TRUE(write_png(*pool.make(8, 6), home_ / "board.png"));
        put_file(home_ / "broken.mp4", "no movie");
        fs::create_directories(folder());
    }
    std::string folder() const { return home_ / "Single Videos"; }
    result<vistel_list> make(std::vector<std::string> names, movies_as how) {
        for (auto& name : names) name = home_ / name;
        return make_vistels({folder(), "me", false}, names, how, work_);
    }

    temporary_folder home_;
    job work_;
};

TEST_F(new_vistel_files, one_for_each_or_one_of_all) {
    auto each = make({"wide.mp4", "end.mov", "board.png"}, movies_as::vistel_each);
    ASSERT_TRUE(each) << each.message();
    video_collection_ROOT collection;
    add_new_vistels(collection, each.value());
    const auto vistels = collection.vistels();
    for (std::size_t index = 0; index < 3; ++index) {
        EXPECT_EQ(vistels[index]->number(), static_cast<double>(index + 1));
        EXPECT_EQ(vistels[index]->creator(), "me");
    }
    EXPECT_EQ(path_name(vistels[1]->parts().parts[0].path), "part 001.mov");
    EXPECT_NEAR(vistels[1]->parts().duration(), 0.5, 0.01);
    EXPECT_EQ(vistels[1]->manual_start_offset(), 0);
    EXPECT_TRUE(vistels[2]->is_inserted_picture());
    EXPECT_FALSE(vistels[2]->manual_start_offset());
    const auto joined = make({"wide.mp4", "end.mov"}, movies_as::one_vistel);
    ASSERT_TRUE(joined);
    EXPECT_EQ(joined.value().front()->parts().parts.size(), 2U);
    discard(each.value());
    discard(joined.value());
    EXPECT_TRUE(names_in_folder(folder()).empty());
}

TEST_F(new_vistel_files, what_fails_or_is_cancelled_leaves_nothing) {
    const auto before = files_below(home_.path());
    EXPECT_FALSE(make({"wide.mp4", "broken.mp4"}, movies_as::vistel_each));
    EXPECT_FALSE(make({"wide.mp4", "none.mp4"}, movies_as::one_vistel));
    EXPECT_FALSE(make({"wide.mp4", "board.png"}, movies_as::one_vistel));
    work_.cancel();
    EXPECT_FALSE(make({"wide.mp4", "end.mov"}, movies_as::vistel_each));
    EXPECT_EQ(files_below(home_.path()), before);
}

TEST_F(new_vistel_files, movies_are_appended_behind_all_files_that_are_there) {
    const auto made = make({"wide.mp4", "end.mov"}, movies_as::one_vistel);
    ASSERT_TRUE(made);
    const auto& vistel = *made.value().front();
    fs::rename(vistel.data_folder() + "/part 002.mov", vistel.data_folder() + "/part 007.mov");
    const auto parts = bring_parts(vistel, {home_ / "wide.mp4"}, work_);
    ASSERT_TRUE(parts) << parts.message();
    EXPECT_EQ(path_name(parts.value().front().path), "part 008.mp4");
    EXPECT_NEAR(parts.value().front().part_duration, 1, 0.01);
    EXPECT_FALSE(bring_parts(vistel, {home_ / "end.mov", home_ / "broken.mp4"}, work_));
    discard(parts.value());
    EXPECT_EQ(names_in_folder(vistel.data_folder()).size(), 2U);
}

TEST_F(new_vistel_files, deinterlacing_puts_the_old_movie_aside) {
    const auto made = make({"wide.mp4"}, movies_as::vistel_each);
    ASSERT_TRUE(made);
    auto& vistel = *made.value().front();
    video_collection_ROOT collection;
    add_new_vistels(collection, made.value());
    ASSERT_TRUE(save_vistels(collection));
    const auto old = vistel.parts();
    const auto parts = deinterlaced_parts(vistel, work_);
    ASSERT_TRUE(parts) << parts.message();
    EXPECT_NEAR(probe_movie(parts.value().front().path).value().frame_rate, 20, 0.01);
    EXPECT_EQ(parts.value().front().part_duration, old.parts.front().part_duration);
    vistel.set_parts({parts.value()});
    ASSERT_TRUE(save_vistels(collection));
    EXPECT_EQ(names_in_folder(vistel.data_folder()),
              (std::vector<std::string>{"part 001 deinterlaced.mp4", "part 001.mp4", "single video.plist"}));
    const auto found = parts_in_folder(vistel.data_folder()).parts;
    ASSERT_EQ(found.size(), 1U);
    EXPECT_EQ(path_name(found.front().path), "part 001 deinterlaced.mp4");
    vistel.set_parts(old);
    ASSERT_TRUE(save_vistels(collection));
    EXPECT_EQ(parts_in_folder(vistel.data_folder()).parts.front().path, old.parts.front().path);
    EXPECT_EQ(parts_in_folder(vistel.data_folder()).parts.size(), 1U);
    work_.cancel();
    const auto before = files_below(home_.path());
    EXPECT_FALSE(deinterlaced_parts(vistel, work_));
    EXPECT_EQ(files_below(home_.path()), before);
}

TEST_F(new_vistel_files, overlay_pictures) {
    const auto made = make({"wide.mp4"}, movies_as::vistel_each);
    ASSERT_TRUE(made);
    auto& vistel = *made.value().front();
    for (const char* name : {"overlay 1.png", "overlay 2.png"}) {
        const auto overlay = bring_overlay(vistel, home_ / "board.png", work_);
        ASSERT_TRUE(overlay) << overlay.message();
        vistel.set_overlay(overlay.value());
        EXPECT_EQ(path_name(overlay_path(vistel)), name);
    }
    fs::copy(home_ / "broken.mp4", home_ / "broken.png");
    for (const char* name : {"wide.mp4", "broken.png", "none.png"}) {
        EXPECT_FALSE(bring_overlay(vistel, home_ / name, work_)) << name;
    }
    EXPECT_EQ(names_in_folder(vistel.data_folder()).size(), 3U);
}

#endif

}  // namespace
}  // namespace vistels
