// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/clip_filtering.h"
#include "app/event/clip_playlist.h"

#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "app/event/undo_stack.h"
#include "support/opened_timeline.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "util/simulated_run_loop.h"

namespace vistels {

namespace {

using testing::clip_of;
using testing::qualifier_of;
using testing::row_of;

constexpr std::chrono::seconds patience{60};  // only a failing test waits for so long

class filtering : public ::testing::Test {
  protected:
    filtering() : document(testing::opened(folder.path(), loop)) {
        apply({operation::insert_row{0, row_of("A", "Attack")},
               operation::insert_row{1, row_of("D", "Defence")}, insert("A", "a1", 0, "Goal"),
               insert("A", "a2", 20, "Shot"), insert("D", "d1", 10, "Goal kick"),
               insert("D", "d2", 30, "Foul")});
        filter = std::make_unique<clip_filtering>(*document, loop);
        heard = filter->changed.connect([this](bool marks) { marks_told += marks ? 1 : 0; });
    }

    static operation::insert_clip insert(const std::string& row, const std::string& uuid, double start,
                                         const std::string& name) {
        sxy_CLIP clip = clip_of(uuid, start, start + 5);
        clip.set_qualifiers({qualifier_of(uuid + " q", name)});
        return {shared_text(row), clip};
    }
    static operation::change_clip change(const std::string& clip, const char* key, property_value value) {
        operation::change_clip made{clip, {}, {}};
        made.set.add(key, std::move(value));
        return made;
    }
    static operation::change_row rename(const std::string& row, const std::string& name) {
        operation::change_row made{shared_text(row), {}, {}};
        made.set.add("row_name", name);
        return made;
    }
    void apply(std::vector<operation::any> operations) {
        const auto applied = document->apply({"edit", "", std::move(operations)});
        ASSERT_TRUE(applied) << applied.message();
    }

    // Until the job that runs, or is about to, has been put in place.
    void wait() {
        const auto given_up = std::chrono::steady_clock::now() + patience;
        while (filter->standing().is_judging) {
            ASSERT_TRUE(std::chrono::steady_clock::now() < given_up)
                << "not judged: " << filter->standing().typed;
            loop.advance(clip_filtering::typing_pause_seconds);
            std::this_thread::yield();
        }
    }
    void apply_and_wait(const std::string& text) {
        filter->apply(text);
        wait();
    }

    // The clips that pass by their marks, by row; those with a marked qualifier are starred.
    std::string passing() const {
        std::string all;
        for (const auto& row : document->timeline().rows()) {
            for (const auto& clip : row->clips()) {
                const auto qualifiers = clip->qualifiers();
                const bool marked = std::any_of(qualifiers->begin(), qualifiers->end(),
                                                [](const auto& item) { return item.filtered_in(); });
                if (clip->filtered_in()) all += clip->id() + (marked ? "* " : " ");
            }
        }
        if (!all.empty()) all.pop_back();
        return all;
    }
    std::string counts() const {
        return std::to_string(filter->standing().passing) + " of " + std::to_string(filter->standing().total);
    }

