// SPDX-License-Identifier: GPL-3.0-or-later
#include "document/editable_document.h"

#include <gtest/gtest.h>

#include "support/run_until.h"
#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

using testing::comes_about;

inline constexpr failure_of<> not_here{"not here", "not here"};
inline constexpr failure_of<a_text> not_written{"not written", "%1 failed"};

// A document whose files are a list of the revisions that were written.
class listed_document : public editable_document {
  public:
    listed_document(run_loop& loop, std::string name, std::vector<std::string>& written)
        : editable_document(loop), name_(std::move(name)), written_(written) {}
    ~listed_document() override { end_saving(); }

    document_id id() const override { return {document_kind::composer, name_}; }
    result<void> make(document_edit) override { return not_here(); }
    bool is_read_only() const override { return false; }
    const failure& read_only_reason() const override { return none_; }
    bool is_held_elsewhere() const override { return false; }
    std::function<result<void>()> edit_sync() override {
        return [] { return result<void>(); };
    }
    void edit() { note_edit(); }
    void edit_on_record() { note_edit_on_record(); }
    bool fails = false;

  private:
    result<save_work> take_save() override {
        const std::string revision = name_ + std::to_string(this->revision());
        return save_work{[this, revision, fail = fails](std::vector<file_conflict>&) -> result<void> {
                             if (fail) return not_written(revision);
                             written_.push_back(revision);  // while the main thread waits
                             return {};
                         },
                         {}};
    }
    bool may_save() override { return true; }

    const std::string name_;
    const failure none_;
    std::vector<std::string>& written_;
};

class documents : public ::testing::Test {
  protected:
    documents() {
        keeper.keep_on_record(*kept);
        telling = keeper.saved.connect([this](const failure& problem) { told.push_back(problem.message()); });
    }
    ~documents() override {
        if (kept) keeper.let_go(*kept);
    }

    // While time goes on.
    bool comes_later(const std::function<bool()>& condition) {
        return comes_about(loop, [&] {
            loop.advance(0.1);
            return condition();
        });
    }

    simulated_run_loop loop;
    std::vector<std::string> written;
    listed_document keeper{loop, "keeper", written};
    std::unique_ptr<listed_document> kept = std::make_unique<listed_document>(loop, "kept", written);
    std::vector<std::string> told;
    connection telling;
};

// Whether somebody waits for it or not: the keeper's file comes after what its journal holds of others.
TEST_F(documents, a_keeper_is_saved_after_what_is_on_record_with_it) {
    for (const bool waits : {true, false}) {
        written.clear();
        keeper.edit();
        kept->edit_on_record();
        if (waits) {
            EXPECT_TRUE(keeper.save_now());
        } else {
            keeper.save_soon();
            EXPECT_TRUE(comes_about(loop, [this] { return !keeper.has_unsaved_edits(); }));
        }
        const std::string count = waits ? "1" : "2";
        EXPECT_EQ(written, (std::vector<std::string>{"kept" + count, "keeper" + count}));
    }
    // What comes to the other one later is not waited for.
    keeper.edit();
    EXPECT_TRUE(keeper.save_now());
    EXPECT_EQ(written.back(), "keeper3");
}

TEST_F(documents, what_is_on_record_alone_keeps_the_keeper_from_being_saved) {
    keeper.edit();
    kept->edit_on_record();
    kept->fails = true;
    EXPECT_EQ(keeper.save_now().message(), "kept1 failed");
    EXPECT_EQ(told.back(), "kept1 failed");
    EXPECT_TRUE(comes_later([this] { return told.size() > 2; })) << "it is tried again";
    EXPECT_TRUE(written.empty());
    kept->fails = false;
    EXPECT_TRUE(comes_later([this] { return !keeper.has_unsaved_edits(); }));
    EXPECT_EQ(told.back(), "");
    EXPECT_EQ(written, (std::vector<std::string>{"kept1", "keeper1"}));
    // One that goes unsaved leaves its edits to the journal for good.
    kept->edit_on_record();
    keeper.edit();
    keeper.let_go(*kept);
    kept.reset();
    EXPECT_FALSE(keeper.save_now());
    loop.advance(60);
    EXPECT_EQ(written.size(), 2U);
}

// What else is to be saved of a document is its own business, also while another one is waited for.
TEST_F(documents, what_the_journal_does_not_hold_is_not_waited_for) {
    listed_document other(loop, "other", written);
    keeper.keep_on_record(other);
    kept->fails = true;
    for (const bool waits : {true, false}) {
        written.clear();
        kept->edit();
        other.edit_on_record();
        keeper.edit();
        if (waits) {
            EXPECT_TRUE(keeper.save_now());
        } else {
            kept->save_soon();
            keeper.save_soon();
            EXPECT_TRUE(comes_later([this] { return !keeper.has_unsaved_edits(); }));
        }
        const std::string count = waits ? "1" : "2";
        EXPECT_EQ(written, (std::vector<std::string>{"other" + count, "keeper" + count}));
    }
    EXPECT_TRUE(kept->has_unsaved_edits());
    EXPECT_TRUE(std::all_of(told.begin(), told.end(), [](const auto& one) { return one.empty(); }));
    // Nor does it keep the journal when it goes.
    keeper.let_go(other);
    keeper.let_go(*kept);
    kept.reset();
    keeper.edit();
    EXPECT_TRUE(keeper.save_now());
}

// The times of a file's saves: a second after the last edit, ten after the first.
TEST_F(documents, a_row_of_edits_is_saved_once) {
    for (int n = 0; n < 12; ++n) {
        keeper.edit();
        loop.advance(0.9);
        if (n == 10) {
            EXPECT_TRUE(written.empty());
        }
    }
    EXPECT_TRUE(comes_about(loop, [this] { return told.size() == 1; }));
    EXPECT_EQ(written, (std::vector<std::string>{"keeper12"}));
}

}  // namespace
}  // namespace vistels
