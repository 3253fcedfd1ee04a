// SPDX-License-Identifier: GPL-3.0-or-later
// The collection's view and the strip of movie parts, by mouse and key.
#include <gtest/gtest.h>

#include <QLineEdit>
#include <QMimeData>
#include <QMouseEvent>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>

#include "shell/kit/controls.h"
#include "shell/panes/collection/align_bar.h"
#include "shell/panes/collection/buttons_Adjust_Offsets.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/collection/single_Adjust_offset_View.h"
#include "support/temporary_folder.h"
#include "util/file_system.h"

namespace vistels {
namespace {

void drag(QWidget& on, QPoint from, QPoint by, Qt::KeyboardModifiers keys = {}, bool lets_go = true) {
    QTest::mousePress(&on, Qt::LeftButton, keys, from);
    for (const int share : {1, 2, 4}) {
        const QPoint at = from + by * share / 4;
        QMouseEvent move(QEvent::MouseMove, at, on.mapToGlobal(at), Qt::NoButton, Qt::LeftButton, keys);
        QApplication::sendEvent(&on, &move);
    }
    if (lets_go) QTest::mouseRelease(&on, Qt::LeftButton, keys, from + by);
}

// Two vistels over each other's corner, in a view of 800 x 450: the video area fills it.
struct laid_out : public ::testing::Test {
    laid_out() {
        view.resize(800, 450);
        view.set_has_collection(true);
        view.set_vistels({{"a", "1 Wide", {0, 0, 0.5, 0.5}, {}, true, 0},
                          {"b", "2 Left", {0.25, 0.25, 0.5, 0.5}, {}, false, 1}},
                         16.0 / 9);
        QObject::connect(&view, &collection_view::layout_asked, &view,
                         [this](const vistel_arrangement& wanted, const QString& name) {
                             asked = wanted;
                             names << name;
                         });
        view.show();
    }
    rectangle frame(std::size_t index) { return asked->vistels[index].frame; }

