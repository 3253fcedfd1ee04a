// SPDX-License-Identifier: GPL-3.0-or-later
// A layout of vistels that scrolls: by wheel, key and drag, and from one window to the next.
#include <gtest/gtest.h>

#include <QAction>
#include <QMimeData>
#include <QMouseEvent>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>
#include <QUrl>
#include <QWheelEvent>

#include "app/settings/settings.h"
#include "shell/event/collection_commands.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/window/window_actions.h"
#include "support/shown_event.h"
#include "video/synchronised_playback.h"

namespace vistels {
namespace {

void turn_wheel(QWidget& on, QPoint at, int eighths, QPoint pixels = {}) {
    QWheelEvent event(at, on.mapToGlobal(at), pixels, {0, eighths}, Qt::NoButton, {},
                      pixels.isNull() ? Qt::NoScrollPhase : Qt::ScrollUpdate, false);
    QApplication::sendEvent(&on, &event);
}

void move_mouse(QWidget& on, QPoint to) {
    QMouseEvent event(QEvent::MouseMove, to, on.mapToGlobal(to), Qt::NoButton, Qt::LeftButton, {});
    QApplication::sendEvent(&on, &event);
}

// Sixteen vistels of 400 x 225 each in two columns, in a view that is 450 high: two lines of eight.
struct columns : public ::testing::Test {
    columns() {
        view.resize(800 + bar().sizeHint().width(), 450);
        view.set_has_collection(true);
        const auto ready = ready_layout_frames(ready_layout::two_columns, 16, 16.0 / 9);
        std::vector<shown_vistel> vistels;
        for (std::size_t i = 0; i < ready.frames.size(); ++i)
            vistels.push_back({name(i), QStringLiteral("camera"), ready.frames[i], {}, false, 0});
        view.show();
        view.set_vistels(vistels, ready.ratio, ready.scrolls);
        QObject::connect(&view, &collection_view::layout_asked, &view,
                         [this](const vistel_arrangement& wanted, const QString&) { asked = wanted; });
    }
    static std::string name(std::size_t index) { return {static_cast<char>('a' + index)}; }
    QScrollBar& bar() { return *view.findChild<QScrollBar*>("collection.scroll"); }
    std::string in_sight() {
        std::string all;
        for (std::size_t i = 0; i < 16; ++i) all += view.is_in_sight(name(i)) ? name(i) : std::string();
        return all;
    }

    collection_view view;
    std::optional<vistel_arrangement> asked;
};

TEST_F(columns, scroll_by_wheel_and_everything_is_found_where_it_is_seen) {
    EXPECT_EQ(in_sight(), "abcd");
    EXPECT_TRUE(bar().isVisible());
    EXPECT_EQ(bar().maximum(), 8 * 225 - 450);
    QSignalSpy scrolled(&view, &collection_view::scrolled);
    turn_wheel(view, {100, 100}, -120);
    const int notch = view.offset();
    EXPECT_GT(notch, 0);
    turn_wheel(view, {100, 100}, -60);
    EXPECT_EQ(view.offset(), notch + notch / 2);
    turn_wheel(view, {100, 100}, -120, {0, -25});
    EXPECT_EQ(view.offset(), notch + notch / 2 + 25);
    EXPECT_EQ(scrolled.back()[0].toDouble(), view.offset());
    turn_wheel(view, {100, 100}, 100 * 120);
    EXPECT_EQ(view.offset(), 0);
    bar().setValue(500);
    EXPECT_EQ(in_sight(), "efghij");
    EXPECT_EQ(view.vistel_at({500, 100}), "f");
    EXPECT_EQ(view.vistel_at({100, 200}), "g");
    EXPECT_TRUE(view.place_of("f").contains(view.chip_of("f")));
    QTest::mouseClick(&view, Qt::LeftButton, {}, view.chip_of("g").center());
    EXPECT_EQ(view.current(), "g");
    EXPECT_EQ(view.offset(), 500);
}

TEST_F(columns, keep_their_place_while_one_is_enlarged_and_in_another_size) {
    bar().setValue(450);
    EXPECT_EQ(in_sight(), "efgh");
    view.set_enlarged("f");
    EXPECT_FALSE(bar().isVisible());
    turn_wheel(view, {100, 100}, -120);
    EXPECT_EQ(view.offset(), 450);
    EXPECT_TRUE(QTest::qWaitFor([&] { return view.place_of("f") == view.rect(); }, 60000));
    view.set_enlarged({});
    EXPECT_TRUE(QTest::qWaitFor([&] { return bar().isVisible(); }, 60000));
    EXPECT_EQ(view.offset(), 450);
    view.resize(400 + bar().sizeHint().width(), 225);
    EXPECT_EQ(in_sight(), "efgh");
    view.resize(800 + bar().sizeHint().width(), 450);
    EXPECT_EQ(view.offset(), 450);
    view.set_enlarged("p");  // chosen elsewhere while it is out of sight
    view.set_enlarged({});
    EXPECT_EQ(view.offset(), bar().maximum());
    view.resize(800 + bar().sizeHint().width(), 8 * 225);
    EXPECT_FALSE(bar().isVisible());
    EXPECT_EQ(view.place_of("a").top(), 0);
}

TEST_F(columns, page_keys_bring_the_chosen_one_into_sight) {
    view.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&view));
    view.setFocus();
    for (int i = 0; i < 4; ++i) QTest::keyClick(&view, Qt::Key_PageDown);
    EXPECT_EQ(view.current(), "e");
    EXPECT_EQ(view.offset(), 225);
    QTest::keyClick(&view, Qt::Key_PageUp);
    EXPECT_EQ(view.offset(), 225);
    for (int i = 0; i < 4; ++i) QTest::keyClick(&view, Qt::Key_PageUp);
    EXPECT_EQ(view.current(), "p");
    EXPECT_EQ(view.offset(), bar().maximum());
}

