// SPDX-License-Identifier: GPL-3.0-or-later
// Commands and the panes around the timeline, by real events: transport, side bar, inspector, jobs.
#include <gtest/gtest.h>

#include <QLabel>
#include <QMenu>
#include <QMenuBar>
#include <QPushButton>
#include <QTest>
#include <atomic>
#include <functional>
#include <set>
#include <thread>

#include "app/event/undo_stack.h"
#include "shell/keys/key_strokes.h"
#include "shell/kit/controls.h"
#include "shell/kit/inspector_parts.h"
#include "shell/kit/job_button.h"
#include "shell/kit/pane_splitter.h"
#include "shell/panes/collection/transport_bar.h"
#include "shell/panes/inspector/inspector_view.h"
#include "shell/program/qt_run_loop.h"
#include "shell/window/window_actions.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "util/job_failures.h"
#include "util/simulated_run_loop.h"

namespace vistels {
namespace {

using testing::clip_of;
using testing::qualifier_of;
using testing::row_of;
using testing::temporary_folder;

TEST(window_actions, no_key_does_two_things_and_all_are_in_a_menu) {
    QWidget window;
    const window_actions actions(window);
    QMenuBar bar;
    actions.fill(bar);
    std::set<QString> keys;
    std::set<QString> names;
    for (const QAction* action : actions.all()) {
        const std::string name = action->objectName().toStdString();
        EXPECT_TRUE(names.insert(action->objectName()).second) << name;
        EXPECT_FALSE(action->toolTip().isEmpty()) << name;
        for (const auto& key : action->shortcuts()) {
            EXPECT_FALSE(key.isEmpty()) << name;
            EXPECT_TRUE(keys.insert(key.toString()).second) << name << " " << key.toString().toStdString();
        }
        int menus = 0;
        for (const auto* menu : bar.findChildren<QMenu*>()) menus += menu->actions().contains(action) ? 1 : 0;
        EXPECT_EQ(menus, 1) << name;
    }
    EXPECT_EQ(actions[command::about]->objectName(), "about");
}

TEST(key_strokes, know_a_key_whatever_is_held_with_it) {
    struct line {
        int key;
        Qt::KeyboardModifiers held;
        const char* text;
        const char* typed;
    };
    const line cases[] = {
        {Qt::Key_G, {}, "g", "g"},
        {Qt::Key_G, Qt::ShiftModifier, "G", "g"},
        {Qt::Key_G, Qt::ControlModifier, "\x07", "g"},
        {Qt::Key_7, Qt::KeypadModifier, "7", "7"},
        {Qt::Key_Space, {}, " ", " "},
        {Qt::Key_Odiaeresis, {}, "ö", "ö"},
        {Qt::Key_F5, {}, "", ""},
        {Qt::Key_Return, {}, "\r", ""},
    };
    for (const auto& one : cases) {
        const QKeyEvent event(QEvent::KeyPress, one.key, one.held, QString::fromUtf8(one.text));
        const key_stroke stroke = key_stroke_of(event);
        EXPECT_EQ(stroke.chars_no_mod, one.typed) << one.key;
        EXPECT_EQ(stroke.shift, one.held.testFlag(Qt::ShiftModifier)) << one.key;
        EXPECT_EQ(stroke.ctr, one.held.testFlag(Qt::ControlModifier)) << one.key;
    }
}

TEST(transport_bar, asks_for_what_is_pressed) {
    transport_bar bar;
    bar.resize(700, bar.height());
    bar.set_range(-2, 58);
    bar.show();
    QStringList asked;
    QObject::connect(&bar, &transport_bar::play_asked, &bar, [&] { asked << "play"; });
    QObject::connect(&bar, &transport_bar::step_asked, &bar, [&](int n) { asked << QString::number(n); });
    QObject::connect(&bar, &transport_bar::rate_asked, &bar,
                     [&](double r) { asked << "x" + QString::number(r); });
    for (const char* name : {"transport.back", "transport.play", "transport.forward", "transport.rates.2"}) {
        auto* button = bar.findChild<QAbstractButton*>(name);
        ASSERT_TRUE(button) << name;
        EXPECT_FALSE(button->accessibleName().isEmpty()) << name;
        QTest::mouseClick(button, Qt::LeftButton);
    }
    EXPECT_EQ(asked.join(" "), "-1 play 1 x2");
}

TEST(transport_bar, a_drag_seeks_along_and_the_clock_does_not_pull_it_back) {
    transport_bar bar;
    bar.resize(700, bar.height());
    bar.set_range(0, 60);
    bar.show();
    auto* slider = bar.findChild<value_slider*>("transport.position");
    std::vector<std::pair<double, bool>> asked;
    QObject::connect(&bar, &transport_bar::seek_asked, &bar,
                     [&](double s, bool ended) { asked.emplace_back(s, ended); });
    const auto at = [&](double share) { return QPoint(static_cast<int>(slider->width() * share), 5); };
    QTest::mousePress(slider, Qt::LeftButton, {}, at(0.25));
    bar.set_seconds(0);
    EXPECT_NEAR(slider->value(), 0.25, 0.01);
    QTest::mouseMove(slider, at(0.5));
    QTest::mouseRelease(slider, Qt::LeftButton, {}, at(0.5));
    ASSERT_GE(asked.size(), 2u);
    EXPECT_NEAR(asked.front().first, 15, 0.5);
    EXPECT_TRUE(asked.back().second);
    bar.set_seconds(12);
    EXPECT_NEAR(slider->value(), 0.2, 1e-9);
}

TEST(transport_bar, tells_a_rate_that_no_button_stands_for) {
    transport_bar bar;
    bar.resize(1000, bar.height());
    bar.set_range(0, 60);
    bar.show();
    const auto at = [&](double rate) {
        bar.set_rate(rate);
        const auto* rates = bar.findChild<segmented_control*>("transport.rates");
        EXPECT_EQ(rates->chosen() == -1, !rates->accessibleDescription().isEmpty()) << rate;
        return bar.grab(QRect(0, 0, rates->x(), bar.height())).toImage();
    };
    const QImage usual = at(1);
    EXPECT_EQ(at(4), usual);
    EXPECT_NE(at(64), usual);
    EXPECT_NE(at(64), at(-8));
    EXPECT_NE(at(0.1), at(0.25));
    EXPECT_EQ(at(0.5), usual);
}

TEST(transport_bar, keeps_what_is_pressed_where_room_is_short) {
    transport_bar bar;
    bar.set_range(0, 60);
    bar.show();
    const int least = bar.minimumSizeHint().width();
    for (const int width : {least, least + 100, least}) {
        bar.resize(width, bar.height());
        QCoreApplication::processEvents();
        for (const char* name : {"transport.back", "transport.play", "transport.forward"}) {
            const auto* button = bar.findChild<QAbstractButton*>(name);
            EXPECT_TRUE(bar.rect().contains(button->geometry())) << width << name;
            EXPECT_GE(button->height(), 40);
        }
        EXPECT_EQ(bar.findChild<QWidget*>("transport.volume")->isVisible(), width > least) << width;
    }
}

TEST(pane_splitter, moves_by_keys_and_makes_equal_parts) {
    pane_splitter splitter(Qt::Horizontal);
    splitter.addWidget(new QWidget);
    splitter.addWidget(new QWidget);
    splitter.resize(601, 100);
    splitter.setSizes({400, 200});
    splitter.show();
    const int before = splitter.sizes()[0];
    EXPECT_FALSE(splitter.was_moved());
    QTest::keyClick(splitter.handle(1), Qt::Key_Left);
    EXPECT_EQ(splitter.sizes()[0], before - 8);
    EXPECT_TRUE(splitter.was_moved());
    QTest::mouseDClick(splitter.handle(1), Qt::LeftButton);
    EXPECT_EQ(splitter.sizes()[0], splitter.sizes()[1]);
}

struct inspected : public ::testing::Test {
    inspected() {
        auto opened = timeline_document::open(folder.path(), loop);
        EXPECT_TRUE(opened.ok());
        document = std::move(opened).value();
        timeline_edit edit{"made", "", {operation::insert_row{0, row_of("r", "Shot")}}};
        for (const char* name : {"one", "two"}) {
            sxy_CLIP clip = clip_of(name, *name == 'o' ? 10 : 20, 30);
            clip.set_qualifiers({qualifier_of(name + std::string("-q1"), "Marek"),
                                 qualifier_of(name + std::string("-q2"), "Box")});
            edit.operations.emplace_back(operation::insert_clip{shared_text("r"), clip});
        }
        EXPECT_TRUE(document->apply(edit).ok());
        undo = std::make_unique<undo_stack>(*document, loop);
        view.resize(272, 800);
        shown = std::make_unique<clip_view>(*document, loop);
        view.set_view(shown.get(), [] { return 25.0; });
        view.show();
    }
    const sxy_CLIP& clip(const char* name) { return *document->timeline().find_clip(name)->clip; }
    void select(std::initializer_list<const char*> names) {
        shown->selection().select({names.begin(), names.end()});
        view.refresh();
        QCoreApplication::processEvents();
    }

