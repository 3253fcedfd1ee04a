// SPDX-License-Identifier: GPL-3.0-or-later
// Coding by the keyboard in the whole window: which press counts, what it presses, and when it comes up.
#include <QAction>
#include <QApplication>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QToolButton>
#include <QTreeWidget>

#include "logger/code_window_change.h"
#include "logger/press_engine.h"
#include "shell/keys/event_stamp.h"
#include "shell/keys/key_clashes.h"
#include "shell/keys/key_router.h"
#include "shell/panes/timeline/timeline_state.h"
#include "shell/panes/timeline/timeline_view.h"
#include "shell/window/key_map.h"
#include "shell/window/keys_window.h"
#include "shell/window/window_actions.h"
#include "support/shown_event.h"
#include "video/synchronised_playback.h"

namespace vistels {
namespace {

using names = std::vector<std::string>;

class coding_keys : public testing::shown_event {
  protected:
    void SetUp() override {
        shown_event::SetUp();
        if (!IsSkipped()) open();
    }
    // A key by its place on the keyboard, typing what the modifiers make of it.
    static void send(QWidget& to, QEvent::Type type, quint32 scan_code, Qt::Key key, const char* types,
                     Qt::KeyboardModifiers held = {}, bool repeats = false) {
        QKeyEvent event(type, key, held, scan_code, 0, 0, QLatin1String(types), repeats);
        QApplication::sendEvent(&to, &event);
    }
    template <class Change>
    void change(const std::string& name, Change how) {
        auto buttons = event().logger().buttons();
        for (auto& one : buttons) {
            if (one->name() == name) one = changed_button(one, how);
        }
        event().logger().set_buttons(buttons, 0);
    }
    void open_and_see_note(const char* row, const char* note) {
        ASSERT_TRUE(testing::open_and_wait(*window, folder));
        const auto clips = timeline().row_named(row)->clips();
        EXPECT_TRUE(std::any_of(clips.begin(), clips.end(),
                                [&](const auto& clip) { return clip->note_text() == note; }));
    }
    // Gives the first button of that name another key: by what it types, or else by its code.
    void bind(const std::string& name, const std::string& key, std::uint16_t code = 0) {
        auto buttons = event().logger().buttons();
        for (auto& one : buttons) {
            if (one->name() != name) continue;
            auto display = one->display();
            ASSERT_TRUE(display.binding);
            display.binding->chars_no_mod = key;
            display.binding->chars = key;
            display.binding->key_code = code;
            one = changed_button(one, [&](auto& changed) { changed.set_display(display); });
        }
        event().logger().set_buttons(buttons, 0);
    }
};

TEST_F(coding_keys, keys_without_a_button_still_play_while_one_is_down) {
    QTest::keyPress(window.get(), Qt::Key_A);
    QTest::keyClick(window.get(), Qt::Key_Space);
    EXPECT_TRUE(event().playback().is_playing());
    QTest::keyClick(window.get(), Qt::Key_K);
    EXPECT_FALSE(event().playback().is_playing());
    QTest::keyClick(window.get(), Qt::Key_Home);
    EXPECT_EQ(down(), names{"Attack"});
    EXPECT_EQ(event().playback().collection_time(), 0);
    QTest::keyRelease(window.get(), Qt::Key_A);
    EXPECT_EQ(down(), names{});
    EXPECT_EQ(timeline().clip_count(), 1U);
}

TEST_F(coding_keys, a_press_that_adds_a_trigger_shows_it_on_the_timeline) {
    auto& file = event().code_window_file();
    const std::string attack = event().logger().buttons()[0]->uuid();
    for (const auto& one : event().logger().buttons()) {
        if (one->name() != "Goal") continue;
        const auto part = plan_button(file.window(), changed_button(one, [&](auto& button) {
                                          button.set_type(button_type::trigger);
                                          button.set_action_link_to(attack);
                                      }));
        ASSERT_TRUE(part && event().timeline().make({"Trigger", "", {*part}}));
        break;
    }
    const auto& shown = window->findChild<timeline_view*>()->state().rows();
    ASSERT_TRUE(shown.ruler_triggers().empty());
    event().jump(3);
    QTest::keyClick(window.get(), Qt::Key_G);
    ASSERT_EQ(shown.ruler_triggers().size(), 1U) << "it has no row yet";
    EXPECT_NEAR(shown.ruler_triggers()[0].at, 3, 0.5);
    ASSERT_TRUE(event().undo().undo());
    EXPECT_TRUE(shown.ruler_triggers().empty());
    ASSERT_TRUE(event().undo().redo());
    EXPECT_EQ(shown.ruler_triggers().size(), 1U);
}

TEST_F(coding_keys, several_are_down_at_once_and_come_up_one_by_one) {
    for (const Qt::Key key : {Qt::Key_A, Qt::Key_D, Qt::Key_G}) QTest::keyPress(window.get(), key);
    EXPECT_EQ(down(), (names{"Attack", "Defence", "Goal"}));
    QTest::keyClick(window.get(), Qt::Key_Q);
    QTest::keyRelease(window.get(), Qt::Key_D);
    EXPECT_EQ(down(), (names{"Attack", "Goal"}));
    QTest::keyRelease(window.get(), Qt::Key_A);
    QTest::keyRelease(window.get(), Qt::Key_G);
    ASSERT_EQ(timeline().clip_count(), 3U);
    for (const auto& row : timeline().rows()) {
        ASSERT_EQ(row->clips().size(), 1U) << row->name();
        EXPECT_EQ(row->clips()[0]->qualifiers()->size(), 1U) << row->name();
    }
}

TEST_F(coding_keys, a_release_is_the_keys_whatever_it_types_by_then) {
    struct row {
        quint32 scan_code;
        Qt::Key key;
        const char* types;
        Qt::Key key_by_then;
        const char* types_by_then;
        Qt::KeyboardModifiers held;
        const char* button;
    };
    const row rows[] = {
        {38, Qt::Key_A, "a", Qt::Key_A, "A", Qt::ShiftModifier, "Attack"},
        {38, Qt::Key_A, "a", Qt::Key_A, "\x01", Qt::ControlModifier, "Attack"},
        {38, Qt::Key_A, "a", Qt::Key_AE, "", Qt::GroupSwitchModifier, "Attack"},
        {42, Qt::Key_G, "g", Qt::Key_G, "g", Qt::AltModifier | Qt::MetaModifier, "Goal"},
    };
    for (const row& each : rows) {
        const auto clips = timeline().clip_count();
        send(*window, QEvent::KeyPress, each.scan_code, each.key, each.types);
        ASSERT_EQ(down(), names{each.button});
        send(*window, QEvent::KeyRelease, each.scan_code, each.key_by_then, each.types_by_then, each.held);
        EXPECT_EQ(down(), names{}) << each.button << " " << each.held;
        EXPECT_EQ(timeline().clip_count(), clips + 1);
    }
}

// By the kernel's number, which window systems tell with 8 added.
TEST_F(coding_keys, a_key_bound_by_its_code_counts_whatever_it_types) {
    constexpr std::uint16_t a_key = 30;
    bind("Goal", "", a_key);
    struct row {
        quint32 scan_code;
        Qt::Key key;
        const char* types;
        names pressed;
    };
    const row rows[] = {{a_key + 8, Qt::Key_Y, "y", {"Goal"}},
                        {a_key + 8, Qt::Key_unknown, "", {"Goal"}},
                        {a_key, Qt::Key_Y, "y", {}},
                        {a_key + 16, Qt::Key_Y, "y", {}},
                        {0, Qt::Key_Y, "y", {}}};
    for (const row& each : rows) {
        send(*window, QEvent::KeyPress, each.scan_code, each.key, each.types);
        EXPECT_EQ(down(), each.pressed) << each.scan_code << " " << each.types;
        send(*window, QEvent::KeyRelease, each.scan_code, each.key, each.types);
        EXPECT_EQ(down(), names{});
    }
}

TEST_F(coding_keys, repeats_press_nothing_and_start_no_shortcut) {
    send(*window, QEvent::KeyPress, 38, Qt::Key_A, "a");
    for (int i = 0; i < 5; ++i) {
        send(*window, QEvent::KeyRelease, 38, Qt::Key_A, "a", {}, true);
        send(*window, QEvent::KeyPress, 38, Qt::Key_A, "a", {}, true);
        EXPECT_EQ(down(), names{"Attack"});
    }
    EXPECT_EQ(timeline().live_clips().size(), 1U);
    send(*window, QEvent::KeyRelease, 38, Qt::Key_A, "a");
    EXPECT_EQ(timeline().clip_count(), 1U);
    // A key that was down before the window had the keyboard repeats into it.
    send(*window, QEvent::KeyPress, 40, Qt::Key_D, "d", {}, true);
    EXPECT_EQ(down(), names{});
}

TEST_F(coding_keys, a_bound_letter_is_no_shortcut_as_long_as_it_is_bound) {
    for (const char* key : {"j", "k", "l", "i", "o", "m"}) {
        bind("Goal", key);
        const auto code = static_cast<Qt::Key>(QChar::fromLatin1(*key).toUpper().unicode());
        QTest::keyPress(window.get(), code);
        EXPECT_EQ(down(), names{"Goal"}) << key;
        EXPECT_FALSE(event().playback().is_playing()) << key;
        EXPECT_FALSE(window->session().player().is_muted()) << key;
        QTest::keyRelease(window.get(), code);
        EXPECT_EQ(down(), names{}) << key;
    }
    bind("Goal", "g");
    QTest::keyClick(window.get(), Qt::Key_L);
    EXPECT_TRUE(event().playback().is_playing());
    QTest::keyClick(window.get(), Qt::Key_K);
}

TEST_F(coding_keys, what_is_typed_into_a_field_is_text_and_what_was_held_before_comes_up) {
    QTest::keyClick(window.get(), Qt::Key_A);
    window->timeline().select({timeline().rows().front()->clips()[0]->id()});
    auto* field = find<QLineEdit>("inspector.start");
    QTest::keyPress(window.get(), Qt::Key_G);
    field->setFocus();
    field->clear();
    for (const Qt::Key key : {Qt::Key_D, Qt::Key_L, Qt::Key_Space, Qt::Key_I}) QTest::keyClick(field, key);
    EXPECT_EQ(field->text(), "dl i");
    EXPECT_EQ(down(), names{"Goal"});
    EXPECT_FALSE(event().playback().is_playing());
    QTest::keyRelease(field, Qt::Key_G);
    EXPECT_EQ(down(), names{});
    // Delete and Ctrl+A are the field's, too.
    QTest::keyClick(field, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(field, Qt::Key_Delete);
    EXPECT_EQ(field->text(), "");
    EXPECT_EQ(timeline().clip_count(), 2U);
}

// The key that asked for it is still held and repeats into it; the button stays down until it comes up.
TEST_F(coding_keys, a_note_is_written_while_its_button_is_down) {
    change("Attack", [](auto& button) { button.set_note_down(true); });
    change("Goal", [](auto& button) { button.set_note_up(true); });
    auto* field = find<QPlainTextEdit>("press_note.text");
    send(*window, QEvent::KeyPress, 38, Qt::Key_A, "a");
    ASSERT_TRUE(field->isVisible());
    EXPECT_TRUE(field->hasFocus());
    send(*field, QEvent::KeyPress, 38, Qt::Key_A, "a", {}, true);
    for (const Qt::Key key : {Qt::Key_D, Qt::Key_L, Qt::Key_Space, Qt::Key_G}) QTest::keyClick(field, key);
    EXPECT_EQ(field->toPlainText(), "dl g");
    EXPECT_EQ(down(), names{"Attack"});
    send(*field, QEvent::KeyRelease, 38, Qt::Key_A, "a");
    EXPECT_TRUE(QTest::qWaitFor([this] { return down().empty(); }));
    EXPECT_TRUE(field->isVisible());
    // A press by the mouse ends it; its own note takes the place of the first.
    QTest::mouseClick(find<QWidget>(("code_button." + button("Goal")).c_str()), Qt::LeftButton);
    const auto note_of = [this](const char* row) {
        return timeline().row_named(row)->clips()[0]->note_text();
    };
    EXPECT_EQ(note_of("Attack"), "dl g");
    EXPECT_TRUE(field->isVisible());
    EXPECT_EQ(field->toPlainText(), "");
    QTest::keyClicks(field, "far post");
    QTest::keyClick(field, Qt::Key_Return, Qt::ControlModifier);
    EXPECT_EQ(note_of("Goal"), "far post");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !field->isVisible(); }));
    // What is typed when the event goes is kept.
    QTest::keyClick(window.get(), Qt::Key_A);
    QTest::keyClicks(field, "last");
    window->session().close();
    open_and_see_note("Attack", "last");
}