TEST_F(columns, what_is_dragged_stays_under_the_pointer_while_they_scroll) {
    const QPoint from = view.chip_of("c").center();
    const QPoint within = from - view.place_of("c").topLeft();
    QTest::mousePress(&view, Qt::LeftButton, {}, from);
    move_mouse(view, {215, 215});
    turn_wheel(view, {215, 215}, -5 * 120);
    const int offset = view.offset();
    EXPECT_GT(offset, 0);
    EXPECT_EQ(view.place_of("c").topLeft(), QPoint(215, 215) - within);
    // Near the edge it goes on by itself, to the end.
    move_mouse(view, {215, 445});
    ASSERT_TRUE(QTest::qWaitFor([&] { return view.offset() == bar().maximum(); }, 60000));
    QTest::mouseRelease(&view, Qt::LeftButton, {}, {215, 230});
    ASSERT_TRUE(asked);
    EXPECT_TRUE(asked->scrolls);
    EXPECT_NEAR(asked->vistels[2].frame.y * 8 * 225, bar().maximum() + 230 - within.y(), 6.5);
    // Taken up near the edge it waits until it is moved farther out.
    bar().setValue(0);
    const QPoint chip = view.chip_of("c").center();
    QTest::mousePress(&view, Qt::LeftButton, {}, chip);
    move_mouse(view, chip + QPoint(40, 0));
    EXPECT_TRUE(view.is_dragging());
    EXPECT_FALSE(view.findChild<QTimer*>("collection.edge")->isActive());
    move_mouse(view, chip + QPoint(40, 16));
    EXPECT_TRUE(view.findChild<QTimer*>("collection.edge")->isActive());
    QTest::keyClick(&view, Qt::Key_Escape);
    EXPECT_FALSE(view.findChild<QTimer*>("collection.edge")->isActive());
}

TEST_F(columns, movies_held_at_the_edge_scroll_to_where_they_are_dropped) {
    QSignalSpy dropped(&view, &collection_view::movies_dropped);
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile("/movies/late.mp4")});
    const QPointF at(100, 448);
    QDragEnterEvent enter(at.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&view, &enter);
    ASSERT_TRUE(QTest::qWaitFor([&] { return view.offset() == bar().maximum(); }, 60000));
    QDropEvent drop(at, Qt::CopyAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(&view, &drop);
    ASSERT_EQ(dropped.size(), 1);
    EXPECT_EQ(dropped[0][1].toString(), "o");
}

// An event of eight small movies.
struct scrolled_window : public testing::shown_event {
    void SetUp() override {
        shown_event::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        folder = new_collection_folder(places.home_vault, "Eight");
        const std::vector<std::string> movies(8, home / "left end.mp4");
        job work;
        const auto made = new_collection(folder, "Eight", movies, movies_as::vistel_each, work);
        ASSERT_TRUE(made.ok()) << made.message();
        open();
    }
    collection_view& view() { return *find<collection_view>("collection.view"); }
    std::string uuid(std::size_t place) { return event().collection().vistels()[place]->uuid(); }
    bool wait_for_pictures() {
        return QTest::qWaitFor(
            [&] { return window->session().has_all_pictures() && event().playback().is_settled(); }, 60000);
    }
};

TEST_F(scrolled_window, is_chosen_taken_back_and_found_again_in_the_next_one) {
    find<QAction>("collection.two_columns")->trigger();
    ASSERT_TRUE(wait_for_pictures());
    EXPECT_TRUE(event().collection().area_scrolls());
    turn_wheel(view(), {50, 50}, -120);
    const int offset = view().offset();
    ASSERT_GT(offset, 0);
    window->actions()[command::undo]->trigger();
    EXPECT_FALSE(event().collection().area_scrolls());
    EXPECT_EQ(view().offset(), 0);
    window->actions()[command::redo]->trigger();
    EXPECT_EQ(view().offset(), offset);
    window->close();
    window.reset();
    EXPECT_EQ(load_view_offsets(places).vertical, offset);
    open();
    EXPECT_EQ(view().offset(), offset);
    // What is not seen is read once, for its shape.
    ASSERT_TRUE(wait_for_pictures());
    EXPECT_EQ(event().playback().picture(uuid(7)), nullptr);
    // More than there is now counts again when there is more.
    view().set_offset(100000);
    EXPECT_EQ(view().offset(), find<QScrollBar>("collection.scroll")->maximum());
    find<QAction>("collection.grid")->trigger();
    EXPECT_FALSE(event().collection().area_scrolls());
    EXPECT_EQ(load_view_offsets(places).vertical, offset);
}

TEST_F(scrolled_window, shows_pictures_of_what_is_in_sight) {
    find<QAction>("collection.two_columns")->trigger();
    ASSERT_TRUE(wait_for_pictures());
    ASSERT_FALSE(view().is_in_sight(uuid(7)));
    EXPECT_TRUE(view().has_picture(uuid(0)));
    EXPECT_FALSE(view().has_picture(uuid(7)));
    EXPECT_EQ(event().playback().picture(uuid(7)), nullptr);
    window->session().player().seek(2);
    ASSERT_TRUE(wait_for_pictures());
    EXPECT_FALSE(view().has_picture(uuid(7)));
    turn_wheel(view(), {50, 50}, -100 * 120);
    EXPECT_FALSE(view().has_picture(uuid(0)));
    ASSERT_TRUE(QTest::qWaitFor([&] { return view().has_picture(uuid(7)); }, 60000));
    EXPECT_NEAR(event().playback().picture_seconds(uuid(7)).value_or(0), 2, 0.05);
}

}  // namespace
}  // namespace vistels
