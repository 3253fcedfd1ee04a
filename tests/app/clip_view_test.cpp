// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/event/clip_view.h"

#include <gtest/gtest.h>

#include <array>
#include <chrono>
#include <set>
#include <thread>

#include "app/event/undo_stack.h"
#include "support/opened_timeline.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "util/simulated_run_loop.h"

namespace vistels {

namespace {

using testing::clip_of;
using testing::row_of;

constexpr std::chrono::seconds patience{60};  // only a failing test waits for so long

// A view with what it has to hold, kept in another way.
struct watched_view {
    watched_view(timeline_document& document, run_loop& loop, view_kind kind) : shown(document, loop, kind) {}

    const sxy_DATA_root& timeline() const { return shown.timeline(); }
    template <class Visit>
    void each_clip(Visit visit) const {
        for (const auto& row : timeline().rows()) {
            for (const auto& clip : row->clips()) visit(*clip, row.get());
        }
    }
    // Clips that are gone stay as they were.
    void unselect_all() {
        each_clip([this](const sxy_CLIP& clip, const sxy_ROW*) { selected.erase(clip.id()); });
    }

    void expect_verdicts(const std::string& when) const {
        const filter_standing& standing = shown.filtering().standing();
        clip_filter fresh(standing.text);
        std::size_t passing = 0;
        each_clip([&](const sxy_CLIP& clip, const sxy_ROW* row) {
            const bool passes = standing.text.empty() || fresh.judge(clip, row);
            passing += passes ? 1 : 0;
            ASSERT_EQ(shown.verdicts().passes(clip), passes) << clip.id() << when << standing.text;
        });
        for (const auto& live : timeline().live_clips()) {
            ASSERT_TRUE(shown.verdicts().passes(*live.clip)) << when;
        }
        ASSERT_EQ(standing.passing, passing) << when << standing.text;
        ASSERT_EQ(standing.total, timeline().clip_count()) << when;
    }
    void expect_selection(const std::string& when) const {
        std::vector<std::string> expected;
        each_clip([&](const sxy_CLIP& clip, const sxy_ROW*) {
            if (selected.contains(clip.id())) expected.push_back(clip.id());
            ASSERT_EQ(shown.selection().contains(clip), selected.contains(clip.id())) << clip.id() << when;
        });
        std::vector<std::string> listed;
        for (const auto& place : shown.selection().clips()) {
            listed.push_back(place.clip->id());
            ASSERT_EQ(timeline().find_clip(place.clip->id())->row, place.row) << when;
        }
        ASSERT_EQ(listed, expected) << when;
    }

    clip_view shown;
    std::set<std::string> selected;
};

class two_views : public ::testing::Test {
  protected:
    two_views() : document(testing::opened(folder.path(), loop)), undo(*document, loop) {
        testing::random_edits edits(3, false);
        apply({operation::insert_row{0, row_of("A", "name 1")},
               operation::insert_row{1, row_of("B", "name 2")}});
        for (int n = 0; n < 80; ++n) static_cast<void>(document->apply(edits.make(document->timeline())));
    }

    void apply(std::vector<operation::any> operations) {
        const auto applied = document->apply({"edit", "", std::move(operations)});
        ASSERT_TRUE(applied) << applied.message();
    }
    void wait() {
        const auto given_up = std::chrono::steady_clock::now() + patience;
        for (watched_view* view : views) {
            while (view->shown.filtering().standing().is_judging) {
                ASSERT_TRUE(std::chrono::steady_clock::now() < given_up);
                loop.advance(clip_filtering::typing_pause_seconds);
                std::this_thread::yield();
            }
        }
    }
    std::string any_clip(std::size_t number) const {
        std::vector<std::string> all;
        views[0]->each_clip([&](const sxy_CLIP& clip, const sxy_ROW*) { all.push_back(clip.id()); });
        return all.empty() ? std::string() : all[number % all.size()];
    }
    void select_some(watched_view& view, std::size_t what, std::mt19937& random) {
        const std::string one = any_clip(random());
        const std::string other = any_clip(random());
        if (one.empty()) return;
        clip_selection& selection = view.shown.selection();
        if (what % 3 == 0) {
            view.unselect_all();
            view.selected.insert({one, other});
            selection.select({one, other, "nobody"});
        } else if (what % 3 == 1) {
            if (view.selected.erase(one) == 0) view.selected.insert(one);
            selection.toggle(one);
        } else {
            const auto wanted = [](const sxy_CLIP& clip) { return clip.stars() % 2 == 1; };
            view.unselect_all();
            view.each_clip([&](const sxy_CLIP& clip, const sxy_ROW*) {
                if (wanted(clip)) view.selected.insert(clip.id());
            });
            selection.select_where(wanted);
        }
    }
    void expect_all(const std::string& when) {
        for (watched_view* view : views) {
            view->expect_selection(when);
            if (!view->shown.filtering().standing().is_judging) view->expect_verdicts(when);
        }
        // The clips bear the marks of the main view.
        main.each_clip([&](const sxy_CLIP& clip, const sxy_ROW*) {
            ASSERT_EQ(clip.filtered_in(), main.shown.verdicts().passes(clip)) << clip.id() << when;
            ASSERT_EQ(clip.selected(), main.shown.selection().contains(clip)) << clip.id() << when;
            for (const auto& item : *clip.qualifiers()) {
                ASSERT_EQ(item.filtered_in(), main.shown.verdicts().marks(item)) << clip.id() << when;
            }
        });
    }