// The Return key presses the button that has the focus, which goes into the note.
TEST_F(coding_keys, a_note_of_a_button_pressed_by_return_leaves_it_down) {
    change("Attack", [](auto& button) { button.set_note_down(true); });
    auto* attack = find<QWidget>(("code_button." + button("Attack")).c_str());
    auto* field = find<QPlainTextEdit>("press_note.text");
    attack->setFocus();
    send(*attack, QEvent::KeyPress, 36, Qt::Key_Return, "\r");
    ASSERT_TRUE(field->hasFocus());
    for (int i = 0; i < 3; ++i) {
        send(*field, QEvent::KeyRelease, 36, Qt::Key_Return, "\r", {}, true);
        send(*field, QEvent::KeyPress, 36, Qt::Key_Return, "\r", {}, true);
    }
    EXPECT_EQ(down(), names{"Attack"});
    EXPECT_EQ(field->toPlainText(), "");
    send(*field, QEvent::KeyRelease, 36, Qt::Key_Return, "\r");
    EXPECT_EQ(down(), names{});
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(field->toPlainText(), "\n");
}

// What one hand holds the other does not let go.
TEST_F(coding_keys, and_the_mouse_hold_one_button_each_for_itself) {
    auto* attack = find<QWidget>(("code_button." + button("Attack")).c_str());
    QTest::keyPress(window.get(), Qt::Key_A);
    QTest::mouseClick(attack, Qt::LeftButton);
    EXPECT_EQ(down(), names{"Attack"});
    QTest::keyRelease(window.get(), Qt::Key_A);
    EXPECT_EQ(down(), names{});
    // A key whose press has ended another way ends no other one.
    QTest::keyPress(window.get(), Qt::Key_A);
    event().logger().tab(event().playback().collection_time());
    QTest::mousePress(attack, Qt::LeftButton);
    QTest::keyRelease(window.get(), Qt::Key_A);
    EXPECT_EQ(down(), names{"Attack"});
    QTest::mouseRelease(attack, Qt::LeftButton);
    EXPECT_EQ(down(), names{});
}

