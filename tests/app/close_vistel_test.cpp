// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/close_vistel.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <functional>

#include "support/failing_files.h"
#include "support/stored_collection.h"

namespace vistels {
namespace {

using testing::failing_files;
using testing::stored_collection;
using testing::temporary_folder;

TEST(close_vistel, only_who_made_it_is_not_asked) {
    single_Vistel_CTR vistel;
    vistel.set_name("Wide");
    EXPECT_FALSE(close_vistel_warning(vistel, "me"));
    vistel.set_creator("me");
    EXPECT_FALSE(close_vistel_warning(vistel, "me"));
    EXPECT_EQ(
        close_vistel_warning(vistel, "you").message(),
        "You did not create 'Wide'.\r\rIf you click 'Close Vistel' this will close the vistel and move the "
        "movie data to the trash.  The movie data will then not be available for others.");
}

// Makes changes of a stored collection that has no timeline, and saves it.
std::function<result<void>(const collection_change&)> taker(video_collection_ROOT& collection,
                                                            const stored_collection& stored,
                                                            file_system& files = machine_files()) {
    return [&](const collection_change& change) -> result<void> {
        auto copy = detached_copy(collection);
        if (auto changed = change.change(copy); !changed) return changed;
        auto saved = save_collection(copy, stored.folder(), files);
        if (saved) collection = copy;
        return saved;
    };
}

TEST(close_vistel, takes_the_vistel_out_and_moves_its_data_to_the_trash) {
    const stored_collection stored;
    const temporary_folder trash;
    auto collection = stored.load().collection;
    collection.set_vistel_for_sound("A");
    const auto take_out = taker(collection, stored);
    EXPECT_FALSE(close_vistel_for_good(collection, {"A", "you", false, trash.path()}, take_out));
    EXPECT_EQ(collection.vistels().size(), 2U);
    const auto closed = close_vistel_for_good(collection, {"A", "you", true, trash.path()}, take_out);
    ASSERT_TRUE(closed) << closed.message();
    EXPECT_FALSE(is_folder(stored.vistel_folder("A")));
    EXPECT_TRUE(file_exists(closed.value().data->path + "/part 002.mp4"));
    EXPECT_EQ(stored.load().collection.vistels().size(), 1U);
    EXPECT_EQ(stored.load().collection.vistel_for_sound(), "");
}

// Whichever call fails, the data is where the collection says, or stays and is told.
TEST(close_vistel, a_failure_loses_no_data) {
    bool done = false;
    for (int failing = 1; !done; ++failing) {
        ASSERT_LT(failing, 500);
        const stored_collection stored;
        const temporary_folder trash;
        auto collection = stored.load().collection;
        failing_files files;
        files.set_fault([failing](int call) { return call == failing ? EIO : 0; });
        const auto closed = close_vistel_for_good(collection, {"A", "me", false, trash.path()},
                                                  taker(collection, stored, files), files);
        done = files.calls() < failing;
        const bool is_in_trash = closed && closed.value().data;
        EXPECT_EQ(is_folder(stored.vistel_folder("A")), !is_in_trash) << failing << closed.message();
        EXPECT_EQ(collection.vistels().size(), closed ? 1U : 2U) << failing;
        EXPECT_TRUE(stored.load().messages.empty()) << failing;
        EXPECT_EQ(is_in_trash, closed && !closed.value().problem) << failing;
    }
}

TEST(close_vistel, data_that_another_vistel_shows_stays) {
    const stored_collection stored;
    const temporary_folder trash;
    auto collection = stored.load().collection;
    collection.insert_vistel(2, collection.vistels().front());
    EXPECT_FALSE(
        close_vistel_for_good(collection, {"A", "me", true, trash.path()}, taker(collection, stored)));
    EXPECT_TRUE(is_folder(stored.vistel_folder("A")));
}

TEST(close_vistel, unused_movies_go_to_the_trash) {
    const stored_collection stored;
    const temporary_folder trash;
    auto collection = stored.load().collection;
    const auto vistel = collection.find_vistel("A");
    auto parts = vistel->parts();
    parts.parts.pop_back();
    vistel->set_parts(parts);
    ASSERT_TRUE(save_collection(collection, stored.folder()));
    testing::put_file(stored.vistel_folder("A") + "part 009.mp4 temp file 12", "half");
    testing::put_file(stored.vistel_folder("A") + "notes temp file 12", "mine");
    const auto moved = trash_unused_movies(collection, trash.path());
    ASSERT_TRUE(moved);
    ASSERT_EQ(moved.value().size(), 2U);
    EXPECT_EQ(testing::file_bytes(moved.value().front().path), "movie");
    EXPECT_TRUE(stored.load().messages.empty());
}

}  // namespace
}  // namespace vistels
