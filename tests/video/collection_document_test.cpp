// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/collection_document.h"

#include <cerrno>
#include <condition_variable>
#include <mutex>

#include "support/failing_files.h"
#include "support/run_until.h"
#include "support/stored_collection.h"
#include "util/property_list.h"
#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

using testing::comes_about;
using testing::stored_collection;

// A volume that lets the collection's record wait until it is told, or refuses it.
class slow_volume : public testing::unsynced_files {
  public:
    int open(const std::string& path, int flags, int& descriptor) override {
        if (path_name(path).starts_with(collection_file_name) && flags != 0) {
            std::unique_lock lock(mutex_);
            ++writes_;
            changed_.notify_all();
            changed_.wait(lock, [this] { return is_open_; });
            if (refuses_) return EACCES;
        }
        return testing::unsynced_files::open(path, flags, descriptor);
    }
    void let_pass(bool passes, bool refuses = false) {
        const std::lock_guard lock(mutex_);
        is_open_ = passes;
        refuses_ = refuses;
        changed_.notify_all();
    }
    void wait_for_write() {
        std::unique_lock lock(mutex_);
        changed_.wait(lock, [this] { return writes_ > 0; });
    }
    int writes() {
        const std::lock_guard lock(mutex_);
        return writes_;
    }

  private:
    std::mutex mutex_;
    std::condition_variable changed_;
    int writes_ = 0;  // that were begun
    bool is_open_ = true;
    bool refuses_ = false;
};

class open_collection : public ::testing::Test {
  protected:
    open_collection() {
        document.take_up(stored.load());
        telling =
            document.saved.connect([this](const failure& problem) { told.push_back(problem.message()); });
    }
    // Gives the first vistel a name and one part less.
    void change(const std::string& name) {
        auto& vistel = *document.record().vistels().front();
        vistel.set_name(name);
        auto parts = vistel.parts();
        parts.parts.pop_back();
        vistel.set_parts(parts);
        document.note_change(true);
    }
    bool is_saved() {
        return comes_about(loop, [this] { return !document.has_unsaved_edits(); });
    }

    const stored_collection stored;
    slow_volume files;
    simulated_run_loop loop;
    collection_document document{stored.folder(), loop, files};
    std::vector<std::string> told;
    connection telling;
};

TEST_F(open_collection, a_record_that_another_program_wrote_meanwhile_is_kept_and_told) {
    std::vector<file_conflict> met;
    const connection conflicts =
        document.conflict.connect([&](const file_conflict& conflict) { met.push_back(conflict); });
    change("ours");
    document.save_soon();
    ASSERT_TRUE(is_saved());
    EXPECT_TRUE(met.empty());  // what it read and wrote itself is no stranger's

    auto theirs = stored.load().collection;
    theirs.set_name("theirs");
    ASSERT_TRUE(save_collection(theirs, stored.folder()));
    document.record().set_name("ours");
    document.note_change(false);
    document.save_soon();
    ASSERT_TRUE(is_saved());
    EXPECT_EQ(stored.load().collection.name(), "ours");
    ASSERT_EQ(met.size(), 1u);
    EXPECT_EQ(met[0].path, path_join(stored.folder(), collection_file_name));
    const auto kept = read_property_list_file(met[0].kept_as);
    ASSERT_TRUE(kept) << kept.message();
    EXPECT_EQ(read_collection(*kept.value().dictionary()).name(), "theirs");
}

TEST_F(open_collection, changes_made_while_a_save_runs_become_one_that_follows) {
    files.let_pass(false);
    change("first");
    document.save_soon();
    files.wait_for_write();  // and the main thread goes on
    change("second");
    document.save_soon();
    for (int n = 0; n < 20; ++n) {
        document.record().set_volume(n * 0.05);
        document.note_change(false);
        document.save_soon();
    }
    EXPECT_TRUE(told.empty());
    files.let_pass(true);
    ASSERT_TRUE(comes_about(loop, [this] { return told.size() == 1; }));
    const auto between = stored.load().collection;
    EXPECT_EQ(between.vistels().front()->name(), "first");
    EXPECT_EQ(between.volume(), 1);
    loop.advance(2);
    ASSERT_TRUE(is_saved());
    EXPECT_EQ(told, (std::vector<std::string>{"", ""}));
    EXPECT_EQ(files.writes(), 2);
    const auto found = stored.load().collection;
    EXPECT_EQ(found.volume(), 19 * 0.05);
    EXPECT_EQ(found.vistels().front()->name(), "second");
    // Both of its movies, taken out one in each save, are known as unused: neither comes back as a part.
    EXPECT_TRUE(found.vistels().front()->parts().parts.empty());
    EXPECT_EQ(unused_movies(document.record().vistels().front()->stored_vistel()).size(), 2U);
}

TEST_F(open_collection, what_cannot_be_saved_is_told_and_tried_again) {
    files.let_pass(true, true);
    change("first");
    loop.advance(2);
    ASSERT_TRUE(comes_about(loop, [this] { return !told.empty(); }));
    EXPECT_NE(told.back().find(collection_file_name), std::string::npos);
    EXPECT_FALSE(document.save_now());
    EXPECT_TRUE(document.has_unsaved_edits());
    files.let_pass(true);
    ASSERT_TRUE(comes_about(loop, [this] {
        loop.advance(0.1);
        return !document.has_unsaved_edits();
    }));
    EXPECT_EQ(told.back(), "");
    EXPECT_EQ(stored.load().collection.vistels().front()->name(), "first");
}

// Values that are no edits are saved when they are asked for, once.
TEST_F(open_collection, values_are_saved_where_they_differ) {
    document.note_values();
    EXPECT_FALSE(document.has_unsaved_edits());
    document.record().set_movie_time(7);
    loop.advance(60);
    EXPECT_FALSE(document.has_unsaved_edits());
    document.note_values();
    EXPECT_TRUE(document.save_now());
    EXPECT_EQ(stored.load().collection.movie_time(), 7);
    const int writes = files.writes();
    document.note_values();
    EXPECT_TRUE(document.save_now());
    EXPECT_EQ(files.writes(), writes);
    // A block keeps it from the files, and is told.
    {
        const saving_block block(document.record());
        change("blocked");
        const auto before = testing::file_bytes(stored.folder() + "/video group.plist");
        EXPECT_FALSE(document.save_now());
        EXPECT_EQ(testing::file_bytes(stored.folder() + "/video group.plist"), before);
    }
    EXPECT_TRUE(document.save_now());
    EXPECT_EQ(stored.load().collection.vistels().front()->name(), "blocked");
}

}  // namespace
}  // namespace vistels
