// SPDX-License-Identifier: GPL-3.0-or-later
// What a hand does to clips and rows of a timeline, by real events.
#include <QLineEdit>
#include <QSignalSpy>
#include <utility>

#include "shell/panes/timeline/timeline_names.h"
#include "support/timeline_pane.h"
#include "timeline/edits/row_edits.h"

namespace vistels {
namespace {

using testing::clip_of;
using testing::row_of;
using clips = std::vector<std::string>;

struct clip_dragging : public testing::timeline_pane {
    void SetUp() override {
        timeline_pane::SetUp();
        if (HasFatalFailure()) return;
        ASSERT_TRUE(document_->apply({"", "", {operation::insert_row{2, row_of("c", "Goal")}}}));
        view_state().set_snaps(false);
        made_ = document_->edited.connect([this](const timeline_edit& edit, const timeline_edit&) {
            ++edits;
            name = edit.name;
        });
    }
    std::string times(const std::string& clip) const {
        const auto place = document_->timeline().find_clip(clip);
        if (!place) return "gone";
        return place->row.str() + " " + std::to_string(std::lround(place->clip->secs_start())) + " " +
               std::to_string(std::lround(place->clip->secs_end()));
    }
    void move(QPoint to, Qt::KeyboardModifiers keys = {}) {
        QMouseEvent moved(QEvent::MouseMove, to, canvas_->mapToGlobal(to), Qt::NoButton, Qt::LeftButton,
                          keys);
        QApplication::sendEvent(canvas_, &moved);
    }
    std::vector<std::string> row_names() const {
        std::vector<std::string> all;
        for (const auto& row : document_->timeline().rows()) all.push_back(row->name());
        return all;
    }