TEST_F(coding_keys, a_release_counts_before_what_comes_after_it) {
    const auto release = [&] {
        QKeyEvent event(QEvent::KeyRelease, Qt::Key_A, {}, 38, 0, 0, QStringLiteral("a"));
        event.setTimestamp(static_cast<quint64>(steady_clock().seconds() * 1000));
        QApplication::sendEvent(window.get(), &event);
    };
    send(*window, QEvent::KeyPress, 38, Qt::Key_A, "a");
    release();
    EXPECT_EQ(down(), names{"Attack"}) << "it may be half of a repeat";
    QKeyEvent shortcut(QEvent::ShortcutOverride, Qt::Key_Home, {});
    QApplication::sendEvent(window.get(), &shortcut);
    EXPECT_EQ(down(), names{});
    send(*window, QEvent::KeyPress, 38, Qt::Key_A, "a");
    release();
    QTest::mousePress(&window->timeline(), Qt::LeftButton);
    EXPECT_EQ(down(), names{});
}

TEST_F(coding_keys, a_window_that_is_left_lets_all_come_up_once) {
    QTest::keyPress(window.get(), Qt::Key_A);
    QTest::keyPress(window.get(), Qt::Key_D);
    QWidget other;
    other.show();
    other.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&other));
    EXPECT_EQ(down(), names{});
    EXPECT_EQ(timeline().clip_count(), 2U);
    // Back again with the keys still held: their releases mean nothing, a new press counts.
    window->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
    QTest::keyRelease(window.get(), Qt::Key_A);
    QTest::keyRelease(window.get(), Qt::Key_D);
    EXPECT_EQ(timeline().clip_count(), 2U);
    QTest::keyClick(window.get(), Qt::Key_D);
    EXPECT_EQ(timeline().clip_count(), 3U);
}