    testing::temporary_folder folder;
    simulated_run_loop loop;
    std::unique_ptr<timeline_document> document;
    undo_stack undo;
    watched_view main{*document, loop, view_kind::main};
    watched_view further{*document, loop, view_kind::further};
    std::array<watched_view*, 2> views{&main, &further};
};

class random_views : public two_views, public ::testing::WithParamInterface<unsigned> {};

TEST_P(random_views, stay_right_while_edits_come_in) {
    const std::array<const char*, 6> texts{"Goal",   "✭✭*", "[RN]\"name 2\" ! \"Goal\"",
                                           "nobody", "",    "\"wrong"};
    std::mt19937 random(GetParam());
    testing::random_edits edits(GetParam() + 8);
    for (int step = 0; step < 1500 && !HasFatalFailure(); ++step) {
        const std::string when = " at step " + std::to_string(step) + ": ";
        watched_view& view = *views[random() % 2];
        switch (random() % 8) {
            case 0:
                view.shown.filtering().type(texts[random() % texts.size()]);
                break;
            case 1:
                view.shown.filtering().apply(texts[random() % texts.size()]);
                break;
            case 2:
                select_some(view, random(), random);
                break;
            case 3:
                if (undo.can_undo()) {
                    ASSERT_TRUE(undo.undo()) << when;
                }
                break;
            case 4:
                if (undo.can_redo()) {
                    ASSERT_TRUE(undo.redo()) << when;
                }
                break;
            case 5: {
                const auto& rows = document->timeline().rows();
                if (rows.empty()) break;
                operation::change_row rename{rows[random() % rows.size()]->uuid(), {}, {}};
                rename.set.add("row_name", "name " + std::to_string(random() % 3));
                apply({rename});
                break;
            }
            default:
                static_cast<void>(document->apply(edits.make(document->timeline())));
        }
        if (random() % 4 == 0) wait();
        expect_all(when);
    }
    wait();
    expect_all(" at the end: ");
}

INSTANTIATE_TEST_SUITE_P(seeds, random_views, ::testing::Values(55U, 59U));

TEST_F(two_views, further_ones_leave_the_marks_alone) {
    apply({operation::insert_clip{shared_text("A"), clip_of("one", 1, 2)},
           operation::insert_clip{shared_text("B"), clip_of("two", 1, 2)}});
    further.shown.selection().select({"two"});
    further.shown.filtering().apply("nobody");
    wait();
    EXPECT_FALSE(further.shown.verdicts().passes(*document->timeline().find_clip("one")->clip));
    main.each_clip([](const sxy_CLIP& clip, const sxy_ROW*) {
        EXPECT_TRUE(clip.filtered_in() && !clip.selected()) << clip.id();
    });
    // Each tells of its own alone.
    int told = 0;
    const auto heard = main.shown.selection().changed.connect([&](const clip_selection::rows&) { ++told; });
    const auto judged = main.shown.filtering().changed.connect([&](bool) { ++told; });
    further.shown.selection().select({"one"});
    further.shown.filtering().clear();
    EXPECT_EQ(told, 0);
}

// A range goes from the clip that was chosen last, over those that are wanted.
TEST_F(two_views, a_range_is_of_one_row) {
    apply({operation::insert_row{0, row_of("R", "range")}, operation::insert_row{1, row_of("S", "other")}});
    for (int n = 0; n < 5; ++n) {
        const std::string number = std::to_string(n);
        apply({operation::insert_clip{shared_text("R"), clip_of("r" + number, 10 * n, 10 * n + 5)},
               operation::insert_clip{shared_text("S"), clip_of("s" + number, 10 * n, 10 * n + 5)}});
    }
    const auto selected = [&] {
        std::string all;
        for (const auto& place : main.shown.selection().clips()) all += place.clip->id() + " ";
        return all;
    };
    clip_selection& selection = main.shown.selection();
    const auto but_r2 = [](const sxy_CLIP& clip) { return clip.id() != "r2"; };
    selection.select({"s0", "r3"});
    selection.extend_to("r1", but_r2);
    EXPECT_EQ(selected(), "r1 r3 ");
    selection.extend_to("r4", but_r2);
    EXPECT_EQ(selected(), "r3 r4 ") << "from where it began";
    selection.extend_to("r2", but_r2);
    EXPECT_EQ(selected(), "r2 r3 ") << "what is clicked itself is meant";
    selection.extend_to("s1", but_r2);
    EXPECT_EQ(selected(), "s1 ");
}

}  // namespace

}  // namespace vistels
