// SPDX-License-Identifier: GPL-3.0-or-later
// The code window pane under real mouse and key events.
#include <gtest/gtest.h>

#include <QAbstractItemView>
#include <QApplication>
#include <QElapsedTimer>
#include <QEnterEvent>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <QTouchEvent>
#include <algorithm>

#include "logger/press_engine.h"
#include "shell/kit/controls.h"
#include "shell/kit/pane_header.h"
#include "shell/kit/theme.h"
#include "shell/panes/code_window/clip_list_popover.h"
#include "shell/panes/code_window/code_window_canvas.h"
#include "shell/panes/code_window/code_window_view.h"
#include "shell/panes/code_window/link_words.h"
#include "shell/program/qt_run_loop.h"
#include "support/temporary_folder.h"
#include "util/clock.h"

namespace vistels {
namespace {

code_button button_at(const char* uuid, double x, double y, double width = 100, double height = 56) {
    code_button made;
    made.uuid = uuid;
    made.name = QLatin1String(uuid);
    made.what = QStringLiteral("Clip");
    made.marks = code_button::band::left;
    made.place = QRectF(x, y, width, height);
    made.colour = theme::dark().item_colour(1);
    return made;
}

// Remembers what it was asked, and does it.
class recording_source final : public code_window_source {
  public:
    std::vector<code_button> buttons() const override { return all; }
    code_button_state state(const std::string& button) const override {
        const auto found = states.find(button);
        return found == states.end() ? code_button_state{} : found->second;
    }
    void press(const std::string& button, double clock_seconds, const QPointF& place, bool latches) override {
        (*log) += "+" + button + (latches ? "!" : "");
        if (changes_buttons) buttons_changed.emit();
        EXPECT_GT(clock_seconds, 0);
        moment = clock_seconds;
        pressed_at = place;
        states[button].is_down = true;
        states[button].is_latched = latches;
        states[button].down_since = now;
        states_changed.emit();
    }
    void release(const std::string& button, double clock_seconds) override {
        (*log) += "-" + button;
        moment = clock_seconds;
        states[button] = {};
        states_changed.emit();
    }
    double collection_time() const override { return now; }
    clip_list clips_of(const std::string&) const override { return {}; }
    std::vector<bound_button> bound_buttons() const override { return {}; }
    bool has_links() const override { return !linked.empty(); }
    std::vector<code_link> links() const override { return linked; }
    QStringList link_words(const std::string& button) const override {
        return {QStringLiteral("of ") + QString::fromStdString(button)};
    }
    QStringList link_problems() const override { return {}; }

    std::vector<code_button> all = {button_at("a", 8, 8), button_at("b", 114, 8), button_at("c", 8, 70),
                                    button_at("d", 114, 70, 100, 46)};
    std::vector<code_link> linked;
    std::map<std::string, code_button_state> states;
    std::shared_ptr<std::string> log = std::make_shared<std::string>();
    double now = 5;
    double moment = 0;  // of the last press or release
    QPointF pressed_at;
    bool changes_buttons = false;  // a press does, as one that adds a trigger
};

class code_window_pane : public ::testing::Test {
  protected:
    void SetUp() override {
        use_theme(*qApp, theme_choice::dark);
        auto source = std::make_unique<recording_source>();
        source_ = source.get();
        log_ = source->log;
        view_.resize(260, 300);
        view_.set_source(std::move(source));
        view_.show();
        ASSERT_TRUE(QTest::qWaitForWindowExposed(&view_));
    }
    code_window_button* button(const char* uuid) { return view_.canvas().button(uuid); }

