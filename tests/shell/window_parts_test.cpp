// SPDX-License-Identifier: GPL-3.0-or-later
// The parts of the window by themselves: columns, pane sizes, vistels, keys, the inspector, messages.
#include <gtest/gtest.h>

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QVBoxLayout>

#include "shell/keys/key_router.h"
#include "shell/kit/inspector_parts.h"
#include "shell/kit/theme.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/collection/vistel_layout.h"
#include "shell/window/window_frame.h"
#include "shell/window/work_area.h"
#include "support/timeline_builder.h"
#include "timeline/edits/clip_edits.h"
#include "util/file_failures.h"

namespace vistels {
namespace {

using testing::clip_of;
using testing::qualifier_of;
using testing::row_of;

class standing_clock final : public clock {
  public:
    double seconds() const override { return now; }
    double now = 100;
};

TEST(vistel_layout, four_views_fill_the_area_with_one_line_between) {
    const std::vector<rectangle> frames = {
        {0, 0, 0.5, 0.5}, {0.5, 0, 0.5, 0.5}, {0, 0.5, 0.5, 0.5}, {0.5, 0.5, 0.5, 0.5}};
    for (const QRect room : {QRect(0, 0, 683, 384), QRect(0, 0, 683, 300), QRect(0, 0, 300, 683)}) {
        const QRect area = video_area(room, frames, 16.0 / 9);
        EXPECT_TRUE(room.contains(area));
        EXPECT_TRUE(area.width() == room.width() || area.height() == room.height());
        EXPECT_NEAR(area.width() * 9.0 / 16, area.height(), 1);
        const QRect a = view_of(area, frames[0], 1);
        const QRect d = view_of(area, frames[3], 1);
        EXPECT_EQ(a.right() + 2, d.left());
        EXPECT_EQ(a.bottom() + 2, d.top());
        EXPECT_EQ(d.bottomRight(), area.bottomRight());
    }
}

TEST(window_frame, outer_columns_lie_over_the_middle_where_it_is_narrow) {
    struct line {
        int width;
        bool left_over;
        bool right_over;
    };
    auto* left = new QWidget;
    auto* middle = new QWidget;
    auto* right = new QWidget;
    window_frame frame(left, middle, right);
    frame.show();
    for (const line one : {line{1920, false, false}, line{1366, false, true}, line{1024, true, true},
                           line{1600, false, false}}) {
        frame.resize(one.width, 700);
        EXPECT_EQ(frame.is_overlay(window_frame::side::left), one.left_over) << one.width;
        EXPECT_EQ(frame.is_overlay(window_frame::side::right), one.right_over) << one.width;
        EXPECT_EQ(left->isVisible(), !one.left_over) << one.width;
        EXPECT_EQ(right->isVisible(), !one.right_over) << one.width;
        const int expected = one.width - (one.left_over ? 0 : 208 + 1) - (one.right_over ? 0 : 272 + 1);
        EXPECT_NEAR(middle->width(), expected, 2) << one.width;
    }
    frame.resize(1024, 700);
    frame.set_shown(window_frame::side::right, true);
    EXPECT_TRUE(right->isVisible());
    EXPECT_EQ(right->geometry().right(), 1023);
    EXPECT_EQ(middle->width(), 1024);
    QTest::keyClick(right, Qt::Key_Escape);
    EXPECT_FALSE(right->isVisible());
}

TEST(work_area, panes_keep_room_to_work_in_at_every_size) {
    for (const QSize room :
         {QSize(1024, 576), QSize(1157, 704), QSize(1118, 936), QSize(1438, 1016), QSize(3358, 2096)}) {
        const work_sizes planned = plan_work_sizes(room, 434, 114, true);
        EXPECT_GE(planned.code_width, 320);
        EXPECT_LE(planned.code_width, 434);
        EXPECT_GE(room.height() - planned.upper_height, 200) << room.width();
        EXPECT_GE(planned.upper_height, room.height() / 3) << room.width();
        EXPECT_EQ(plan_work_sizes(room, 434, 114, false).code_width, 0);
    }
    // Room added to a large window goes to the video.
    const int small = plan_work_sizes({1438, 1016}, 434, 114, true).upper_height;
    EXPECT_GT(plan_work_sizes({3358, 2096}, 434, 114, true).upper_height, 2 * small);
}

TEST(collection_view, says_what_is_wrong_in_the_vistel) {
    collection_view view;
    view.set_vistels({{"a", "1 Wide", {0, 0, 0.5, 1}, {}, true},
                      {"b", "2 Left", {0.5, 0, 0.5, 1}, file_is_missing("/v/b.mp4"), false}});
    view.resize(640, 180);
    QImage picture(10, 10, QImage::Format_RGB32);
    view.set_picture("a", picture, 16.0 / 9);
    EXPECT_TRUE(view.words_in("a").isEmpty());
    EXPECT_EQ(view.words_in("b"), "\"b.mp4\" is missing.");
    view.set_gap("a", 842);
    EXPECT_EQ(view.words_in("a"), "No picture until 0:14:02.00");
    view.set_picture("a", picture, 16.0 / 9);
    EXPECT_TRUE(view.words_in("a").isEmpty());
}

TEST(collection_view, double_click_enlarges_and_puts_back) {
    collection_view view;
    view.set_vistels({{"a", "1", {0, 0, 0.5, 1}, {}, true}, {"b", "2", {0.5, 0, 0.5, 1}, {}, false}});
    view.resize(640, 400);
    QObject::connect(&view, &collection_view::enlarge_asked, &view,
                     [&](const QString& vistel) { view.set_enlarged(vistel.toStdString()); });
    view.show();
    const QSize small = view.picture_size("b");
    QTest::mouseDClick(&view, Qt::LeftButton, {}, view.place_of("b").center());
    EXPECT_EQ(view.enlarged(), "b");
    EXPECT_GT(view.picture_size("b").width(), small.width());
    EXPECT_TRUE(view.place_of("a").isEmpty());
    QTest::mouseDClick(&view, Qt::LeftButton, {}, QPoint(10, 10));
    EXPECT_EQ(view.enlarged(), "");
    EXPECT_EQ(view.picture_size("b"), small);
}

// A window with a text field, and a code window of two buttons on the keys A and L.
struct keyboard : public ::testing::Test {
    keyboard() : router(window, time) {
        field.setParent(&window);
        other.setParent(&window);
        other.setFocusPolicy(Qt::StrongFocus);
        auto* action = new QAction(&window);
        action->setShortcut(Qt::Key_L);
        window.addAction(action);
        QObject::connect(action, &QAction::triggered, &window, [this] { said += "shortcut "; });
        router.set_code({[](const QKeyEvent& event) -> std::vector<std::string> {
                             if (event.key() == Qt::Key_A) return {"attack"};
                             if (event.key() == Qt::Key_L) return {"note"};
                             return {};
                         },
                         [this](const std::string& button, double) { said += "+" + button + " "; },
                         [this](const std::string& button, double) { said += "-" + button + " "; },
                         [](double) { return false; },
                         [this](double) { return gives_up; },
                         {}});
        window.show();
        window.activateWindow();
        other.setFocus();
        EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    }

