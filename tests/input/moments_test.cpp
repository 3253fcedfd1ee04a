// SPDX-License-Identifier: GPL-3.0-or-later
// Clips begin and end when keys and mouse buttons go down and up, not when the program comes to know of it.
#include <linux/input-event-codes.h>

#include <QApplication>
#include <QKeyEvent>
#include <thread>

#include "input/x_server.h"
#include "shell/panes/code_window/code_window_button.h"
#include "shell/panes/code_window/code_window_canvas.h"
#include "support/patience.h"
#include "support/shown_event.h"
#include "video/synchronised_playback.h"

namespace vistels {
namespace {

using namespace std::chrono_literals;
using testing::comes_true;
using testing::x_server;
using moment = x_server::moment;

constexpr double most_seconds = 0.02;  // that a time may be off

using names = std::vector<std::string>;

// The program's window on the server's screen, its event playing, with the clip buttons "Typed", which the
// key G presses by what it types, and "Coded", which the key H presses by its code.
class moments : public testing::shown_event {
  protected:
    void SetUp() override {
        shown_event::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        open();
        event().logger().set_buttons({bound("Typed", "g", 0), bound("Coded", "", KEY_H), shifted()}, 0);
        event().playback().set_least_range(0, 10'000);  // as slow as a machine may be
        // So that time runs evenly, and goes by no device's.
        window->session().player().set_muted(true);
        event().playback().play();
    }

    static button_record bound(const std::string& name, const char* types, std::uint16_t code) {
        markup_Button_Item button;
        button.set_uuid(name);
        button.set_name(name);
        button.set_type(button_type::clip);
        logger_item_display_info display;
        display.logger_rect = {name == "Typed" ? 10.0 : 150.0, 10, 120, 60};
        display.binding.emplace();
        display.binding->chars_no_mod = types;
        display.binding->key_code = code;
        button.set_display(std::move(display));
        return button_record(std::move(button));
    }

    // The key 1 with Shift, which types another character.
    static button_record shifted() {
        return changed_button(bound("Shifted", "1", 0), [](markup_Button_Item& button) {
            logger_item_display_info display = button.display();
            display.logger_rect.y = 80;
            display.binding->shift = true;
            button.set_display(std::move(display));
        });
    }

    // The thread of the windows is busy for so long.
    static void block(std::chrono::milliseconds time = 300ms) { std::this_thread::sleep_for(time); }

    void point_at(const char* name) {
        const auto* button = find<code_window_canvas>("code_window_canvas")->button(name);
        ASSERT_TRUE(button && button->isVisible()) << name;
        const QPointF at = button->mapToGlobal(QRectF(button->rect()).center()) * button->devicePixelRatioF();
        server.move_mouse(static_cast<int>(at.x()), static_cast<int>(at.y()));
    }

    bool comes_to(const names& wanted) {
        return comes_true([&] { return down() == wanted; });
    }
    const sxy_CLIP& growing() { return *timeline().live_clips().at(0).clip; }

    // Where the collection stood then, told by where it stands now.
    void expect_time(double told, const moment& when, const char* what) {
        const steady_clock clock;
        const double before = clock.seconds();
        const double now = event().playback().collection_time();
        const double after = clock.seconds();
        EXPECT_GE(told, now - (after - when.from) - most_seconds) << what;
        EXPECT_LE(told, now - (before - when.to) + most_seconds) << what;
    }
    void expect_clip(const char* row, const moment& pressed, const moment& released) {
        const auto& clips = timeline().row_named(row)->clips();
        const sxy_CLIP& made = *clips[clips.size() - 1];
        expect_time(made.secs_start(), pressed, "start");
        expect_time(made.secs_end(), released, "end");
    }

    x_server& server = x_server::used();
};

TEST_F(moments, of_keys_count_however_late_the_program_is) {
    for (const auto& [key, name] : {std::pair(KEY_G, "Typed"), {KEY_H, "Coded"}, {KEY_G, "Typed"}}) {
        const moment pressed = server.key(static_cast<unsigned>(key), true);
        block();
        ASSERT_TRUE(comes_to({name}));
        expect_time(growing().secs_start(), pressed, name);
        const moment released = server.key(static_cast<unsigned>(key), false);
        block();
        ASSERT_TRUE(comes_to({}));
        expect_clip(name, pressed, released);
    }
    EXPECT_EQ(timeline().clip_count(), 3U);
}

TEST_F(moments, of_a_key_with_shift_are_those_of_what_it_types_without) {
    server.key(KEY_LEFTSHIFT, true);
    const moment pressed = server.key(KEY_1, true);
    ASSERT_TRUE(comes_to({"Shifted"}));
    server.key(KEY_LEFTSHIFT, false);
    const moment released = server.key(KEY_1, false);
    ASSERT_TRUE(comes_to({}));
    expect_clip("Shifted", pressed, released);
}

TEST_F(moments, of_all_that_happened_while_the_program_was_late_count) {
    const moment typed = server.key(KEY_G, true);
    block(60ms);
    const moment coded = server.key(KEY_H, true);
    block(60ms);
    const moment typed_up = server.key(KEY_G, false);
    block(60ms);
    const moment coded_up = server.key(KEY_H, false);
    block();
    ASSERT_TRUE(comes_true([&] { return timeline().clip_count() == 2; }));
    expect_clip("Typed", typed, typed_up);
    expect_clip("Coded", coded, coded_up);
}

TEST_F(moments, of_a_key_that_repeats_are_its_first_and_its_last) {
    struct : QObject {
        int repeats = 0;
        bool eventFilter(QObject*, QEvent* event) override {
            const bool is_key = event->type() == QEvent::KeyPress;
            if (is_key && static_cast<QKeyEvent*>(event)->isAutoRepeat()) ++repeats;
            return false;
        }
    } counting;
    qApp->installEventFilter(&counting);
    const moment pressed = server.key(KEY_G, true);
    ASSERT_TRUE(comes_true([&] { return counting.repeats > 20; }));
    block();
    ASSERT_TRUE(comes_true([&] { return counting.repeats > 40; }));
    EXPECT_EQ(down(), names{"Typed"});
    const moment released = server.key(KEY_G, false);
    block();
    ASSERT_TRUE(comes_to({}));
    EXPECT_EQ(timeline().clip_count(), 1U);
    expect_clip("Typed", pressed, released);
}

TEST_F(moments, of_the_mouse_count_however_late_the_program_is) {
    for (const char* name : {"Typed", "Coded"}) {
        point_at(name);
        const moment pressed = server.button(1, true);
        block();
        ASSERT_TRUE(comes_to({name}));
        expect_time(growing().secs_start(), pressed, name);
        const moment released = server.button(1, false);
        block();
        ASSERT_TRUE(comes_to({}));
        expect_clip(name, pressed, released);
    }
    EXPECT_EQ(timeline().clip_count(), 2U);
}

// With Shift, or by the right button: up with the next press.
TEST_F(moments, of_a_click_that_holds_and_of_the_one_that_ends_it_count) {
    const auto click = [&](unsigned button, bool with_shift) {
        if (with_shift) server.key(KEY_LEFTSHIFT, true);
        const moment pressed = server.button(button, true);
        server.button(button, false);
        if (with_shift) server.key(KEY_LEFTSHIFT, false);
        block();
        return pressed;
    };
    constexpr unsigned left = 1;
    constexpr unsigned right = 3;
    point_at("Typed");
    for (const auto& [button, with_shift] : {std::pair(left, true), {right, false}}) {
        const moment pressed = click(button, with_shift);
        ASSERT_TRUE(comes_to({"Typed"}));
        block(60ms);
        QApplication::processEvents();
        ASSERT_EQ(down(), names{"Typed"});
        const moment ended = click(left, false);
        ASSERT_TRUE(comes_to({}));
        expect_clip("Typed", pressed, ended);
    }
    EXPECT_EQ(timeline().clip_count(), 2U);
}

}  // namespace
}  // namespace vistels
