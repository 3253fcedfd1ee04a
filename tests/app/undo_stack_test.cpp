// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/undo_stack.h"

#include <gtest/gtest.h>

#include <random>

#include "logger/coding.h"
#include "support/opened_timeline.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

using testing::clip_of;
using testing::temporary_folder;

operation::insert_row row(const std::string& uuid) {
    return {9, testing::row_of(uuid, uuid)};
}

operation::change_clip change(const std::string& uuid, const char* key, property_value value) {
    operation::change_clip made{uuid, {}, {}};
    made.set.add(key, std::move(value));
    return made;
}

operation::insert_qualifier stamp(const std::string& clip, const std::string& qualifier) {
    return {clip, 9, testing::qualifier_of(qualifier, qualifier)};
}

class undo : public ::testing::Test {
  protected:
    undo() {
        document = testing::opened(folder.path(), loop);
        apply({"setup", "", {row("R"), operation::insert_clip{shared_text("R"), clip_of("A", 0, 10)}}});
        stack = std::make_unique<undo_stack>(*document, loop);
    }

    void apply(timeline_edit edit) {
        const auto applied = document->apply(std::move(edit));
        EXPECT_TRUE(applied) << applied.message();
    }
    void apply(const std::string& name, operation::any one) { apply({name, name, {std::move(one)}}); }

    std::string state() const { return testing::state_text(document->timeline()); }
    bool has(const std::string& uuid) const { return document->timeline().find_clip(uuid).has_value(); }

    temporary_folder folder;
    simulated_run_loop loop;
    std::unique_ptr<timeline_document> document;
    std::unique_ptr<undo_stack> stack;
};

TEST_F(undo, every_step_is_taken_back_and_done_again) {
    std::vector<std::string> states{state()};
    const std::vector<timeline_edit> edits{
        {"one", "", {row("S"), operation::insert_clip{shared_text("S"), clip_of("B", 3, 4)}}},
        {"two", "", {stamp("B", "Q"), change("A", "stars", 3)}},
        {"three", "", {operation::move_clip{"A", shared_text("S")}, operation::remove_clip{"B"}}},
        {"four", "", {operation::move_row{shared_text("S"), 0}}},
    };
    for (const auto& edit : edits) {
        apply(edit);
        EXPECT_EQ(stack->undo_name(), edit.name);
        states.push_back(state());
    }
    for (int round = 0; round < 2; ++round) {
        for (std::size_t at = edits.size(); at-- > 0;) {
            EXPECT_TRUE(stack->undo());
            EXPECT_EQ(state(), states[at]) << edits[at].name;
            EXPECT_EQ(stack->redo_name(), edits[at].name);
        }
        EXPECT_FALSE(stack->can_undo());
        EXPECT_TRUE(stack->undo());
        for (std::size_t at = 0; at < edits.size(); ++at) {
            EXPECT_TRUE(stack->redo());
            EXPECT_EQ(state(), states[at + 1]) << edits[at].name;
        }
        EXPECT_FALSE(stack->can_redo());
    }
}

TEST_F(undo, an_edit_forgets_what_was_taken_back) {
    apply("stars", change("A", "stars", 1));
    EXPECT_TRUE(stack->undo());
    apply("other", change("A", "stars", 2));
    EXPECT_FALSE(stack->can_redo());
}

TEST_F(undo, what_is_taken_back_is_on_record) {
    apply("stars", change("A", "stars", 5));
    EXPECT_TRUE(stack->undo());
    const std::string before = state();
    stack.reset();
    document.reset();
    document = testing::opened(folder.path(), loop);
    EXPECT_EQ(state(), before);
}

TEST_F(undo, a_finished_clip_goes_with_the_row_that_its_button_made) {
    const std::string before = state();
    apply({"Shot", "b", {row("S"), operation::begin_clip{shared_text("S"), clip_of("N", 5, 5)}}});
    EXPECT_FALSE(stack->can_undo());
    apply("Shot", operation::finish_clip{"N", 4, 9});
    const std::string finished = state();
    EXPECT_TRUE(stack->undo());
    EXPECT_EQ(state(), before);
    EXPECT_TRUE(stack->redo());
    EXPECT_EQ(state(), finished);
}