    collection_view view;
    std::optional<vistel_arrangement> asked;
    QStringList names;
};

TEST_F(laid_out, the_name_moves_a_vistel_and_brings_it_to_the_front) {
    drag(view, view.chip_of("a").center(), {100, 90});
    ASSERT_TRUE(asked);
    EXPECT_NEAR(frame(0).x, 0.125, 0.003);
    EXPECT_NEAR(frame(0).y, 0.2, 0.003);
    EXPECT_EQ(frame(1), (rectangle{0.25, 0.25, 0.5, 0.5}));
    EXPECT_GT(asked->vistels[0].order, asked->vistels[1].order);
    EXPECT_NEAR(asked->ratio, 16.0 / 9, 0.01);
    EXPECT_EQ(names, QStringList{"Move Vistel"});
}

TEST_F(laid_out, an_edge_resizes_in_shape_and_with_alt_freely) {
    const QRect b = view.place_of("b");
    drag(view, b.bottomRight() - QPoint(1, 1), {100, 0});
    ASSERT_TRUE(asked);
    EXPECT_NEAR(frame(1).width, 0.625, 0.003);
    EXPECT_NEAR(frame(1).height, 0.625, 0.003);
    drag(view, b.bottomRight() - QPoint(1, 1), {100, 0}, Qt::AltModifier);
    EXPECT_NEAR(frame(1).width, 0.625, 0.003);
    EXPECT_NEAR(frame(1).height, 0.5, 0.003);
    EXPECT_EQ(names, (QStringList{"Resize Vistel", "Resize Vistel"}));
}

TEST_F(laid_out, a_click_escape_and_a_locked_collection_change_nothing) {
    QTest::mouseClick(&view, Qt::LeftButton, {}, view.chip_of("b").center());
    EXPECT_EQ(view.current(), "b");
    drag(view, view.chip_of("a").center(), {100, 90}, {}, false);
    EXPECT_TRUE(view.is_dragging());
    EXPECT_NE(view.place_of("a").topLeft(), QPoint(0, 0));
    QTest::keyClick(&view, Qt::Key_Escape);
    EXPECT_FALSE(view.is_dragging());
    EXPECT_EQ(view.place_of("a").topLeft(), QPoint(0, 0));
    QTest::mouseRelease(&view, Qt::LeftButton, {}, QPoint(300, 300));
    view.set_changeable(false);
    drag(view, view.chip_of("a").center(), {100, 90});
    EXPECT_FALSE(asked);
}

TEST_F(laid_out, what_lies_in_front_is_what_is_clicked) {
    EXPECT_EQ(view.vistel_at({300, 200}), "b");
    auto frames = std::vector<shown_vistel>{{"a", "1", {0, 0, 0.5, 0.5}, {}, true, 2},
                                            {"b", "2", {0.25, 0.25, 0.5, 0.5}, {}, false, 1}};
    view.set_vistels(frames, 16.0 / 9);
    EXPECT_EQ(view.vistel_at({300, 200}), "a");
}

TEST_F(laid_out, keys_choose_move_resize_and_enlarge) {
    view.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
    view.setFocus();
    QSignalSpy enlarge(&view, &collection_view::enlarge_asked);
    EXPECT_EQ(view.current(), "a");
    QTest::keyClick(&view, Qt::Key_PageDown);
    EXPECT_EQ(view.current(), "b");
    QTest::keyClick(&view, Qt::Key_Right, Qt::AltModifier);
    ASSERT_TRUE(asked);
    EXPECT_NEAR(frame(1).x, 0.26, 1e-9);
    QTest::keyClick(&view, Qt::Key_Right, Qt::AltModifier | Qt::ShiftModifier);
    EXPECT_NEAR(frame(1).width, 0.51, 1e-9);
    QTest::keyClick(&view, Qt::Key_Return);
    ASSERT_EQ(enlarge.size(), 1);
    EXPECT_EQ(enlarge.front().front().toString(), "b");
}

TEST_F(laid_out, while_aligning_a_picture_is_shifted_not_moved) {
    QSignalSpy dragged(&view, &collection_view::shift_dragged);
    QSignalSpy ended(&view, &collection_view::shift_ended);
    view.set_aligning(true);
    drag(view, QPoint(100, 100), {60, 3});
    ASSERT_FALSE(dragged.isEmpty());
    EXPECT_EQ(dragged.back()[1].toDouble(), 60);
    ASSERT_EQ(ended.size(), 1);
    EXPECT_EQ(ended.back()[0].toString(), "a");
    EXPECT_TRUE(ended.back()[2].toBool());
    drag(view, QPoint(100, 100), {60, 3}, {}, false);
    QTest::keyClick(&view, Qt::Key_Escape);
    ASSERT_EQ(ended.size(), 2);
    EXPECT_FALSE(ended.back()[2].toBool());
    EXPECT_FALSE(asked);
}

TEST_F(laid_out, movies_are_dropped_on_a_vistel_or_beside_it) {
    QSignalSpy dropped(&view, &collection_view::movies_dropped);
    const auto drop = [this](const QString& path, QPointF at) {
        QMimeData data;
        data.setUrls({QUrl::fromLocalFile(path)});
        QDragEnterEvent enter(at.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&view, &enter);
        if (!enter.isAccepted()) return false;
        QDropEvent event(at, Qt::CopyAction, &data, Qt::LeftButton, {});
        QApplication::sendEvent(&view, &event);
        return event.isAccepted();
    };
    EXPECT_TRUE(drop("/movies/late.mp4", {300, 200}));
    EXPECT_TRUE(drop("/movies/late.mp4", {780, 20}));
    EXPECT_FALSE(drop("/movies/notes.txt", {300, 200}));  // the window opens what is no movie
    const testing::temporary_folder home;
    ASSERT_TRUE(make_folders(home / "takes").ok());
    ASSERT_TRUE(make_folders(home / "Cup.VVault/Video Groups/Final").ok());
    testing::put_file(home / "takes/take 10.mp4", "movie");
    testing::put_file(home / "takes/take 2.mp4", "movie");
    testing::put_file(home / "Cup.VVault/Video Groups/Final/video group.plist", "record");
    EXPECT_FALSE(drop(QString::fromStdString(home / "Cup.VVault"), {300, 200}));
    EXPECT_FALSE(drop(QString::fromStdString(home / "Cup.VVault/Video Groups/Final"), {300, 200}));
    ASSERT_EQ(dropped.size(), 2);
    EXPECT_TRUE(drop(QString::fromStdString(home / "takes"), {300, 200}));
    ASSERT_EQ(dropped.size(), 3);
    EXPECT_EQ(dropped[2][0].toStringList(),
              (QStringList{QString::fromStdString(home / "takes/take 2.mp4"),
                           QString::fromStdString(home / "takes/take 10.mp4")}));
    view.set_has_collection(false);  // nothing is open: the window makes a collection of them
    EXPECT_FALSE(drop("/movies/late.mp4", {300, 200}));
    EXPECT_EQ(dropped[0][0].toStringList(), QStringList{"/movies/late.mp4"});
    EXPECT_EQ(dropped[0][1].toString(), "b");
    EXPECT_EQ(dropped[1][1].toString(), "");
}

TEST_F(laid_out, a_start_that_is_missing_is_marked) {
    view.set_gap("a", 12.4, true);
    EXPECT_EQ(view.words_in("a"), "Starts at 0:00:12.40");
    view.set_gap("a", 12.4, false);
    EXPECT_EQ(view.words_in("a"), "No picture until 0:00:12.40");
}

// A vistel of three parts on a strip of 400 pixels.
struct parts_strip : public ::testing::Test {
    parts_strip() {
        strip.resize(400, 40);
        strip.set_parts({{0, 30}, {5, 20}, {0, 10}});
        strip.show();
    }
    QPoint middle(int part) { return strip.place_of(part).center(); }
    int pixels(double seconds) { return static_cast<int>(seconds / strip.seconds_per_pixel()); }