    code_window_view view_;
    recording_source* source_ = nullptr;
    std::shared_ptr<std::string> log_;
};

TEST_F(code_window_pane, a_button_is_down_from_the_press_to_the_release) {
    QTest::mousePress(button("b"), Qt::LeftButton);
    EXPECT_EQ(*log_, "+b");
    EXPECT_TRUE(button("b")->looks_down());
    source_->now = 16.68;
    view_.tick();
    EXPECT_EQ(button("b")->time_shown(), QStringLiteral("0:11.6"));
    QTest::mouseMove(button("b"), QPoint(400, 400));
    QTest::mouseRelease(button("b"), Qt::LeftButton, {}, QPoint(400, 400));
    EXPECT_EQ(*log_, "+b-b");
    EXPECT_FALSE(button("b")->state().is_down);
    EXPECT_TRUE(button("b")->time_shown().isEmpty());
}

TEST_F(code_window_pane, a_momentary_press_stays_drawn_for_a_moment) {
    QElapsedTimer since_press;
    since_press.start();
    QTest::mouseClick(button("a"), Qt::LeftButton);
    EXPECT_EQ(*log_, "+a-a");
    EXPECT_FALSE(button("a")->state().is_down);
    const bool shown = button("a")->looks_down();
    EXPECT_TRUE(shown || since_press.elapsed() >= theme::current().motion.momentary);
    EXPECT_TRUE(QTest::qWaitFor([this] { return !button("a")->looks_down(); }));
}

TEST_F(code_window_pane, several_are_down_at_once_and_the_header_counts_them) {
    auto* header = view_.findChild<pane_header*>();
    EXPECT_EQ(header->fact(), QStringLiteral("4 buttons"));
    QTest::mousePress(button("a"), Qt::LeftButton);
    source_->press("c", 1, {}, false);  // by a key
    EXPECT_EQ(view_.canvas().down_count(), 2U);
    EXPECT_EQ(header->fact(), QStringLiteral("2 down"));
    source_->release("c", 1);
    QTest::mouseRelease(button("a"), Qt::LeftButton);
    EXPECT_EQ(header->fact(), QStringLiteral("4 buttons"));
}

std::string drawn(const link_arrows& arrows) {
    std::string all;
    for (const code_link& one : arrows.drawn_links()) all += one.from + one.to + " ";
    return all;
}

TEST_F(code_window_pane, links_are_shown_of_all_or_of_the_button_pointed_at) {
    const auto& kinds = link_kinds();
    const link_kind& down = *link_kind_of("ON_DOWN_SET_DOWN");
    auto* choice = view_.findChild<icon_button*>(QStringLiteral("code_window.links"));
    EXPECT_TRUE(choice->isHidden());
    source_->linked = {{"a", "b", &down}, {"b", "c", &kinds.front()}, {"c", "a", &kinds.back()}};
    source_->links_changed.emit();
    EXPECT_FALSE(choice->isHidden());
    const auto point_at = [&](const char* uuid, QEvent::Type type) {
        QEvent leave(QEvent::Leave);
        QEnterEvent enter(QPointF(5, 5), QPointF(5, 5), QPointF(5, 5));
        QApplication::sendEvent(button(uuid), type == QEvent::Enter ? &enter : &leave);
    };
    link_arrows& arrows = view_.arrows();
    if (QWidget* focused = QApplication::focusWidget()) focused->clearFocus();
    EXPECT_FALSE(arrows.isVisible());
    source_->link_fired.emit("a", "b", down);
    EXPECT_EQ(arrows.running(), 0U) << "nothing runs that is not shown";

    view_.set_links_shown(links_shown::all);
    EXPECT_TRUE(arrows.isVisible());
    EXPECT_EQ(drawn(arrows), "ab bc ca ");
    EXPECT_EQ(arrows.geometry(), view_.canvas().rect());
    EXPECT_NE(view_.childAt(button("a")->mapTo(&view_, QPoint(20, 20))), &arrows) << "it takes no presses";
    view_.set_links_shown(links_shown::of_current);
    EXPECT_EQ(drawn(arrows), "");
    point_at("b", QEvent::Enter);
    EXPECT_EQ(drawn(arrows), "ab bc ");
    EXPECT_TRUE(button("b")->toolTip().contains(QStringLiteral("of b")));
    EXPECT_TRUE(button("b")->accessibleDescription().contains(QStringLiteral("of b")));
    // One that goes while it is pointed at is not the current one any more.
    const code_button gone = source_->all[1];
    source_->all.erase(source_->all.begin() + 1);
    source_->buttons_changed.emit();
    EXPECT_EQ(arrows.current(), "");
    source_->all.insert(source_->all.begin() + 1, gone);
    source_->buttons_changed.emit();

    view_.set_links_shown(links_shown::all);
    point_at("c", QEvent::Enter);
    EXPECT_EQ(arrows.current(), "c");
    point_at("c", QEvent::Leave);
    EXPECT_EQ(arrows.current(), "");
    EXPECT_EQ(drawn(arrows), "ab bc ca ");
    source_->link_fired.emit("a", "b", down);
    source_->link_fired.emit("a", "c", down);
    EXPECT_EQ(arrows.running(), 1U) << "there is no link from a to c";
    EXPECT_TRUE(QTest::qWaitFor([&] { return arrows.running() == 0; }));

    EXPECT_FALSE(button("c")->looks_blocked());
    source_->link_fired.emit("b", "c", *link_kind_of("ON_DOWN_BLOCK"));
    EXPECT_TRUE(button("c")->looks_blocked());
    EXPECT_TRUE(QTest::qWaitFor([&] { return !button("c")->looks_blocked(); }));

    std::vector<code_link> many(link_arrows::most_drawn + 1, {"a", "b", &down});
    source_->linked = many;
    source_->links_changed.emit();
    EXPECT_EQ(drawn(arrows), "") << "too many to tell apart";
    source_->linked.clear();
    source_->links_changed.emit();
    EXPECT_TRUE(choice->isHidden());
}

TEST_F(code_window_pane, the_gap_belongs_to_the_nearest_button) {
    const QPoint corner = view_.canvas().mapTo(&view_, QPoint(109, 30));  // 1 px right of "a"
    EXPECT_EQ(view_.childAt(corner), button("a"));
    EXPECT_EQ(view_.childAt(corner + QPoint(3, 0)), button("b"));
}

TEST_F(code_window_pane, return_presses_what_has_the_focus_and_repeats_do_not_count) {
    button("c")->setFocus(Qt::TabFocusReason);
    QTest::keyPress(button("c"), Qt::Key_Return);
    QKeyEvent again(QEvent::KeyPress, Qt::Key_Return, {}, QString(), true);
    QApplication::sendEvent(button("c"), &again);
    EXPECT_EQ(*log_, "+c");
    QTest::keyRelease(button("c"), Qt::Key_Return);
    EXPECT_EQ(*log_, "+c-c");
    QTest::keyClick(button("c"), Qt::Key_Space);  // the transport's
    EXPECT_EQ(*log_, "+c-c");
}

TEST_F(code_window_pane, what_the_mouse_holds_goes_up_when_the_pane_is_left_or_goes) {
    QTest::mousePress(button("a"), Qt::LeftButton);
    view_.release_mouse();
    EXPECT_EQ(*log_, "+a-a");
    QTest::mousePress(button("b"), Qt::LeftButton);
    view_.hide();
    EXPECT_EQ(*log_, "+a-a+b-b");
    view_.show();
    QTest::mousePress(button("d"), Qt::LeftButton);
    source_->all.pop_back();
    source_->buttons_changed.emit();
    EXPECT_EQ(*log_, "+a-a+b-b+d-d");
    QTest::mousePress(button("c"), Qt::LeftButton);
    view_.set_source(nullptr);
    EXPECT_EQ(*log_, "+a-a+b-b+d-d+c-c");
    EXPECT_TRUE(view_.canvas().buttons().empty());
}

TEST_F(code_window_pane, each_finger_holds_its_button_until_it_is_lifted) {
    const std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
    code_window_canvas* canvas = &view_.canvas();
    const auto at = [&](const char* uuid) { return button(uuid)->geometry().center(); };
    QTest::touchEvent(&view_, screen.get()).press(0, at("a"), canvas);
    QTest::touchEvent(&view_, screen.get()).stationary(0).press(1, at("d"), canvas);
    EXPECT_EQ(*log_, "+a+d");
    EXPECT_EQ(canvas->down_count(), 2U);
    QTest::touchEvent(&view_, screen.get()).move(0, at("c"), canvas).move(1, QPoint(500, 500), canvas);
    EXPECT_EQ(*log_, "+a+d");
    QTest::touchEvent(&view_, screen.get()).release(0, at("c"), canvas).stationary(1);
    EXPECT_EQ(*log_, "+a+d-a");
    // What the mouse holds, too, stays down.
    QTest::mousePress(button("d"), Qt::LeftButton);
    QTest::touchEvent(&view_, screen.get()).release(1, QPoint(500, 500), canvas);
    EXPECT_EQ(*log_, "+a+d-a");
    QTest::mouseRelease(button("d"), Qt::LeftButton);
    EXPECT_EQ(*log_, "+a+d-a-d");
}

TEST_F(code_window_pane, a_touch_counts_from_its_own_moment) {
    const std::unique_ptr<QPointingDevice> screen(QTest::createTouchDevice());
    code_window_canvas& canvas = view_.canvas();
    const auto send = [&](QEvent::Type type, QEventPoint::State state, double age) {
        const QPointF at = canvas.mapToGlobal(button("b")->geometry().center());
        QTouchEvent event(type, screen.get(), {}, {QEventPoint(3, state, at, at)});
        const double happened = steady_clock().seconds() - age;
        event.setTimestamp(static_cast<quint64>(happened * 1000));
        QApplication::sendEvent(&canvas, &event);
        EXPECT_NEAR(source_->moment, happened, 0.002);
    };
    send(QEvent::TouchBegin, QEventPoint::Pressed, 0.6);
    send(QEvent::TouchEnd, QEventPoint::Released, 0.3);
    EXPECT_EQ(*log_, "+b-b");
    send(QEvent::TouchBegin, QEventPoint::Pressed, 0.2);
    send(QEvent::TouchCancel, QEventPoint::Stationary, 0.1);
    EXPECT_EQ(*log_, "+b-b+b-b");
}

TEST_F(code_window_pane, other_looks_of_the_same_buttons_let_nothing_go) {
    source_->changes_buttons = true;
    QTest::mousePress(button("a"), Qt::LeftButton);
    code_window_button* const held = button("a");
    source_->all[0].name = QStringLiteral("Attack");
    source_->press("b", 1, {}, false);
    EXPECT_EQ(button("a"), held);
    EXPECT_EQ(held->accessibleName(), QStringLiteral("Attack"));
    EXPECT_EQ(*log_, "+a+b");
    // One that goes lets go.
    source_->all.erase(source_->all.begin());
    source_->press("c", 1, {}, false);
    EXPECT_EQ(*log_, "+a+b+c-a");
    EXPECT_EQ(button("a"), nullptr);
}

TEST_F(code_window_pane, a_pane_of_another_size_is_not_scrolled_by_the_user) {
    source_->all.push_back(button_at("e", 8, 2000));
    source_->buttons_changed.emit();
    view_.scroll_to({0, 1500});
    int told = 0;
    const connection scrolls = view_.scrolled.connect([&](const QPointF&) { ++told; });
    for (const int height : {1200, 300}) {
        view_.resize(260, height);
        QApplication::processEvents();
    }
    EXPECT_EQ(told, 0);
    EXPECT_EQ(view_.findChild<QScrollArea*>()->verticalScrollBar()->value(), 1500);
}

// By Shift with a click, and by the right button: what holds it then is not the hand.
TEST_F(code_window_pane, a_button_is_held_down_until_its_next_press) {
    QTest::mouseClick(button("a"), Qt::LeftButton, Qt::ShiftModifier);
    QTest::mouseClick(button("b"), Qt::RightButton);
    view_.release_mouse();
    source_->buttons_changed.emit();  // they are drawn anew
    EXPECT_EQ(*log_, "+a!+b!");
    EXPECT_TRUE(button("a")->state().is_latched);
    EXPECT_TRUE(button("a")->toolTip().contains(QStringLiteral("Held down until its next press")));
    QTest::mouseClick(button("a"), Qt::LeftButton);
    EXPECT_EQ(*log_, "+a!+b!+a-a");
}

TEST_F(code_window_pane, the_place_of_a_press_is_known_and_marked) {
    source_->all[0].shows_ping = source_->all[1].shows_ping = true;
    source_->all[1].fires_in_centre = true;
    source_->buttons_changed.emit();
    const QPoint at = QPoint(25, 42) + QPoint(1, 1) * code_window_button::margin();
    const QPointF centre(0.5, 0.5);
    QTest::mouseClick(button("a"), Qt::LeftButton, {}, at);
    EXPECT_EQ(source_->pressed_at, QPointF(0.25, 0.75));
    EXPECT_EQ(button("a")->ping(), QPointF(0.25, 0.75));
    QTest::mouseClick(button("b"), Qt::LeftButton, {}, at);
    EXPECT_EQ(source_->pressed_at, centre);
    QTest::mouseClick(button("c"), Qt::LeftButton, {}, at);
    EXPECT_FALSE(button("c")->ping());
    EXPECT_TRUE(QTest::qWaitFor([this] { return !button("a")->ping(); }));
    source_->press("a", 1, {}, false);  // by a key
    EXPECT_EQ(button("a")->ping(), centre);
}

class paint_counter final : public QObject {
  public:
    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() == QEvent::Paint) painted += watched->property("uuid").toString();
        return false;
    }
    QString painted;
};