TEST_F(undo, a_row_that_was_used_since_stays) {
    apply({"Shot", "b", {row("S"), operation::begin_clip{shared_text("S"), clip_of("N", 5, 5)}}});
    apply({"Goal", "c", {operation::begin_clip{shared_text("S"), clip_of("M", 6, 6)}}});
    apply("Shot", operation::finish_clip{"N", 4, 9});
    EXPECT_TRUE(stack->undo());
    EXPECT_FALSE(has("N"));
    EXPECT_TRUE(document->timeline().row(shared_text("S")));
    EXPECT_EQ(document->timeline().live_clips().size(), 1U);
}

// Presses of buttons that share a row, alone and by links, in any order of beginning, ending and giving up.
TEST(undo_of_presses, leaves_nothing_and_does_all_again) {
    std::mt19937 random(5);
    const auto below = [&](std::size_t count) { return random() % count; };
    const std::vector<const char*> kinds{"ON_DOWN_SET_DOWN", "ON_UP_SET_UP",     "ON_DOWN_TOGGLE",
                                         "ON_UP_TOGGLE",     "ON_ALL_UP_SET_UP", "ON_DOWN_BLOCK"};
    const std::string names = "ABQRNXTG";
    for (int round = 0; round < 60; ++round) {
        testing::coding code;
        undo_stack stack(*code.document, code.loop);
        for (int n = 0; n < 8; ++n) {
            auto& from = code.button(names[below(names.size())]);
            const char* const kind = kinds[below(kinds.size())];
            testing::add_link(from, kind, std::string(1, names[below(names.size())]));
        }
        code.button('A').set_next_down(below(2) > 0);
        if (below(2) > 0) code.button('B').set_action_link_to("id A");
        if (below(4) == 0) code.button('T').set_action_link_to("id A");
        code.set_buttons();
        double at = 1;
        for (int n = 0; n < 12; ++n) {
            at += 0.02 * static_cast<double>(below(100));
            code.loop.advance_to(at);
            code.engine->tick(at);
            const std::string button = std::string("id ") + names[below(names.size())];
            below(2) > 0 ? code.engine->press(button, at) : code.engine->release(button, at);
            if (below(9) == 0) code.engine->escape(at);
        }
        code.engine->release_all(at);
        const std::string all = code.clips();
        while (stack.can_undo()) ASSERT_TRUE(stack.undo());
        EXPECT_EQ(code.clips(), "") << round << ": " << code.fired;
        while (stack.can_redo()) ASSERT_TRUE(stack.redo());
        EXPECT_EQ(code.clips(), all) << round << ": " << code.fired;
    }
}

TEST_F(undo, a_clip_given_up_while_it_grows_is_no_step) {
    apply("Stars", change("A", "stars", 3));
    const std::string before = state();
    apply({"Shot", "b", {row("S"), operation::begin_clip{shared_text("S"), clip_of("N", 5, 5)}}});
    apply("Stamp", stamp("N", "Q"));
    apply({"Shot", "b", {operation::remove_clip{"N"}, operation::remove_row{shared_text("S")}}});
    EXPECT_EQ(state(), before);
    EXPECT_EQ(stack->undo_name(), "Stars");
    EXPECT_TRUE(stack->undo());
    EXPECT_TRUE(stack->redo());
    EXPECT_EQ(state(), before);
}

// A press that moved its neighbours, made its row, and was merged or not: one step.
TEST_F(undo, a_finished_clip_takes_what_its_edit_moved_back_with_it) {
    const std::string before = state();
    apply({"Shot", "b", {operation::begin_clip{shared_text("R"), clip_of("N", 8, 8)}}});
    auto moved = change("A", "time_end", 8.0);
    apply({"Shot", "b", {operation::finish_clip{"N", 8.1, 12}, moved}});
    const std::string after = state();
    EXPECT_TRUE(stack->undo());
    EXPECT_EQ(state(), before);
    EXPECT_TRUE(stack->redo());
    EXPECT_EQ(state(), after);
}

TEST_F(undo, a_stamp_on_a_growing_clip_goes_alone_while_it_grows_and_with_it_afterwards) {
    apply("Shot", operation::begin_clip{shared_text("R"), clip_of("N", 5, 5)});
    apply("Player", stamp("N", "Q1"));
    apply("Zone", stamp("N", "Q2"));
    EXPECT_TRUE(stack->undo());
    EXPECT_EQ(document->timeline().live_clips()[0].clip->qualifiers()->size(), 1U);
    apply("Shot", operation::finish_clip{"N", 4, 9});
    EXPECT_TRUE(stack->undo());
    EXPECT_FALSE(has("N"));
    EXPECT_FALSE(stack->can_undo());  // the stamp went with the clip
    EXPECT_TRUE(stack->redo());
    EXPECT_EQ(document->timeline().find_clip("N")->clip->qualifiers()->size(), 1U);
}