TEST_F(coding_keys, undo_while_a_button_is_down_leaves_it_to_come_up) {
    QTest::keyClick(window.get(), Qt::Key_A);
    QTest::keyPress(window.get(), Qt::Key_G);
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier);
    QTest::keyRelease(window.get(), Qt::Key_G);
    EXPECT_EQ(down(), names{});
    EXPECT_TRUE(timeline().live_clips().empty());
    for (const auto& row : timeline().rows()) {
        for (const auto& clip : row->clips()) EXPECT_LE(clip->secs_start(), clip->secs_end());
    }
}

TEST_F(coding_keys, f1_shows_the_keys_as_long_as_it_is_held) {
    bind("Goal", "m");
    bind("Foul", "a");
    auto* keys = find<key_map>("key_map");
    EXPECT_FALSE(keys->isVisible());
    send(*window, QEvent::KeyPress, 67, Qt::Key_F1, "");
    ASSERT_TRUE(keys->isVisible());
    ASSERT_EQ(keys->lines().size(), 20U);
    EXPECT_EQ(keys->lines()[0].key, "1");
    EXPECT_EQ(keys->lines()[6].name, "Attack");
    EXPECT_TRUE(keys->lines()[6].warning.contains("Foul"));
    EXPECT_EQ(keys->lines()[7].name, "Foul");
    EXPECT_TRUE(keys->lines()[8].warning.isEmpty());
    // It repeats, and coding goes on.
    for (int i = 0; i < 3; ++i) {
        send(*window, QEvent::KeyRelease, 67, Qt::Key_F1, "", {}, true);
        send(*window, QEvent::KeyPress, 67, Qt::Key_F1, "", {}, true);
    }
    send(*window, QEvent::KeyPress, 40, Qt::Key_D, "d");
    EXPECT_EQ(down(), names{"Defence"});
    EXPECT_TRUE(keys->isVisible());
    send(*window, QEvent::KeyRelease, 40, Qt::Key_D, "d");
    send(*window, QEvent::KeyRelease, 67, Qt::Key_F1, "");
    EXPECT_TRUE(QTest::qWaitFor([&] { return !keys->isVisible(); }));
}