    testing::temporary_folder folder;
    simulated_run_loop loop;
    std::unique_ptr<timeline_document> document;
    std::unique_ptr<clip_filtering> filter;
    connection heard;
    int marks_told = 0;
};

TEST_F(filtering, follows_the_typing_after_a_pause) {
    EXPECT_EQ(counts(), "4 of 4");
    filter->type("Sho");
    loop.advance(clip_filtering::typing_pause_seconds * 0.9);
    filter->type("Shot");
    loop.advance(clip_filtering::typing_pause_seconds * 0.9);
    EXPECT_EQ(passing(), "a1 a2 d1 d2");
    EXPECT_TRUE(filter->standing().is_judging);
    EXPECT_EQ(filter->standing().typed, "Shot");
    EXPECT_FALSE(filter->is_on());
    wait();
    EXPECT_EQ(passing(), "a2*");
    EXPECT_EQ(counts(), "1 of 4");
    EXPECT_EQ(filter->standing().text, "Shot");
    EXPECT_EQ(marks_told, 1);
    // The empty text takes the filter away at once.
    filter->type("");
    EXPECT_EQ(passing(), "a1 a2 d1 d2");
    EXPECT_EQ(counts(), "4 of 4");
    EXPECT_FALSE(filter->is_on() || filter->standing().is_judging);
    EXPECT_EQ(marks_told, 2);
}

TEST_F(filtering, a_later_text_takes_the_place_of_a_job) {
    filter->apply("Shot");
    filter->apply("Foul");
    filter->type("Go");
    EXPECT_EQ(passing(), "a1 a2 d1 d2");
    wait();
    EXPECT_EQ(passing(), "a1* d1*");
    EXPECT_EQ(marks_told, 1);
    // One that is cleared while it runs leaves nothing behind.
    filter->apply("Shot");
    filter->clear();
    EXPECT_EQ(passing(), "a1 a2 d1 d2");
    filter->apply("Foul");
    filter.reset();
    loop.run_posted();
    EXPECT_EQ(passing(), "a1 a2 d1 d2");
}

TEST_F(filtering, a_wrong_text_leaves_the_marks_of_the_last_good_one) {
    apply_and_wait("Goal");
    EXPECT_EQ(passing(), "a1* d1*");
    for (const char* wrong : {"\"Go", "[XX]\"Goal\"", "(\"a\""}) {
        filter->type(wrong);
        wait();
        EXPECT_EQ(passing(), "a1* d1*");
        EXPECT_EQ(filter->standing().text, "Goal");
        EXPECT_EQ(filter->standing().typed, wrong);
        EXPECT_FALSE(filter->standing().problems.empty());
        EXPECT_EQ(counts(), "2 of 4");
    }
    apply_and_wait("Shot");
    EXPECT_TRUE(filter->standing().problems.empty());
    EXPECT_EQ(passing(), "a2*");
}

TEST_F(filtering, clips_are_judged_when_they_come_or_change) {
    apply_and_wait("(\"Goal\" & \"\u272D\u272D*\") | [NT]\"*late*\" | [RN]\"Press*\"");
    EXPECT_EQ(passing(), "");
    struct step {
        std::vector<operation::any> edit;
        const char* passing;
        const char* counts;
    };
    clip_note note;
    note.note_string = "too late";
    property_dictionary note_values = write_clip_note(note);
    operation::change_clip unset{"a1", {}, {std::string("stars")}};
    const std::vector<step> steps{
        {{change("a1", "stars", 3)}, "a1*", "1 of 4"},
        {{change("d2", "notes_dict", note_values)}, "a1* d2", "2 of 4"},
        {{unset}, "d2", "1 of 4"},
        {{change("a2", "stars", 2)}, "d2", "1 of 4"},
        {{operation::insert_qualifier{"a2", 0, qualifier_of("new", "Goal")}}, "a2* d2", "2 of 4"},
        {{operation::remove_qualifier{"a2", "new"}}, "d2", "1 of 4"},
        {{rename("A", "Pressing")}, "a1* a2 d2", "3 of 4"},
        {{operation::move_clip{"d1", shared_text("A")}}, "a1* d1 a2 d2", "4 of 4"},
        {{operation::move_row{shared_text("D"), 0}}, "d2 a1* d1 a2", "4 of 4"},
        {{rename("A", "Attack")}, "d2", "1 of 4"},
        {{operation::remove_clip{"d2"}}, "", "0 of 3"},
    };
    for (const auto& one : steps) {
        const int told = marks_told;
        apply(one.edit);
        EXPECT_EQ(passing(), one.passing);
        EXPECT_EQ(counts(), one.counts);
        EXPECT_GT(marks_told, told);
    }
}

TEST_F(filtering, a_growing_clip_is_judged_when_it_ends) {
    apply_and_wait("Foul");
    sxy_CLIP growing = clip_of("g", 60, 60);
    apply({operation::begin_clip{shared_text("A"), growing}});
    apply({operation::insert_qualifier{"g", 0, qualifier_of("gq", "Goal")}});
    EXPECT_TRUE(document->timeline().find_clip("g")->clip->filtered_in());
    EXPECT_EQ(counts(), "1 of 4");
    apply({operation::finish_clip{"g", 60, 65}});
    EXPECT_FALSE(document->timeline().find_clip("g")->clip->filtered_in());
    EXPECT_EQ(counts(), "1 of 5");
}

TEST_F(filtering, undo_brings_back_clips_as_the_filter_sees_them_now) {
    undo_stack undo(*document, loop);
    apply_and_wait("Foul");
    apply({operation::remove_clip{"a1"}});
    apply({operation::insert_qualifier{"a2", 0, qualifier_of("new", "Foul")}});
    EXPECT_EQ(passing(), "a2* d2*");
    apply_and_wait("Goal");
    EXPECT_EQ(passing(), "d1*");
    ASSERT_TRUE(undo.undo());
    EXPECT_EQ(passing(), "d1*");
    ASSERT_TRUE(undo.undo());
    EXPECT_EQ(passing(), "a1* d1*");
    ASSERT_TRUE(undo.redo());
    EXPECT_EQ(passing(), "d1*");
    // Without a filter it passes, whatever the filter of its time said.
    filter->clear();
    ASSERT_TRUE(undo.undo());
    EXPECT_EQ(passing(), "a1 a2 d1 d2");
    EXPECT_EQ(counts(), "4 of 4");
}

TEST_F(filtering, what_passes_is_listed_by_start) {
    apply_and_wait("(\"Goal*\" | \"Foul\")");
    std::vector<std::string> clips;
    for (const auto& one : clips_that_pass(document->timeline(), filter->verdicts()))
        clips.push_back(one.uuid);
    EXPECT_EQ(clips, (std::vector<std::string>{"a1", "d1", "d2"}));
}

// For the thread sanitizer: a job reads its snapshot while clips are edited and marked here.
TEST_F(filtering, jobs_run_beside_edits_and_marks) {
    std::vector<operation::any> many;
    for (int n = 0; n < 3000; ++n) {
        many.push_back(
            insert(n % 2 == 0 ? "A" : "D", "m" + std::to_string(n), 100 + n, n % 3 == 0 ? "Goal" : "Shot"));
    }
    apply(std::move(many));
    apply_and_wait("Goal");
    for (int round = 0; round < 20; ++round) {
        filter->apply(round % 2 == 0 ? "[RN]\"Attack\" & \"Shot\"" : "Goal");
        for (int n = 0; n < 20; ++n) {
            const std::string clip = "m" + std::to_string((round * 131 + n * 17) % 3000);
            apply({operation::insert_qualifier{
                clip, 0, qualifier_of(clip + std::to_string(round * 100 + n), "Shot")}});
            document->timeline().find_clip(clip)->clip->set_selected(true);
            loop.run_posted();
        }
        if (round % 5 == 4) filter->clear();
    }
    apply_and_wait("(\"Goal*\")");
    EXPECT_EQ(filter->standing().total, 3004U);
    EXPECT_EQ(filter->standing().passing, 1002U);
}

}  // namespace

}  // namespace vistels
