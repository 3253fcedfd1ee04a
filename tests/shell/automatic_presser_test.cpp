// SPDX-License-Identifier: GPL-3.0-or-later
// Buttons that are pressed automatically: turned on and off in a window, remembered, and in one window alone.
#include <gtest/gtest.h>

#include <QAction>
#include <QCheckBox>
#include <QDialog>
#include <QDoubleSpinBox>
#include <QPlainTextEdit>
#include <QPointer>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <algorithm>

#include "app/settings/code_window_settings.h"
#include "app/start/start_up.h"
#include "logger/press_engine.h"
#include "shell/event/event_session.h"
#include "shell/kit/message_bar.h"
#include "shell/program/qt_run_loop.h"
#include "shell/window/event_opener.h"
#include "shell/window/main_window.h"
#include "shell/window/window_actions.h"
#include "shell/window/window_set.h"
#include "support/open_and_wait.h"
#include "support/patience.h"
#include "support/stored_timeline.h"
#include "support/temporary_folder.h"
#include "util/file_system.h"

namespace vistels {
namespace {

using testing::comes_true;
using testing::temporary_folder;

const QString notice = QStringLiteral("Buttons are being pressed automatically");

struct automatic_pressing : public ::testing::Test {
    automatic_pressing() {
        places = {home / "Home Vault.VVault", home / "Home Folder.VVault"};
        EXPECT_TRUE(start_up(places, 1, 0).ok());
        for (const char* name : {"First half", "Second half"}) testing::put_stored_timeline(in_vault(name));
    }
    std::string in_vault(const std::string& name) const { return path_join(places.home_vault, name); }

    void start(std::vector<std::string> paths) {
        const auto report = start_up(places, 1, 0);
        ASSERT_TRUE(report.ok());
        set = std::make_unique<window_set>(places, loop);
        set->begin({std::move(paths), report.value().windows, {}, report.value().folder_last_focus});
        ASSERT_TRUE(comes_true([this] {
            const auto all = set->windows();
            return std::all_of(all.begin(), all.end(), [](auto* one) { return one->session().is_open(); });
        }));
    }
    void quit() {
        EXPECT_TRUE(set->quit());
        set.reset();
    }
    static press_engine& engine(main_window* window) { return window->session().shown_event()->logger(); }
    static message_bar& messages(main_window* window) { return *window->findChild<message_bar*>(); }
    static bool is_told(main_window* window) {
        return comes_true([=] { return messages(window).headline() == notice; });
    }
    // Buttons go down there without anybody's doing.
    static bool is_pressed(main_window* window) {
        int pressed = 0;
        const auto fired = engine(window).fired.connect(
            [&](const button_fired& one) { pressed += one.is_down && one.cause == press_cause::presser; });
        return comes_true([&] { return pressed > 3; });
    }
    // By the panel, with three buttons every 20 ms when it is turned on.
    static void choose(main_window* window, bool on) {
        window->actions()[command::press_automatically]->trigger();
        const QPointer<QDialog> asked = window->findChild<QDialog*>(QStringLiteral("presser"));
        ASSERT_TRUE(asked);
        auto* is_on = asked->findChild<QCheckBox*>(QStringLiteral("presser.on"));
        EXPECT_NE(is_on->isChecked(), on);
        QTest::mouseClick(is_on, Qt::LeftButton);
        asked->findChild<QSpinBox*>(QStringLiteral("presser.buttons"))->setValue(3);
        asked->findChild<QDoubleSpinBox*>(QStringLiteral("presser.seconds"))->setValue(0.02);
        QTest::mouseClick(asked->findChild<QPushButton*>(QStringLiteral("presser.keep")), Qt::LeftButton);
        ASSERT_TRUE(comes_true([&] { return !asked; }));
    }
    test_press_settings stored() {
        set->wait_until_kept();
        return load_test_press_settings(places);
    }