TEST_F(code_window_pane, times_are_those_asked_for_and_only_what_changes_is_painted) {
    source_->all[1].shows_clock = source_->all[2].shows_clock = true;
    source_->all[2].shows_down_time = true;
    source_->buttons_changed.emit();
    paint_counter counter;
    for (const char* one : {"a", "b", "c", "d"}) {
        button(one)->setProperty("uuid", QLatin1String(one));
        button(one)->installEventFilter(&counter);
        source_->now = 60;
        if (*one != 'd') source_->press(one, 1, {}, false);
    }
    struct row {
        double now;
        QString a, b, c, painted;
    };
    const row rows[] = {{72.35, "0:12.3", "0:01:12", "0:12.3", {}},
                        {72.41, "0:12.4", "0:01:12", "0:12.4", "ac"},
                        {72.44, "0:12.4", "0:01:12", "0:12.4", ""},
                        {73.41, "0:13.4", "0:01:13", "0:13.4", "abc"}};
    for (const row& each : rows) {
        QApplication::processEvents();
        counter.painted.clear();
        source_->now = each.now;
        view_.tick();
        QApplication::processEvents();
        EXPECT_EQ(button("a")->time_shown(), each.a);
        EXPECT_EQ(button("b")->time_shown(), each.b);
        EXPECT_EQ(button("c")->time_shown(), each.c);
        EXPECT_TRUE(button("d")->time_shown().isEmpty());
        std::sort(counter.painted.begin(), counter.painted.end());
        if (!each.painted.isNull()) {
            EXPECT_EQ(counter.painted, each.painted) << each.now;
        }
    }
    source_->release("c", 1);
    EXPECT_EQ(button("c")->time_shown(), QStringLiteral("0:01:13"));
}

