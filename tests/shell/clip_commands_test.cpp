// SPDX-License-Identifier: GPL-3.0-or-later
// What is done to the selected clips by the window's commands, and their note in the inspector.
#include <QAction>
#include <QLineEdit>
#include <QListView>
#include <QPlainTextEdit>

#include "app/event/undo_stack.h"
#include "shell/kit/inspector_parts.h"
#include "shell/kit/message_bar.h"
#include "shell/panes/collection/collection_pane.h"
#include "shell/panes/timeline/timeline_view.h"
#include "shell/window/window_actions.h"
#include "support/shown_event.h"
#include "support/timeline_builder.h"
#include "timeline/edits/qualifier_edits.h"
#include "video/synchronised_playback.h"

namespace vistels {
namespace {

using testing::clip_of;
using testing::row_of;

// Clips a (0 to 1), b (0.5 to 2) and c (3 to 3.5) in one row.
struct clip_commands : public testing::shown_event {
    void SetUp() override {
        shown_event::SetUp();
        if (IsSkipped()) return;
        open();
        const shared_text row("commands");
        const auto made = event().timeline().apply({"made",
                                                    "",
                                                    {operation::insert_row{0, row_of("commands", "Shot")},
                                                     operation::insert_clip{row, clip_of("a", 0, 1)},
                                                     operation::insert_clip{row, clip_of("b", 0.5, 2)},
                                                     operation::insert_clip{row, clip_of("c", 3, 3.5)}}});
        ASSERT_TRUE(made) << made.message();
        view = window->findChild<timeline_view*>();
        note = find<QPlainTextEdit>("inspector.note");
        clips_before = timeline().clip_count();
        QObject::connect(&window->session().notices(), &event_notices::told, note, [this] { ++told; });
    }
    std::vector<double> times(const char* clip) {
        const auto place = timeline().find_clip(clip);
        if (!place) return {};
        return {place->clip->secs_start(), place->clip->secs_end()};
    }
    void press(Qt::Key key, Qt::KeyboardModifiers with = Qt::ControlModifier) {
        QTest::keyClick(window.get(), key, with);
    }
    std::string note_of(const char* clip) { return timeline().find_clip(clip)->clip->note_text(); }