    standing_clock time;
    QWidget window;
    QLineEdit field;
    QWidget other;
    std::string said;
    bool gives_up = false;  // what Escape would
    key_router router;
};

// Escape is the code window's as long as there is something to give up.
TEST_F(keyboard, escape_gives_up_what_was_begun_last) {
    struct : QObject {
        bool eventFilter(QObject*, QEvent* event) override {
            arrived += event->type() == QEvent::KeyPress ? 1 : 0;
            return false;
        }
        int arrived = 0;
    } seen;
    other.installEventFilter(&seen);
    gives_up = true;
    QKeyEvent taken(QEvent::KeyPress, Qt::Key_Escape, {});
    QApplication::sendEvent(&other, &taken);
    EXPECT_EQ(seen.arrived, 0);
    gives_up = false;
    QKeyEvent left(QEvent::KeyPress, Qt::Key_Escape, {});
    QApplication::sendEvent(&other, &left);
    EXPECT_EQ(seen.arrived, 1);
}

TEST_F(keyboard, bound_keys_press_and_release_and_win_over_shortcuts) {
    QTest::keyPress(&other, Qt::Key_A);
    QTest::keyPress(&other, Qt::Key_L);
    QTest::keyRelease(&other, Qt::Key_A);
    QTest::keyRelease(&other, Qt::Key_L);
    EXPECT_EQ(said, "+attack +note -attack -note ");
}

TEST_F(keyboard, a_held_key_presses_once) {
    QTest::keyPress(&other, Qt::Key_A);
    QKeyEvent again(QEvent::KeyPress, Qt::Key_A, {}, "a", true);
    QApplication::sendEvent(&other, &again);
    QKeyEvent up(QEvent::KeyRelease, Qt::Key_A, {}, "a", true);
    QApplication::sendEvent(&other, &up);
    EXPECT_EQ(said, "+attack ");
    QTest::keyRelease(&other, Qt::Key_A);
    EXPECT_EQ(said, "+attack -attack ");
}

// As some window systems send a held key: release and press with one time stamp, not marked as a repeat.
TEST_F(keyboard, a_repeat_that_is_not_marked_as_one_releases_nothing) {
    const auto send = [&](QEvent::Type type, quint64 stamp) {
        QKeyEvent event(type, Qt::Key_A, {}, "a");
        event.setTimestamp(stamp);
        QApplication::sendEvent(&other, &event);
    };
    send(QEvent::KeyPress, 99'000);
    for (const quint64 stamp : {99'500u, 99'540u, 99'580u}) {
        send(QEvent::KeyRelease, stamp);
        send(QEvent::KeyPress, stamp);
    }
    EXPECT_EQ(said, "+attack ");
    send(QEvent::KeyRelease, 99'620);
    send(QEvent::KeyPress, 99'640);
    EXPECT_EQ(said, "+attack -attack +attack ");
    send(QEvent::KeyRelease, 99'700);
    EXPECT_TRUE(QTest::qWaitFor([&] { return said == "+attack -attack +attack -attack "; }));
}

TEST_F(keyboard, text_fields_keep_their_keys_but_what_is_held_comes_up) {
    field.setFocus();
    QTest::keyClick(&field, Qt::Key_A);
    EXPECT_EQ(said, "");
    EXPECT_EQ(field.text(), "a");
    other.setFocus();
    QTest::keyPress(&other, Qt::Key_A);
    field.setFocus();
    QTest::keyRelease(&field, Qt::Key_A);
    EXPECT_EQ(said, "+attack -attack ");
}

TEST_F(keyboard, leaving_the_window_releases_what_is_held) {
    QTest::keyPress(&other, Qt::Key_A);
    QWidget second;
    second.show();
    second.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&second));
    EXPECT_EQ(said, "+attack -attack ");
    QTest::keyRelease(&second, Qt::Key_A);
    EXPECT_EQ(said, "+attack -attack ");
}

sxy_DATA_root small_timeline() {
    sxy_DATA_root timeline;
    timeline.insert_row(0, row_of("r", "Shot"));
    for (const char* name : {"one", "two"}) {
        sxy_CLIP clip = clip_of(name, *name == 'o' ? 10 : 20, 30);
        clip.set_qualifiers({qualifier_of("q", "Marek")});
        timeline.insert_clip(shared_text("r"), clip);
    }
    return timeline;
}

TEST(clip_edits, change_what_was_asked_and_nothing_else) {
    const colour blue{0, 0, 1, 1};
    struct line {
        const char* name;
        std::function<timeline_edit(const sxy_DATA_root&)> plan;
        std::function<bool(const sxy_CLIP&)> holds;
        std::size_t operations;
    };
    const line cases[] = {
        {"times", [](const auto& t) { return plan_clip_times(t, "two", 25, 12); },
         [](const auto& c) { return c.secs_start() == 12 && c.secs_end() == 25; }, 1},
        {"same times", [](const auto& t) { return plan_clip_times(t, "two", 20, 30); },
         [](const auto& c) { return c.secs_start() == 20; }, 0},
        {"stars",
         [](const auto& t) {
             return plan_clip_stars(t, {"one", "two", "gone"}, 3);
         },
         [](const auto& c) { return c.stars() == 3; }, 2},
        {"no stars", [](const auto& t) { return plan_clip_stars(t, {"two"}, 0); },
         [](const auto& c) { return c.stars() == 0; }, 0},
        {"colour", [&](const auto& t) { return plan_clip_colour(t, {"two"}, blue); },
         [&](const auto& c) { return c.col() == blue; }, 1},
        {"qualifier", [](const auto& t) { return plan_remove_qualifier(t, "two", "q"); },
         [](const auto& c) { return c.qualifiers()->empty(); }, 1},
        {"no such qualifier", [](const auto& t) { return plan_remove_qualifier(t, "two", "x"); },
         [](const auto& c) { return c.qualifiers()->size() == 1; }, 0},
    };
    for (const auto& one : cases) {
        sxy_DATA_root timeline = small_timeline();
        const timeline_edit edit = one.plan(timeline);
        EXPECT_EQ(edit.operations.size(), one.operations) << one.name;
        change_set touched;
        ASSERT_TRUE(apply_edit(timeline, edit, touched).ok()) << one.name;
        EXPECT_TRUE(one.holds(*timeline.find_clip("two")->clip)) << one.name;
        EXPECT_EQ(clip_title(timeline, *timeline.find_clip("one")), "Shot 1") << one.name;
    }
}

TEST(inspector_parts, a_time_is_asked_for_when_it_is_one) {
    time_field field;
    std::vector<double> asked;
    QObject::connect(&field, &time_field::seconds_asked, &field, [&](double s) { asked.push_back(s); });
    field.set_seconds(776.4);
    EXPECT_EQ(field.text(), "0:12:56.400");
    const auto type = [&](const char* text) {
        field.selectAll();
        QTest::keyClicks(&field, text);
        QTest::keyClick(&field, Qt::Key_Return);
    };
    type("12:57.5");
    type("soon");
    EXPECT_EQ(asked, std::vector<double>{777.5});
    EXPECT_EQ(field.text(), "0:12:56.400");
    field.set_seconds(std::nullopt);
    EXPECT_FALSE(field.isEnabled());
}

TEST(inspector_parts, a_click_on_the_last_star_takes_it_away) {
    star_row stars;
    stars.resize(stars.sizeHint());
    std::vector<int> asked;
    QObject::connect(&stars, &star_row::stars_asked, &stars, [&](int n) {
        asked.push_back(n);
        stars.set_stars(n);
    });
    const auto star = [&](int n) { return QPoint(stars.width() * (2 * n - 1) / 10, stars.height() / 2); };
    QTest::mouseClick(&stars, Qt::LeftButton, {}, star(3));
    QTest::mouseClick(&stars, Qt::LeftButton, {}, star(3));
    QTest::keyClick(&stars, Qt::Key_Right);
    EXPECT_EQ(asked, (std::vector<int>{3, 2, 3}));
}

}  // namespace
}  // namespace vistels