TEST_F(code_window_pane, assistive_programs_find_and_press_buttons) {
    EXPECT_EQ(button("a")->accessibleName(), QStringLiteral("a"));
    EXPECT_EQ(view_.findChild<QWidget*>(QStringLiteral("code_button.d")), button("d"));
    button("d")->click();
    EXPECT_EQ(*log_, "+d-d");
    source_->states["a"].is_blocked = true;
    source_->states_changed.emit();
    EXPECT_TRUE(button("a")->accessibleDescription().contains(QStringLiteral("blocked")));
}

TEST_F(code_window_pane, the_canvas_shrinks_to_the_pane_and_is_scrolled_below_that) {
    struct row {
        int pane;
        double scale;
        bool scrolls;
    };
    // The narrowest button is 100 wide, the lowest 46 high: at 32 high nothing is made smaller.
    const double least = 32.0 / 46;
    const row rows[] = {{500, 1, false}, {222, 1, false}, {200, 200 / 222.0, false}, {120, least, true}};
    for (const row& each : rows) {
        view_.resize(each.pane, 300);
        QApplication::processEvents();
        EXPECT_NEAR(view_.canvas().scale(), each.scale, 1e-9) << each.pane;
        EXPECT_EQ(view_.canvas().width() > each.pane, each.scrolls) << each.pane;
        const QSize face = button("d")->size() - QSize(2, 2) * code_window_button::margin();
        EXPECT_GE(face.height(), 32);
        EXPECT_GE(face.width(), 40);
    }
}