    int edits = 0;
    std::string name;
    connection made_;
};

TEST_F(clip_dragging, moves_the_selected_clips_along_and_between_rows_by_one_edit) {
    drag(at(15, 0), at(25, 0));
    EXPECT_EQ(times("a1"), "a 20 30");
    EXPECT_EQ(name, "Move Clip");
    EXPECT_EQ(transport_.seeks, 0) << "a drag is no click";
    click(55, 0);
    click(38, 0, Qt::ControlModifier);
    drag(at(55, 0), at(57, 1));
    EXPECT_EQ(times("a2"), "b 32 42");
    EXPECT_EQ(times("a3"), "b 52 62");
    EXPECT_EQ(edits, 2);
    EXPECT_EQ(selected().size(), 2U);
    drag(at(55, 1), at(57, 2) + QPoint(0, 300));
    EXPECT_EQ(times("a3"), "c 54 64") << "not below the last row";
    drag(at(25, 0), at(2, 0) - QPoint(600, 0));
    EXPECT_EQ(times("a1"), "a 0 10") << "not before the beginning";
}

TEST_F(clip_dragging, changes_nothing_by_a_click_or_after_escape) {
    QTest::mousePress(canvas_, Qt::LeftButton, {}, at(15, 0));
    move(at(15, 0) + QPoint(2, 2));
    QTest::mouseRelease(canvas_, Qt::LeftButton, {}, at(15, 0) + QPoint(2, 2));
    EXPECT_DOUBLE_EQ(transport_.seconds, 10);
    for (const double from : {15.0, 19.9, 10.1}) {
        transport_.seconds = 3;
        view_.tick();
        QTest::mousePress(canvas_, Qt::LeftButton, {}, at(from, 0));
        move(at(from + 20, 1));
        QTest::keyClick(canvas_, Qt::Key_Escape);
        move(at(from + 30, 1));
        QTest::mouseRelease(canvas_, Qt::LeftButton, {}, at(from + 30, 1));
        EXPECT_EQ(times("a1"), "a 10 20");
        EXPECT_DOUBLE_EQ(transport_.seconds, 3);
    }
    EXPECT_EQ(edits, 0);
}

TEST_F(clip_dragging, trims_all_that_are_selected_and_shows_the_pictures_of_the_edge) {
    transport_.seconds = 3;
    view_.tick();
    click(15, 0);
    click(35, 0, Qt::ControlModifier);
    transport_.seconds = 3;
    view_.tick();
    const int seeks = std::exchange(transport_.seeks, 0);
    EXPECT_GT(seeks, 0);
    QTest::mousePress(canvas_, Qt::LeftButton, {}, at(39.9, 0));
    move(at(44.9, 0));
    EXPECT_NEAR(transport_.seconds, 45, 0.1);
    EXPECT_EQ(edits, 0);
    QTest::mouseRelease(canvas_, Qt::LeftButton, {}, at(44.9, 0));
    EXPECT_EQ(times("a1"), "a 10 25");
    EXPECT_EQ(times("a2"), "a 30 45");
    EXPECT_EQ(edits, 1);
    EXPECT_DOUBLE_EQ(transport_.seconds, 3);
    // While it plays the pictures stay with the clock.
    transport_.playing = true;
    const int scrubs = transport_.scrubs;
    drag(at(44.9, 0), at(46.9, 0));
    EXPECT_EQ(transport_.scrubs, scrubs);
    EXPECT_EQ(times("a1"), "a 10 27");
}

TEST_F(clip_dragging, rolls_the_joint_of_two_clips_with_alt) {
    drag(at(19.9, 0), at(29.9, 0));
    ASSERT_EQ(times("a1"), "a 10 30");
    drag(at(29.8, 0), at(34.8, 0), Qt::AltModifier);
    EXPECT_EQ(times("a1"), "a 10 35");
    EXPECT_EQ(times("a2"), "a 35 40");
    drag(at(35.2, 0), at(90, 0), Qt::AltModifier);
    EXPECT_EQ(times("a2"), "a 40 40") << "something is left of it";
}

TEST_F(clip_dragging, snaps_by_either_end_to_edges_and_whole_seconds_but_not_with_control) {
    view_state().set_snaps(true);
    drag(at(15, 0), at(19.7, 0));  // its start to nothing, its end to b1
    EXPECT_DOUBLE_EQ(find("a1")->clip->secs_end(), 25);
    view_state().set_scale({0, 0.01});
    const auto y = at(0, 2).y();
    drag(QPoint(101, y), QPoint(498, y));
    ASSERT_EQ(selected().size(), 1U);
    const auto drawn = find(selected()[0].c_str());
    EXPECT_DOUBLE_EQ(drawn->clip->secs_end(), 5);
    QTest::mousePress(canvas_, Qt::LeftButton, {}, QPoint(300, y));
    move(QPoint(450, y), Qt::ControlModifier);
    QTest::mouseRelease(canvas_, Qt::LeftButton, {}, QPoint(450, y));
    EXPECT_NEAR(find(selected()[0].c_str())->clip->secs_end(), 6.5, 1e-6);
}

TEST_F(clip_dragging, draws_on_empty_rows_and_with_the_pen_on_any_else_goes_round_clips) {
    drag(at(80, 2), at(70, 2));
    ASSERT_EQ(selected().size(), 1U);
    EXPECT_EQ(times(selected()[0]), "c 70 80");
    EXPECT_EQ(name, "Draw Clip");
    drag(at(5, 0), at(45, 1));
    EXPECT_EQ(selected(), (clips{"a1", "a2", "b1"}));
    QTest::mousePress(canvas_, Qt::LeftButton, Qt::ControlModifier, at(48, 0));
    move(at(62, 0), Qt::ControlModifier);
    QTest::mouseRelease(canvas_, Qt::LeftButton, Qt::ControlModifier, at(62, 0));
    EXPECT_EQ(selected(), (clips{"a1", "a2", "a3", "b1"}));
    EXPECT_EQ(edits, 1);
    view_.set_draws(true);
    drag(at(70, 0), at(75, 0));
    ASSERT_EQ(selected().size(), 1U);
    EXPECT_EQ(times(selected()[0]), "a 70 75");
}

TEST_F(clip_dragging, clips_are_split_copied_cut_and_pasted_at_the_playhead) {
    view_.select({"a1", "b1"});
    view_.copy_selected();
    transport_.seconds = 100;
    view_.tick();
    view_.paste();
    ASSERT_EQ(selected().size(), 2U);
    EXPECT_EQ(times(selected()[0]), "a 100 110");
    EXPECT_EQ(times(selected()[1]), "b 115 125");
    EXPECT_EQ(name, "Paste Clips");
    view_.cut_selected();
    EXPECT_EQ(view_rows()[0].clips, 3U);
    view_.paste();
    EXPECT_EQ(view_rows()[0].clips, 4U);
    transport_.seconds = 33;
    view_.tick();
    view_.select({"a2", "b1"});
    view_.split_at_playhead();
    EXPECT_EQ(times("a2"), "a 30 33");
    EXPECT_EQ(times("b1"), "b 25 33");
    EXPECT_EQ(view_rows()[1].clips, 3U);
}

TEST_F(clip_dragging, a_double_click_or_return_plays_and_the_menu_is_for_what_is_under_it) {
    QSignalSpy plays(&view_, &timeline_view::play_asked);
    QTest::mouseDClick(canvas_, Qt::LeftButton, {}, at(15, 0));
    EXPECT_EQ(selected(), clips{"a1"});
    QTest::keyClick(canvas_, Qt::Key_Return);
    EXPECT_EQ(plays.count(), 2);
    QSignalSpy menus(&view_, &timeline_view::menu_asked);
    const auto ask = [&](QPoint where) {
        QContextMenuEvent asked(QContextMenuEvent::Mouse, where, canvas_->mapToGlobal(where));
        QApplication::sendEvent(canvas_, &asked);
        return menus.takeFirst().at(1).toBool();
    };
    EXPECT_TRUE(ask(at(55, 0)));
    EXPECT_EQ(selected(), clips{"a3"});
    EXPECT_FALSE(ask(at(45, 0)));
    EXPECT_EQ(selected(), clips{"a3"});
    EXPECT_EQ(edits, 0);
}

TEST_F(clip_dragging, rows_are_made_renamed_and_moved_by_their_names) {
    auto* names = view_.findChild<timeline_names*>();
    const auto name_at = [&](std::size_t row) {
        return QPoint(60, timeline_sizes.ruler_height + view_rows()[row].top + 12);
    };
    QTest::mouseDClick(names, Qt::LeftButton, {}, name_at(1));
    auto* field = view_.findChild<QLineEdit*>("timeline_rows.name");
    ASSERT_NE(field, nullptr);
    QTest::keyClicks(field, "Chance");
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(row_names(), (clips{"Attack", "Chance", "Goal"}));
    QTest::keyClick(names, Qt::Key_F2);
    QTest::keyClicks(field, "Wrong");
    QTest::keyClick(field, Qt::Key_Escape);
    EXPECT_EQ(row_names()[1], "Chance");
    EXPECT_EQ(edits, 1);

    QTest::mousePress(names, Qt::LeftButton, {}, name_at(0));
    QMouseEvent moved(QEvent::MouseMove, name_at(2) + QPoint(0, 12), names->mapToGlobal(name_at(2)),
                      Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(names, &moved);
    QTest::mouseRelease(names, Qt::LeftButton, {}, name_at(2));
    EXPECT_EQ(row_names(), (clips{"Chance", "Goal", "Attack"}));
    QTest::keyClick(names, Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(row_names(), (clips{"Chance", "Attack", "Goal"}));
    EXPECT_EQ(edits, 3);

    view_.add_row();
    QTest::keyClicks(field, "Corner");
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(row_names(), (clips{"Chance", "Attack", "Corner", "Goal"}));
    ASSERT_TRUE(view_state().make(plan_hide_rows(document_->timeline(), {shared_text("a")})));
    EXPECT_EQ(view_rows().size(), 3U);
    EXPECT_EQ(view_rows()[1].name, "Corner");
}

}  // namespace
}  // namespace vistels