TEST_F(undo, merges_a_drag_but_not_two_presses) {
    const struct {
        const char* what;
        std::vector<timeline_edit> edits;
        double seconds_between;
        int steps;
    } cases[] = {
        {"drag",
         {{"Trim", "A", {change("A", "time_end", 11)}}, {"Trim", "A", {change("A", "time_end", 12)}}},
         0.1,
         1},
        {"two drags",
         {{"Trim", "A", {change("A", "time_end", 11)}}, {"Trim", "A", {change("A", "time_end", 12)}}},
         2,
         2},
        {"both ends",
         {{"Trim", "A", {change("A", "time_end", 11)}}, {"Trim", "A", {change("A", "time_start", 2)}}},
         0.1,
         1},
        {"two names",
         {{"Trim", "A", {change("A", "time_end", 11)}}, {"Stars", "A", {change("A", "stars", 2)}}},
         0.1,
         2},
        {"stamps", {{"Player", "b", {stamp("A", "Q1")}}, {"Player", "b", {stamp("A", "Q2")}}}, 0.1, 2},
    };
    for (const auto& one : cases) {
        const std::string before = state();
        for (const auto& edit : one.edits) {
            apply(edit);
            loop.advance(one.seconds_between);
        }
        const std::string after = state();
        for (int step = 0; step < one.steps; ++step) {
            EXPECT_NE(state(), before) << one.what;
            EXPECT_TRUE(stack->undo());
        }
        EXPECT_EQ(state(), before) << one.what;
        for (int step = 0; step < one.steps; ++step) EXPECT_TRUE(stack->redo());
        EXPECT_EQ(state(), after) << one.what;
        for (int step = 0; step < one.steps; ++step) EXPECT_TRUE(stack->undo());
    }
}

TEST_F(undo, a_group_is_one_step) {
    const std::string before = state();
    stack->begin_group("Import");
    for (const char* uuid : {"B", "C", "D"})
        apply("add", operation::insert_clip{shared_text("R"), clip_of(uuid, 1, 2)});
    stack->end_group();
    apply("other", change("A", "stars", 1));
    EXPECT_TRUE(stack->undo());
    EXPECT_EQ(stack->undo_name(), "Import");
    EXPECT_TRUE(stack->undo());
    EXPECT_EQ(state(), before);
}

// A round is one step; a clip belongs to the one that ended it, with the row that was made for it.
TEST(undo_of_links, is_one_step_for_what_one_press_set_off) {
    testing::coding code;
    undo_stack undo(*code.document, code.loop);
    const auto link = [&](char from, const char* what, char to) {
        auto all = code.button(from).action_links();
        all.emplace_back().action_TYPE = what;
        all.back().linked_button_UUID = std::string("id ") + to;
        code.button(from).set_action_links(std::move(all));
    };
    link('A', "ON_DOWN_SET_UP", 'B');
    link('A', "ON_DOWN_SET_DOWN", 'Q');
    int edits = 0;
    const auto counting =
        code.document->edited.connect([&](const timeline_edit&, const timeline_edit&) { ++edits; });
    code.run("1+B 2+A");
    EXPECT_EQ(edits, 2);
    EXPECT_EQ(code.clips(), "B 1-2; A; live A 2") << "the qualifier is on the clip that grows";
    EXPECT_EQ(undo.undo_name(), "A");
    code.run("3-A");
    EXPECT_EQ(code.clips(), "B 1-2; A 2-3(Q)");
    ASSERT_TRUE(undo.undo());
    EXPECT_EQ(code.clips(), "B 1-2") << "with the row made for it";
    ASSERT_TRUE(undo.undo());
    EXPECT_EQ(code.clips(), "") << "what the press of A ended";
    EXPECT_FALSE(undo.can_undo());
    ASSERT_TRUE(undo.redo());
    ASSERT_TRUE(undo.redo());
    EXPECT_EQ(code.clips(), "B 1-2; A 2-3(Q)");
}

}  // namespace
}  // namespace vistels