class standing_transport final : public transport {
  public:
    double collection_time() const override { return seconds; }
    double collection_time_at(double) const override { return seconds; }
    bool is_playing() const override { return true; }
    double rate() const override { return 1; }
    void play() override {}
    void pause() override {}
    void set_rate(double) override {}
    void seek(double to) override { seconds = to; }
    double seconds = 20;
};

// The pane on a real press engine: what the mouse does is on the timeline, and what is there is counted.
TEST(code_window_engine, a_press_makes_its_clip_and_is_counted) {
    const testing::temporary_folder folder;
    qt_run_loop loop;
    auto opened = timeline_document::open(folder / "timeline", loop);
    ASSERT_TRUE(opened) << opened.message();
    timeline_document& timeline = *opened.value();
    press_engine engine(timeline, loop.time());
    std::vector<markup_Button_Item> buttons(2);
    buttons[0].set_uuid("shot");
    buttons[0].set_name("Shot");
    buttons[0].set_type(button_type::clip);
    logger_item_display_info display;
    display.logger_rect = {8, 8, 100, 56};
    display.show_keys = true;
    display.binding = button_key_binding{};
    display.binding->chars_no_mod = "h";
    buttons[0].set_display(display);
    buttons[1].set_uuid("goal");
    buttons[1].set_name("On target");
    buttons[1].set_type(button_type::qualifier);
    display.logger_rect = {8, 70, 100, 46};
    display.binding.reset();
    buttons[1].set_display(display);
    standing_transport playing;
    engine.set_buttons({buttons.begin(), buttons.end()}, 0);
    code_window_view view;
    view.set_source(source_of(engine, timeline, playing));
    view.resize(300, 200);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    code_window_button* shot = view.canvas().button("shot");
    code_window_button* goal = view.canvas().button("goal");
    EXPECT_EQ(shot->button().key, QStringLiteral("H"));
    EXPECT_EQ(goal->button().marks, code_button::band::below);

    QTest::mouseClick(goal, Qt::LeftButton);
    EXPECT_TRUE(goal->state().found_none);
    EXPECT_TRUE(goal->accessibleDescription().contains(QStringLiteral("no clip")));
    QTest::mousePress(shot, Qt::LeftButton);
    EXPECT_FALSE(goal->state().found_none);
    EXPECT_TRUE(shot->state().is_live);
    ASSERT_EQ(timeline.timeline().live_clips().size(), 1U);
    playing.seconds = 24;
    engine.press("goal", 24);  // by a key, while the mouse holds the other
    EXPECT_TRUE(goal->state().is_down);
    EXPECT_FALSE(goal->state().is_live);
    engine.release("goal", 24);
    QTest::mouseRelease(shot, Qt::LeftButton);
    EXPECT_FALSE(shot->state().is_down);
    EXPECT_EQ(shot->state().count, 1U);
    const row_pointer row = timeline.timeline().row_named("Shot");
    ASSERT_TRUE(row && row->clips().size() == 1);
    EXPECT_DOUBLE_EQ(row->clips()[0]->secs_start(), 20);
    EXPECT_DOUBLE_EQ(row->clips()[0]->secs_end(), 24);
    EXPECT_EQ(row->clips()[0]->qualifiers()->size(), 1U);
    ASSERT_TRUE(timeline.apply(plan_delete_clips(timeline.timeline(), {row->clips()[0]->id()}, "", 0)));
    EXPECT_EQ(shot->state().count, 0U);
    view.set_source(nullptr);
}