    temporary_folder home;
    home_places places;
    qt_run_loop loop;
    std::unique_ptr<window_set> set;
};

TEST_F(automatic_pressing, is_told_as_long_as_it_lasts_and_stopped_from_there) {
    start({in_vault("First half")});
    main_window* window = set->front();
    const auto clips = window->session().shown_event()->timeline().timeline().clip_count();
    choose(window, true);
    EXPECT_TRUE(is_told(window));
    EXPECT_TRUE(is_pressed(window));
    EXPECT_EQ(stored(), (test_press_settings{true, 3, 0.02, false, false}));
    QTest::mouseClick(messages(window).findChild<QPushButton*>(QStringLiteral("message.choice.0")),
                      Qt::LeftButton);
    EXPECT_NE(messages(window).headline(), notice);
    EXPECT_EQ(stored(), (test_press_settings{false, 3, 0.02, false, false}));
    EXPECT_TRUE(comes_true([&] { return engine(window).down_buttons().empty(); }));
    EXPECT_GT(window->session().shown_event()->timeline().timeline().clip_count(), clips);

    // It is turned on for one event: another one is not pressed into.
    choose(window, true);
    EXPECT_TRUE(is_told(window));
    ASSERT_TRUE(testing::open_and_wait(*window, in_vault("Second half")));
    EXPECT_NE(messages(window).headline(), notice);
    EXPECT_FALSE(stored().presses_buttons);
    choose(window, true);
    choose(window, false);
    EXPECT_NE(messages(window).headline(), notice);
    EXPECT_FALSE(stored().presses_buttons);
    quit();
}

TEST_F(automatic_pressing, is_tried_out_before_by_a_script_that_changes_nothing) {
    start({in_vault("First half")});
    main_window* window = set->front();
    const auto clips = window->session().shown_event()->timeline().timeline().clip_count();
    window->actions()[command::dry_run]->trigger();
    const QPointer<QDialog> tried = window->findChild<QDialog*>(QStringLiteral("dry_run"));
    ASSERT_TRUE(tried);
    auto* script = tried->findChild<QPlainTextEdit*>(QStringLiteral("dry_run.script"));
    auto* outcome = tried->findChild<QPlainTextEdit*>(QStringLiteral("dry_run.outcome"));
    const auto press = [&](const char* name) {
        QTest::mouseClick(tried->findChild<QPushButton*>(QString::fromLatin1(name)), Qt::LeftButton);
    };
    press("dry_run.run");
    EXPECT_TRUE(comes_true([&] { return outcome->toPlainText().contains(QStringLiteral(": clip")); }))
        << outcome->toPlainText().toStdString();
    script->appendPlainText(QStringLiteral("later"));
    press("dry_run.run");
    EXPECT_EQ(outcome->toPlainText(), QStringLiteral("Line 4 does not begin with a time in seconds."));
    EXPECT_EQ(window->session().shown_event()->timeline().timeline().clip_count(), clips);
    EXPECT_TRUE(engine(window).down_buttons().empty());
    press("dry_run.close");
    EXPECT_TRUE(comes_true([&] { return !tried; }));
    quit();
}

TEST_F(automatic_pressing, is_done_in_one_window_and_goes_on_at_the_next_start) {
    start({in_vault("First half"), in_vault("Second half")});
    main_window* first = set->windows()[1];
    main_window* second = set->windows()[0];
    choose(first, true);
    EXPECT_TRUE(is_told(first));
    choose(second, true);
    EXPECT_TRUE(is_told(second));
    EXPECT_NE(messages(first).headline(), notice);
    EXPECT_TRUE(is_pressed(second));
    EXPECT_TRUE(comes_true([&] { return engine(first).down_buttons().empty(); }));
    quit();

    start({});
    main_window* front = set->front();
    main_window* other = set->windows()[1];
    EXPECT_TRUE(is_told(front));
    EXPECT_TRUE(is_pressed(front));
    EXPECT_NE(messages(other).headline(), notice);
    // Which waits until all is saved: no more comes meanwhile.
    front->actions()[command::close_window]->trigger();
    EXPECT_NE(messages(front).headline(), notice);
    EXPECT_TRUE(comes_true([&] { return set->windows().size() == 1; }));
    EXPECT_FALSE(stored().presses_buttons) << "the window where it was on was closed alone";
    quit();
}

}  // namespace
}  // namespace vistels