    single_Adjust_offset_View strip;
    QSignalSpy asked{&strip, &single_Adjust_offset_View::gap_asked};
    QSignalSpy cancelled{&strip, &single_Adjust_offset_View::drag_cancelled};
};

TEST_F(parts_strip, a_drag_changes_the_gap_and_takes_the_later_parts_along) {
    const int third = strip.place_of(2).left();
    drag(strip, middle(1), {40, 0}, {}, false);
    EXPECT_NEAR(strip.place_of(2).left(), third + 40, 1);
    EXPECT_NEAR(*strip.dragged_gap(), 5 + 40 * strip.seconds_per_pixel(), 1e-9);
    QTest::mouseRelease(&strip, Qt::LeftButton, {}, middle(1));
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked[0][0].toInt(), 1);
    EXPECT_NEAR(asked[0][1].toDouble(), 5 + 40 * strip.seconds_per_pixel(), 1e-9);
    EXPECT_EQ(strip.chosen(), 1);
}

TEST_F(parts_strip, a_drag_to_where_the_part_cannot_be_or_escape_changes_nothing) {
    const QRect before = strip.place_of(1);
    drag(strip, middle(1), {-pixels(15), 0});  // over the part before
    drag(strip, middle(1), {30, 400});         // away from the strip
    drag(strip, middle(1), {30, 0}, {}, false);
    QTest::keyClick(&strip, Qt::Key_Escape);
    QTest::mouseRelease(&strip, Qt::LeftButton, {}, middle(1));
    EXPECT_TRUE(asked.isEmpty());
    EXPECT_EQ(cancelled.size(), 3);
    EXPECT_EQ(strip.place_of(1), before);
    drag(strip, middle(1), {-pixels(5) - 3, 0});  // up to the part before, a little over
    ASSERT_EQ(asked.size(), 1);
    EXPECT_EQ(asked[0][1].toDouble(), 0);
}

TEST(nudge_buttons, repeat_while_held) {
    buttons_Adjust_Offsets buttons("nudge", "less", "more");
    QSignalSpy nudged(&buttons, &buttons_Adjust_Offsets::nudged);
    QSignalSpy ended(&buttons, &buttons_Adjust_Offsets::ended);
    buttons.show();
    auto* less = buttons.findChild<QWidget*>("nudge.less");
    ASSERT_TRUE(less);
    QTest::mousePress(less, Qt::LeftButton);
    ASSERT_TRUE(QTest::qWaitFor([&] { return nudged.size() >= 4; }, 20000));
    QTest::mouseRelease(less, Qt::LeftButton);
    ASSERT_FALSE(ended.isEmpty());
    for (const auto& one : nudged) EXPECT_EQ(one[0].toInt(), -1);
}

TEST(align_bar, shows_the_vistel_its_mark_and_its_parts) {
    align_bar bar;
    bar.set_vistel("2 Left", 1.25);
    bar.set_parts({{0.5, 10}, {2, 10}}, true);
    bar.set_shows_parts(true);
    bar.show();
    QSignalSpy offset(&bar, &align_bar::offset_asked);
    auto* field = bar.findChild<QLineEdit*>("align.offset");
    EXPECT_EQ(field->text(), "0:00:01.250");
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, "-0.75");
    QTest::keyClick(field, Qt::Key_Return);
    ASSERT_EQ(offset.size(), 1);
    EXPECT_EQ(offset[0][0].toDouble(), -0.75);
    bar.strip().choose(1);
    EXPECT_EQ(bar.findChild<QLineEdit*>("movie_parts.gap")->text(), "0:00:02.000");
    EXPECT_TRUE(bar.findChild<QAbstractButton*>("drone_lock_clips")->isChecked());
    EXPECT_FALSE(bar.findChild<QWidget*>("align.same")->isVisible());
    bar.set_mark("1 Wide at 0:00:12.40");
    EXPECT_TRUE(bar.findChild<QWidget*>("align.same")->isVisible());
    EXPECT_FALSE(bar.findChild<QWidget*>("align.mark")->isVisible());
    bar.set_changeable(false);
    EXPECT_FALSE(bar.findChild<QWidget*>("align.same")->isEnabled());
}

}  // namespace
}  // namespace vistels