// What links make of the buttons is seen, and goes with no press that is held.
TEST(code_window_engine, links_change_looks_and_what_is_in_the_middle) {
    const testing::temporary_folder folder;
    qt_run_loop loop;
    auto opened = timeline_document::open(folder / "timeline", loop);
    ASSERT_TRUE(opened) << opened.message();
    press_engine engine(*opened.value(), loop.time());
    std::vector<markup_Button_Item> buttons(3);
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        buttons[i].set_uuid(std::string(1, static_cast<char>('a' + i)));
        buttons[i].set_type(button_type::none);
        logger_item_display_info display;
        display.logger_rect = {8, i == 2 ? 1500.0 : 8 + 20.0 * static_cast<double>(i), 100, 56};
        buttons[i].set_display(display);
    }
    const auto link = [&](const char* code, const char* to) {
        auto all = buttons[0].action_links();
        all.push_back({code, colour{1, 0, 0, 1}, to, "", "", {}});
        buttons[0].set_action_links(all);
    };
    link("ON_DOWN_SET_BUTTON_COLOUR", "b");
    link("ON_DOWN__SEND_TO_BACK", "b");
    link("ON_UP_CENTER_ON", "c");
    engine.set_buttons({buttons.begin(), buttons.end()}, 0);
    standing_transport playing;
    code_window_view view;
    view.set_source(source_of(engine, *opened.value(), playing));
    view.resize(300, 200);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    const auto on_top = [&] { return view.canvas().childAt(50, 40); };
    EXPECT_EQ(on_top(), view.canvas().button("b"));
    QTest::mousePress(view.canvas().button("a"), Qt::LeftButton);
    EXPECT_EQ(view.canvas().button("b")->button().colour, QColor(255, 0, 0));
    EXPECT_EQ(on_top(), view.canvas().button("a"));
    EXPECT_TRUE(engine.is_down("a"));
    QTest::mouseRelease(view.canvas().button("a"), Qt::LeftButton);
    EXPECT_FALSE(engine.is_down("a"));
    const auto* seen = view.findChild<QScrollArea*>();
    const QPoint middle = view.canvas().button("c")->geometry().center();
    EXPECT_TRUE(seen->viewport()->rect().contains(view.canvas().mapTo(seen->viewport(), middle)));
    view.set_source(nullptr);
}