    timeline_view* view = nullptr;
    QPlainTextEdit* note = nullptr;
    std::size_t clips_before = 0;
    int told = 0;
};

TEST_F(clip_commands, merge_duplicate_and_split_by_their_keys_each_one_step) {
    view->select({"a", "b"});
    press(Qt::Key_K);
    EXPECT_LT(times("a")[1], times("b")[0]) << "they overlap no more";
    press(Qt::Key_D);
    EXPECT_EQ(timeline().clip_count(), clips_before + 2);
    EXPECT_EQ(times("a")[0], 0) << "the copies stand behind, the clips stay";
    press(Qt::Key_Z);
    EXPECT_EQ(timeline().clip_count(), clips_before);
    press(Qt::Key_Z);
    EXPECT_EQ(times("b"), (std::vector<double>{0.5, 2}));
    view->select({"c", "a"});
    press(Qt::Key_J);
    EXPECT_EQ(times("a"), (std::vector<double>{0, 3.5}));
    EXPECT_TRUE(times("c").empty());
    press(Qt::Key_Z);
    EXPECT_EQ(times("c"), (std::vector<double>{3, 3.5}));
    EXPECT_EQ(told, 0);
    view->select({"c"});
    press(Qt::Key_J);
    press(Qt::Key_K);
    EXPECT_EQ(told, 2) << "one clip cannot be merged, and nothing overlaps it";
    EXPECT_EQ(timeline().clip_count(), clips_before);
}

TEST_F(clip_commands, the_history_goes_to_any_step_and_follows_what_is_done) {
    const auto state = [this] { return testing::state_text(timeline()); };
    std::vector<std::string> states{state()};
    for (const Qt::Key key : {Qt::Key_K, Qt::Key_D, Qt::Key_J}) {
        if (key == Qt::Key_K) view->select({"a", "b"});
        press(key);
        states.push_back(state());
    }
    press(Qt::Key_Z, Qt::ControlModifier | Qt::AltModifier);
    const auto* lines = find<QListView>("history.steps");
    ASSERT_NE(lines, nullptr);
    const auto line_count = [&] { return lines->model()->rowCount(); };
    const auto click = [&](int line) {
        QTest::mouseClick(lines->viewport(), Qt::LeftButton, {},
                          lines->visualRect(lines->model()->index(line, 0)).center());
    };
    const int now = line_count() - 1;
    ASSERT_GE(now, 4) << "with the step that made the clips";
    EXPECT_EQ(lines->currentIndex().row(), now);
    for (const int back : {3, 1, 2, 0, 3}) {
        click(now - back);
        EXPECT_EQ(state(), states[static_cast<std::size_t>(3 - back)]) << back;
        EXPECT_EQ(lines->currentIndex().row(), now - back);
    }
    // What is done anew takes the place of what was taken back.
    view->select({"c"});
    press(Qt::Key_D);
    EXPECT_EQ(line_count(), now - 3 + 2);
    click(0);
    EXPECT_FALSE(event().undo().can_undo());
    EXPECT_EQ(line_count(), now - 3 + 2);
}

TEST_F(clip_commands, marks_move_the_edges_of_the_selected_clips_to_the_playhead_but_not_across) {
    view->select({"a", "b"});
    window->session().player().seek(0.8);
    const double here = event().playback().collection_time();
    find<QAction>("mark_in")->trigger();
    EXPECT_EQ(times("a"), (std::vector<double>{here, 1}));
    EXPECT_EQ(times("b"), (std::vector<double>{here, 2}));
    window->session().player().seek(1.5);
    find<QAction>("mark_in")->trigger();
    EXPECT_EQ(told, 1) << "the first of them has ended there";
    EXPECT_EQ(times("b")[0], here);
    find<QAction>("mark_out")->trigger();
    EXPECT_EQ(times("a")[1], times("b")[1]);
    EXPECT_EQ(times("c"), (std::vector<double>{3, 3.5}));
}

TEST_F(clip_commands, qualifiers_are_added_to_all_selected_and_written_one_by_one) {
    view->select({"a", "b"});
    auto* added = find<QLineEdit>("inspector.add_qualifier");
    added->setFocus();
    QTest::keyClicks(added, "Marek");
    QTest::keyClick(added, Qt::Key_Return);
    const auto first_of = [this](const char* clip) {
        const auto all = timeline().find_clip(clip)->clip->qualifiers();
        return all->empty() ? qualifier_words() : words_in(all->front());
    };
    EXPECT_EQ(first_of("a").name, "Marek");
    EXPECT_EQ(first_of("b").name, "Marek");
    view->select({"a"});
    auto* chips = find<qualifier_chips>("inspector.qualifiers");
    auto* actor = find<QLineEdit>("inspector.qualifier.actor");
    EXPECT_FALSE(actor->isVisibleTo(window.get()));
    QTest::mouseClick(chips, Qt::LeftButton, {}, chips->place_of(0).center() - QPoint(15, 0));
    ASSERT_TRUE(actor->isVisibleTo(window.get()));
    actor->setFocus();
    QTest::keyClicks(actor, "Okafor");
    QTest::keyClick(actor, Qt::Key_Return);
    auto* value = find<QLineEdit>("inspector.qualifier.value");
    value->setFocus();
    QTest::keyClicks(value, "0,31");
    QTest::keyClick(value, Qt::Key_Return);
    EXPECT_EQ(first_of("a"), (qualifier_words{"Marek", "", "Okafor", "", "", 0.31}));
    EXPECT_EQ(first_of("b").actor, "") << "it is another clip's";
    value->selectAll();
    QTest::keyClicks(value, "much");
    QTest::keyClick(value, Qt::Key_Return);
    EXPECT_EQ(value->text(), "0.31");
    for (const char* expected : {"Okafor", ""}) {
        window->actions()[command::undo]->trigger();
        EXPECT_EQ(first_of("a").actor, expected);
    }
    window->actions()[command::undo]->trigger();
    EXPECT_EQ(first_of("b").name, "") << "one step for both";
    EXPECT_EQ(told, 0);
}

TEST_F(clip_commands, a_note_is_written_in_the_inspector_by_one_step) {
    view->select({"a"});
    note->setFocus();
    QTest::keyClicks(note, "Left foot. I, O, D and L are letters here");
    QTest::keyClick(note, Qt::Key_Return);
    QTest::keyClicks(note, "two lines");
    EXPECT_EQ(note_of("a"), "");
    QTest::keyClick(note, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(note_of("a"), "Left foot. I, O, D and L are letters here\ntwo lines");
    EXPECT_FALSE(note->hasFocus());
    EXPECT_TRUE(down().empty());
    press(Qt::Key_Z);
    EXPECT_EQ(note_of("a"), "");
    EXPECT_EQ(note->toPlainText(), "");
    press(Qt::Key_Y);
    EXPECT_EQ(note->toPlainText().count('\n'), 1);

    note->setFocus();
    note->selectAll();
    QTest::keyClicks(note, "not so");
    QTest::keyClick(note, Qt::Key_Escape);
    EXPECT_TRUE(note->toPlainText().startsWith("Left foot"));
}

TEST_F(clip_commands, what_is_typed_goes_to_its_own_clip_whatever_happens_meanwhile) {
    view->select({"a"});
    note->setFocus();
    QTest::keyClicks(note, "of a");
    property_dictionary stars;
    stars.add("stars", 2);
    ASSERT_TRUE(event().timeline().apply({"Stars", "", {operation::change_clip{"a", stars, {}}}}));
    EXPECT_EQ(note->toPlainText(), "of a") << "still being typed";
    view->select({"b"});
    EXPECT_EQ(note_of("a"), "of a");
    EXPECT_EQ(note_of("b"), "");
    EXPECT_EQ(note->toPlainText(), "");
    QTest::keyClicks(note, "of b");
    view->select({"a", "b"});
    EXPECT_EQ(note_of("b"), "of b");
    EXPECT_FALSE(note->isVisible()) << "several clips have several notes";
    view->select({"c"});
    note->setFocus();
    QTest::keyClicks(note, "typed last");
    window->close();
    window.reset();
    const auto saved = load_timeline(folder);
    ASSERT_TRUE(saved) << saved.message();
    std::string texts;
    for (const auto& row : saved.value().content.rows) {
        for (const auto& clip : row->clips()) texts += clip->note_text() + "|";
    }
    EXPECT_EQ(texts, "of a|of b|typed last|");
}

}  // namespace
}  // namespace vistels