// In the pane's header and in the list of keys.
TEST_F(coding_keys, a_key_that_does_two_things_is_warned_of) {
    auto* mark = find<QToolButton>("code_window.clashes");
    EXPECT_TRUE(mark->isHidden());
    const std::pair<const char*, const char*> cases[] = {
        {"m", "instead of “Mute”"}, {"a", "also presses “Attack”"}, {" ", "instead of “Play or Pause”"}};
    for (const auto& [key, words] : cases) {
        bind("Goal", key);
        EXPECT_TRUE(mark->isVisible()) << key;
        EXPECT_TRUE(mark->toolTip().contains(words)) << key;
        keys_window all(window->actions(), &event(), window.get());
        const auto* list = all.findChild<QTreeWidget*>();
        EXPECT_EQ(list->findItems(QString::fromUtf8(words), Qt::MatchContains | Qt::MatchRecursive).size(), 1)
            << key;
    }
    bind("Goal", "g");
    EXPECT_TRUE(mark->isHidden());
}

TEST(key_clashes, are_found_by_what_the_key_types_and_holds) {
    using binding = button_key_binding;
    const auto typed = [](const char* chars, bool shift = false) {
        binding made;
        made.chars_no_mod = chars;
        made.shift = shift;
        made.key_code = 7;  // of another keyboard
        return made;
    };
    binding coded;
    coded.key_code = 7;
    struct row {
        binding a, b;
        bool clashes;
    };
    const row rows[] = {{typed("g"), typed("G"), true},
                        {typed("g"), typed("h"), false},
                        {typed("g"), typed("g", true), false},
                        {typed("\xC3\x84"), typed("\xC3\xA4"), true},
                        {coded, coded, true},
                        {coded, typed("g"), false}};
    for (const row& each : rows) {
        const std::vector<bound_button> both = {{"1", "One", {}, each.a}, {"2", "Two", {}, each.b}};
        const auto clashes = find_key_clashes(both, {});
        EXPECT_EQ(clashes[0].buttons, each.clashes ? QStringList("Two") : QStringList());
        EXPECT_EQ(clashes[1].buttons, each.clashes ? QStringList("One") : QStringList());
    }
}

class clock_at_hundred final : public clock {
  public:
    double seconds() const override { return now; }
    double now = 100;
};

// Presses and releases count from their events' stamps, however late they are handled.
TEST(key_moments, are_those_of_the_events) {
    clock_at_hundred time;
    QWidget window;
    key_router router(window, time);
    std::vector<double> pressed;
    std::vector<double> released;
    router.set_code({[](const QKeyEvent&) {
                         return names{"one", "two"};
                     },
                     [&](const std::string&, double at) { pressed.push_back(at); },
                     [&](const std::string&, double at) { released.push_back(at); },
                     [](double) { return false; },
                     [](double) { return false; },
                     {}});
    window.show();
    window.activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    const auto send = [&](QEvent::Type type, Qt::Key key, quint64 stamp) {
        QKeyEvent event(type, key, {}, "x");
        event.setTimestamp(stamp);
        QApplication::sendEvent(&window, &event);
    };
    using moments = std::vector<double>;
    send(QEvent::KeyPress, Qt::Key_A, 99'400);
    EXPECT_EQ(pressed, (moments{99.4, 99.4}));
    time.now = 101;
    send(QEvent::KeyRelease, Qt::Key_A, 100'250);
    // The next press settles it: no repeat of the same key came in between.
    send(QEvent::KeyPress, Qt::Key_B, 100'300);
    EXPECT_EQ(released, (moments{100.25, 100.25}));
    EXPECT_EQ(pressed, (moments{99.4, 99.4, 100.3, 100.3}));
    time.now = 102;
    router.release_all();
    EXPECT_EQ(released, (moments{100.25, 100.25, 102, 102}));
}

}  // namespace
}  // namespace vistels