TEST(link_words, say_what_links_do_and_what_is_wrong_with_them) {
    const auto linked = [](const char* name, std::vector<std::pair<const char*, const char*>> links) {
        markup_Button_Item button;
        button.set_uuid(name);
        button.set_name(name);
        auto all = button.action_links();
        for (const auto& [code, to] : links) all.push_back({code, std::nullopt, to, to, "", {}});
        button.set_action_links(all);
        return button_record(std::move(button));
    };
    const std::vector<button_record> buttons = {
        linked("Attack", {{"ON_DOWN_SET_UP", "Defence"}, {"ON_ALL_DOWN_SET_DOWN", "Alarm"}}),
        linked("Defence", {{"ON_DOWN_SET_UP", "Attack"}, {"ON_ALL_DOWN_SET_DOWN", "Alarm"}}),
        linked("Alarm", {{"ON_UP_SET_DOWN", "Gone"}, {"PRIVATE_LINK_TO", "Gone"}})};
    const link_graph graph(buttons);
    EXPECT_EQ(link_words(buttons, graph, 0),
              QStringList({QStringLiteral("When “Attack” goes down, “Defence” goes up."),
                           QStringLiteral("When “Attack”, “Defence” are all down, “Alarm” goes down."),
                           QStringLiteral("When “Defence” goes down, this goes up.")}));
    EXPECT_EQ(link_words(buttons, graph, 2),
              QStringList(QStringLiteral("When “Attack”, “Defence” are all down, this goes down.")));
    // That two put each other up is no circle: neither's going up sets anything off.
    EXPECT_EQ(link_problems(buttons, graph),
              QStringList(QStringLiteral(
                  "“Alarm”: a link (Up > Down) leads to “Gone”, which is not there any more")));

    const std::vector<button_record> round = {
        linked("A", {{"ON_DOWN_SET_DOWN", "B"}}), linked("B", {{"ON_DOWN_TOGGLE", "C"}}),
        linked("C", {{"ON_UP_SET_DOWN", "A"}}), linked("D", {{"ON_DOWN_SET_DOWN", "A"}})};
    EXPECT_EQ(link_problems(round, link_graph(round)),
              QStringList(QStringLiteral("“A”, “B”, “C” set each other off in a circle: each changes once")));

    // However many there are, what is said can be read, and soon.
    std::vector<button_record> many;
    for (int from = 0; from < 200; ++from) {
        markup_Button_Item button;
        button.set_uuid("b" + std::to_string(from));
        button.set_name("Button " + std::to_string(from));
        std::vector<markup_Button_Action_Link_ITEM> all;
        for (int to = 0; to < 200; ++to)
            all.push_back({"ON_ANY_UP_SET_UP", std::nullopt, "b" + std::to_string(to), "", "", {}});
        button.set_action_links(all);
        many.emplace_back(std::move(button));
    }
    const link_graph all_to_all(many);
    const QStringList told = link_words(many, all_to_all, 7);
    EXPECT_EQ(told.size(), 9);
    EXPECT_EQ(told.back(), QStringLiteral("and 193 more"));
    EXPECT_EQ(told[0], QStringLiteral("When any of “Button 0”, “Button 1”, “Button 2”, “Button 3”, “Button "
                                      "4”, “Button 5”, and 194 more is up, “Button 0” goes up."));
    EXPECT_EQ(link_problems(many, all_to_all).size(), 1);
}