    temporary_folder folder;
    qt_run_loop loop;
    std::unique_ptr<timeline_document> document;
    std::unique_ptr<undo_stack> undo;
    std::unique_ptr<clip_view> shown;
    inspector_view view;
};

TEST_F(inspected, several_clips_are_changed_by_one_step) {
    select({"one", "two"});
    EXPECT_FALSE(view.findChild<QLineEdit*>("inspector.start")->isEnabled());
    auto* stars = view.findChild<star_row*>("inspector.stars");
    QTest::mouseClick(stars, Qt::LeftButton, {}, QPoint(stars->width() - 4, stars->height() / 2));
    EXPECT_EQ(clip("one").stars(), 5);
    EXPECT_EQ(clip("two").stars(), 5);
    ASSERT_TRUE(undo->undo().ok());
    EXPECT_EQ(clip("one").stars() + clip("two").stars(), 0);
    EXPECT_FALSE(undo->can_undo());
}

TEST_F(inspected, the_cross_takes_away_its_qualifier) {
    select({"two"});
    auto* chips = view.findChild<qualifier_chips*>("inspector.qualifiers");
    QTest::mouseClick(chips, Qt::LeftButton, {}, chips->cross_of(1).center());
    ASSERT_EQ(clip("two").qualifiers()->size(), 1u);
    EXPECT_EQ(clip("two").qualifiers()->front().name().str(), "Marek");
    EXPECT_EQ(clip("one").qualifiers()->size(), 2u);
}

TEST_F(inspected, the_playhead_gives_start_and_end) {
    select({"two"});
    QTest::mouseClick(view.findChild<QWidget*>("inspector.start_here"), Qt::LeftButton);
    EXPECT_EQ(clip("two").secs_start(), 25);
    EXPECT_EQ(view.findChild<QLineEdit*>("inspector.start")->text(), "0:00:25.000");
    EXPECT_EQ(view.findChild<QLabel*>("inspector.length")->text(), "0:00:05.000");
}

// Works that run until they are cancelled.
class shown_jobs : public ::testing::Test {
  protected:
    void SetUp() override {
        window.resize(400, 300);
        window.show();
        ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    }
    void start(const char* title) {
        job_order order{title, "on it"};
        order.work = [this](job& work) -> result<void> {
            work.set_progress(0.25);
            ++at_work;
            while (!work.is_cancelled()) std::this_thread::yield();
            return job_was_cancelled();
        };
        group.start(std::move(order));
        until([&, before = at_work.load()] { return at_work > before; });
    }
    void until(const std::function<bool()>& condition) {
        while (!condition()) {
            loop.run_posted();
            QCoreApplication::processEvents();
        }
    }
    icon_button* cross(int id) {
        return popover->findChild<icon_button*>(QStringLiteral("jobs.cancel.%1").arg(id));
    }
    simulated_run_loop loop;
    job_list list{loop};
    job_group group{list};
    std::atomic<int> at_work = 0;
    QWidget window;
    job_button* button = new job_button(list, &window);
    QWidget* popover = button->findChild<QWidget*>("jobs.list");
};

TEST_F(shown_jobs, short_work_shows_nothing) {
    start("Adding movies");
    loop.advance(0.4);
    EXPECT_FALSE(button->isVisible());
    list.cancel_all();
    until([&] { return list.jobs().empty(); });
    loop.advance(1);
    EXPECT_FALSE(button->isVisible());
}

TEST_F(shown_jobs, several_are_listed_and_cancelled_one_by_one) {
    start("Adding movies");
    loop.advance(0.5);
    EXPECT_TRUE(button->isVisible());
    EXPECT_EQ(button->words(), "Adding movies");
    EXPECT_EQ(button->accessibleName(), "Tasks: Adding movies, 25 %");
    start("Copying");
    loop.advance(2.5);
    EXPECT_EQ(button->words(), "2 tasks");
    // By the keyboard alone.
    button->setFocus(Qt::TabFocusReason);
    QTest::keyClick(button, Qt::Key_Return);
    ASSERT_TRUE(popover->isVisible());
    ASSERT_TRUE(cross(1) && cross(2));
    EXPECT_TRUE(cross(1)->accessibleName().contains("Adding movies"));
    EXPECT_EQ(popover->findChild<QLabel*>("jobs.fact.1")->text(), "0:09 left");
    EXPECT_EQ(popover->findChild<QLabel*>("jobs.fact.2")->text(), "0:08 left");
    QTest::keyClick(cross(1), Qt::Key_Return);
    EXPECT_FALSE(cross(1)->isEnabled());
    until([&] { return list.jobs().size() == 1; });
    EXPECT_TRUE(popover->isVisible());
    EXPECT_EQ(button->words(), "Copying");
    QTest::mouseClick(cross(2), Qt::LeftButton);
    until([&] { return list.jobs().empty(); });
    EXPECT_FALSE(popover->isVisible());
    EXPECT_FALSE(button->isVisible());
}

}  // namespace
}  // namespace vistels
