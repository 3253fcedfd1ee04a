// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/close_vistel.h"

#include <gtest/gtest.h>

#include <cerrno>

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
        close_vistel_warning(vistel, "you"),
        "You did not create 'Wide'.\r\rIf you click 'Close Vistel' this will close the vistel and move the "
        "movie data to the trash.  The movie data will then not be available for others.");
}

TEST(close_vistel, moves_the_data_to_the_trash_and_back) {
    const stored_collection stored;
    const temporary_folder trash;
    auto collection = stored.load().collection;
    EXPECT_FALSE(close_vistel_for_good(collection, stored.folder(), "A", "you", false, trash.path()));
    EXPECT_EQ(collection.vistels().size(), 2U);
    const auto closed = close_vistel_for_good(collection, stored.folder(), "A", "you", true, trash.path());
    ASSERT_TRUE(closed) << closed.message();
    EXPECT_FALSE(is_folder(stored.vistel_folder("A")));
    EXPECT_TRUE(file_exists(closed.value().data->path + "/part 002.mp4"));
    EXPECT_EQ(stored.load().collection.vistels().size(), 1U);
    ASSERT_TRUE(reopen_closed_vistel(collection, stored.folder(), closed.value()));
    const auto again = stored.load();
    EXPECT_TRUE(again.messages.empty());
    EXPECT_EQ(again.collection.vistels().front()->uuid(), "A");
}

// Whichever call fails, either all is done or nothing, and the data is never lost.
TEST(close_vistel, a_failure_leaves_collection_and_data) {
    bool done = false;
    for (int failing = 1; !done; ++failing) {
        ASSERT_LT(failing, 500);
        const stored_collection stored;
        const temporary_folder trash;
        auto collection = stored.load().collection;
        failing_files files;
        files.set_fault([failing](int call) { return call == failing ? EIO : 0; });
        const auto closed =
            close_vistel_for_good(collection, stored.folder(), "A", "me", false, trash.path(), files);
        done = files.calls() < failing;
        const bool is_closed = closed.ok();
        EXPECT_EQ(is_folder(stored.vistel_folder("A")), !is_closed) << failing << closed.message();
        EXPECT_EQ(collection.vistels().size(), is_closed ? 1U : 2U) << failing;
        EXPECT_TRUE(is_closed || stored.load().messages.empty()) << failing;
    }
}

TEST(close_vistel, data_that_another_vistel_shows_stays) {
    const stored_collection stored;
    const temporary_folder trash;
    auto collection = stored.load().collection;
    collection.insert_vistel(2, collection.vistels().front());
    EXPECT_FALSE(close_vistel_for_good(collection, stored.folder(), "A", "me", true, trash.path()));
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