// A list takes no keys, follows its row, and goes with a press elsewhere.
TEST(code_window_engine, a_lister_shows_the_clips_of_its_row_and_goes_to_the_one_chosen) {
    const testing::temporary_folder folder;
    qt_run_loop loop;
    auto opened = timeline_document::open(folder / "timeline", loop);
    ASSERT_TRUE(opened) << opened.message();
    press_engine engine(*opened.value(), loop.time());
    std::vector<markup_Button_Item> buttons(2);
    for (std::size_t i = 0; i < buttons.size(); ++i) {
        buttons[i].set_uuid(i == 0 ? "shot" : "list");
        buttons[i].set_name("Shot");
        buttons[i].set_type(i == 0 ? button_type::clip : button_type::none);
        logger_item_display_info display;
        display.logger_rect = {8, 8 + 70.0 * static_cast<double>(i), 100, 56};
        buttons[i].set_display(display);
    }
    buttons[1].set_lister(true);
    buttons[1].set_lister_text("Shots so far");
    engine.set_buttons({buttons.begin(), buttons.end()}, 0);
    for (const double at : {10.0, 20.0, 30.0}) {
        engine.press("shot", at);
        engine.release("shot", at + 5);
    }
    standing_transport playing;
    playing.seconds = 26;
    code_window_view view;
    view.set_source(source_of(engine, *opened.value(), playing));
    view.resize(600, 400);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
    double sought = 0;
    const connection seeks = view.seek_asked.connect([&](double seconds) { sought = seconds; });
    code_window_button* lister = view.canvas().button("list");

    QTest::mousePress(lister, Qt::LeftButton);
    auto* list = view.findChild<clip_list_popover*>();
    ASSERT_TRUE(list && list->isVisible());
    EXPECT_FALSE(QApplication::activePopupWidget());
    EXPECT_TRUE(engine.is_down("list"));
    QTest::mouseRelease(lister, Qt::LeftButton);
    auto* lines = list->findChild<QAbstractItemView*>();
    EXPECT_EQ(lines->model()->rowCount(), 3);
    EXPECT_EQ(lines->currentIndex().row(), 1);
    EXPECT_FALSE(list->geometry().intersects(QRect(lister->mapTo(&view, QPoint()), lister->size())));
    engine.press("shot", 50);
    engine.release("shot", 51);
    EXPECT_EQ(lines->model()->rowCount(), 4);
    QTest::mouseClick(lines->viewport(), Qt::LeftButton, {},
                      lines->visualRect(lines->model()->index(2, 0)).center());
    EXPECT_DOUBLE_EQ(sought, 30);
    EXPECT_TRUE(list->isVisible());
    QTest::mouseClick(view.canvas().button("shot"), Qt::LeftButton);
    EXPECT_FALSE(list->isVisible());
    engine.press("list", 60);  // by a key
    EXPECT_TRUE(list->isVisible());
    QTest::keyClick(&view, Qt::Key_Escape);
    EXPECT_FALSE(list->isVisible());
    view.set_source(nullptr);
}

}  // namespace
}  // namespace vistels
