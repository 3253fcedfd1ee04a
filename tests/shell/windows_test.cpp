// SPDX-License-Identifier: GPL-3.0-or-later
// Several windows: opened, switched, closed and brought back, each with its own event.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/resource.h>

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <QTreeView>
#include <algorithm>
#include <filesystem>
#include <tuple>

#include "app/start/open_windows.h"
#include "app/start/run_record.h"
#include "app/start/start_up.h"
#include "logger/press_engine.h"
#include "shell/event/event_session.h"
#include "shell/kit/message_bar.h"
#include "shell/panes/side_bar/content_side_bar.h"
#include "shell/program/qt_run_loop.h"
#include "shell/window/event_opener.h"
#include "shell/window/main_window.h"
#include "shell/window/window_actions.h"
#include "shell/window/window_set.h"
#include "support/open_and_wait.h"
#include "support/patience.h"
#include "support/stored_event.h"
#include "support/stored_timeline.h"
#include "support/temporary_folder.h"
#include "timeline/files/sxy_Save_Load.h"
#include "util/file_system.h"
#include "util/property_list.h"
#include "video/synchronised_playback.h"

namespace vistels {
namespace {

using testing::becomes_active;
using testing::comes_true;
using testing::temporary_folder;
using names = std::vector<std::string>;

struct windows : public ::testing::Test {
    windows() {
        places = {home / "Home Vault.VVault", home / "Home Folder.VVault"};
        EXPECT_TRUE(start_up(places, 1, 0).ok());
        for (const char* name : {"First half", "Second half", "Training"}) {
            testing::put_stored_timeline(in_vault(name));
        }
    }
    std::string in_vault(const std::string& name) const { return path_join(places.home_vault, name); }

    // Starts as the program does, and waits until all is open.
    void start(std::vector<std::string> paths = {}) {
        const auto report = start_up(places, 1, 0);
        ASSERT_TRUE(report.ok());
        set = std::make_unique<window_set>(places, loop);
        set->begin({std::move(paths), report.value().windows, {}, report.value().folder_last_focus});
        ASSERT_TRUE(comes_true([this] {
            const auto all = set->windows();
            return std::all_of(all.begin(), all.end(), [](auto* one) { return one->session().is_open(); });
        }));
        wait_for_front();
    }
    // The front window is the active one, as the window system has it too.
    void wait_for_front() { ASSERT_TRUE(becomes_active(set->front())); }
    void wait_for_front(const std::string& name) {
        ASSERT_TRUE(comes_true([&] { return name_of(set->front()) == name; })) << name;
        wait_for_front();
    }
    void start_with(const names& events) {
        names paths;
        for (const auto& name : events) paths.push_back(in_vault(name));
        start(paths);
    }
    void quit() {
        EXPECT_TRUE(set->quit());
        set.reset();
    }
    static std::string name_of(main_window* window) { return window->session().name().toStdString(); }
    names shown() const {
        names all;
        for (auto* one : set->windows()) all.push_back(name_of(one));
        return all;
    }
    main_window* showing(const std::string& name) const {
        for (auto* one : set->windows()) {
            if (name_of(one) == name) return one;
        }
        ADD_FAILURE() << name << " is not open";
        return set->front();
    }
    // What the file lists, front to back.
    names listed() {
        set->wait_until_kept();
        names all;
        for (const auto& one : load_open_windows(places)) all.push_back(one.name);
        return all;
    }
    static void trigger(main_window* window, command which) { window->actions()[which]->trigger(); }
    // Chooses the line of the "Window" menu.
    void choose(main_window* in, const std::string& words) {
        for (QAction* one : in->window_menu().actions()) {
            if (one->text().toStdString() != words) continue;
            one->trigger();
            return wait_for_front(words);
        }
        ADD_FAILURE() << words << " is not in the menu";
    }
    static names lines_of(main_window* window) {
        names lines;
        for (QAction* one : window->window_menu().actions()) {
            if (one->objectName() != "window_line" || one->isSeparator()) continue;
            lines.push_back((one->isChecked() ? "* " : "") + one->text().toStdString());
        }
        return lines;
    }
    // In the side bar of `in`, by the menu of the item's line.
    void open_in_new_window(main_window* in, const char* name) {
        QTreeView& list = *in->findChild<content_side_bar*>()->list();
        const auto line = [&] {
            return list.model()
                ->match(list.model()->index(0, 0), Qt::DisplayRole, name, 1,
                        Qt::MatchRecursive | Qt::MatchExactly)
                .value(0);
        };
        ASSERT_TRUE(comes_true([&] { return line().isValid(); })) << name;
        list.scrollTo(line());
        const QPoint at = list.visualRect(line()).center();
        QTimer::singleShot(0, &list, [] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            ASSERT_TRUE(menu);
            QAction* action = nullptr;
            for (QAction* one : menu->actions()) {
                if (one->objectName() == "content.open_in_new_window") action = one;
            }
            ASSERT_TRUE(action);
            menu->setActiveAction(action);
            QTest::keyClick(menu, Qt::Key_Return);
        });
        QContextMenuEvent asked(QContextMenuEvent::Mouse, at, list.viewport()->mapToGlobal(at));
        QApplication::sendEvent(&list, &asked);
        wait_for_front(name);
        ASSERT_TRUE(testing::has_opened(*set->front()));
    }
    static message_bar& messages(main_window* window) { return *window->findChild<message_bar*>(); }
    static const sxy_DATA_root& timeline(main_window* window) {
        return window->session().shown_event()->timeline().timeline();
    }

    temporary_folder home;
    home_places places;
    qt_run_loop loop;
    std::unique_ptr<window_set> set;
};

TEST_F(windows, come_back_in_their_order_and_places) {
    start_with({"First half"});
    open_in_new_window(set->front(), "Second half");
    open_in_new_window(set->front(), "Training");
    EXPECT_EQ(shown(), (names{"Training", "Second half", "First half"}));
    const auto all = set->windows();
    EXPECT_NE(all[0]->geometry().topLeft(), all[1]->geometry().topLeft());
    EXPECT_NE(all[1]->geometry().topLeft(), all[2]->geometry().topLeft());
    // As high as the screen of the tests is; it is not wide enough for a window.
    showing("Training")->setGeometry(0, 30, 1100, 700);
    showing("First half")->setGeometry(0, 70, 1200, 720);
    trigger(showing("First half"), command::tab_review);
    choose(set->front(), "First half");
    EXPECT_EQ(lines_of(set->front()), (names{"* First half", "Second half", "Training"}));
    trigger(set->front(), command::quit);
    EXPECT_TRUE(set->windows().empty());
    set.reset();

    const auto stored = read_dictionary_or_empty(path_of(places, windows_open_file));
    ASSERT_TRUE(stored.array("window_order_on_save"));
    EXPECT_EQ(stored.array("window_order_on_save")->size(), 3u);
    start();
    EXPECT_EQ(shown(), (names{"First half", "Training", "Second half"}));
    EXPECT_TRUE(set->front()->isActiveWindow());
    for (auto* one : set->windows()) EXPECT_TRUE(one->isVisible());
    for (const auto& [name, top, height] : {std::tuple("Training", 30, 700), {"First half", 70, 720}}) {
        EXPECT_EQ(showing(name)->geometry().top(), top) << name;
        EXPECT_EQ(showing(name)->height(), height) << name;
    }
    EXPECT_EQ(showing("First half")->memory().tab, 1);
    EXPECT_EQ(showing("Second half")->memory().tab, 0);
    quit();
}

// What a kill would leave is what the files say at any moment.
TEST_F(windows, are_listed_as_they_open_and_close) {
    start_with({"First half"});
    EXPECT_EQ(listed(), names{"First half"});
    open_in_new_window(set->front(), "Second half");
    EXPECT_EQ(listed(), (names{"Second half", "First half"}));
    choose(set->front(), "First half");
    EXPECT_EQ(listed(), (names{"First half", "Second half"}));
    ASSERT_TRUE(testing::open_and_wait(*set->front(), in_vault("Training")));
    EXPECT_EQ(listed(), (names{"Training", "Second half"}));
    trigger(set->front(), command::new_window);
    wait_for_front("");
    EXPECT_EQ(set->windows().size(), 3u);
    EXPECT_EQ(listed(), (names{"Training", "Second half"}))
        << "a window without an event is not opened again";
    for (const char* name : {"", "Training"}) {
        wait_for_front(name);
        QTest::keyClick(set->front(), Qt::Key_W, Qt::ControlModifier);
        if (*name == 0) choose(set->front(), "Training");
    }
    EXPECT_TRUE(comes_true([&] { return shown() == names{"Second half"}; }));
    EXPECT_EQ(listed(), names{"Second half"});
    EXPECT_EQ(lines_of(set->front()), names{"* Second half"});
    set->front()->close();
    EXPECT_EQ(listed(), names{"Second half"}) << "closing the last window ends the program";
}

// A program that dies between its first window and the events of the others.
TEST_F(windows, that_have_not_opened_yet_are_listed_too) {
    start_with({"First half", "Second half", "Training"});
    EXPECT_EQ(shown(), (names{"First half", "Second half", "Training"}));
    quit();
    set = std::make_unique<window_set>(places, loop);
    set->begin({{}, load_open_windows(places), {}});
    set->wait_until_kept();
    names paths;
    for (const auto& one : load_open_windows(places)) paths.push_back(path_name(one.open_from_path));
    EXPECT_EQ(paths, (names{"First half", "Second half", "Training"}));
    EXPECT_TRUE(comes_true([&] { return !listed().empty() && !listed().back().empty(); }));
    quit();
}

TEST_F(windows, of_the_last_session_open_behind_a_path_and_stay_remembered) {
    start_with({"First half", "Second half"});
    set->front()->setGeometry(0, 30, 1100, 700);
    quit();
    start_with({"Training"});
    EXPECT_EQ(shown(), (names{"Training", "First half", "Second half"}));
    EXPECT_EQ(listed(), (names{"Training", "First half", "Second half"}));
    quit();
    start_with({"First half"});
    EXPECT_EQ(shown(), (names{"First half", "Training", "Second half"})) << "each once";
    EXPECT_EQ(set->front()->height(), 700) << "in its own window";
    quit();
    // A vault stands for its first collection, which may be among them.
    testing::put_stored_event(places.home_vault, in_vault("Video Groups/Final"), 0);
    start({in_vault("Video Groups/Final")});
    quit();
    start({in_vault("Training"), places.home_vault});
    EXPECT_EQ(shown(), (names{"Training", "Final", "First half", "Second half"}));
    quit();
}

TEST_F(windows, what_had_the_focus_is_kept_as_it_changes_and_gets_it_again) {
    for (const char* name : {"First half", "Second half", "Training"}) {
        timeline_header header;
        header.uuid = name;
        ASSERT_TRUE(save_timeline_header(header, in_vault(name)).ok());
    }
    const auto kept = [this] {
        set->wait_until_kept();
        return read_settings(places, correctly_terminated_file).text_or_empty("uuid last focus 2");
    };
    start_with({"First half", "Second half"});
    EXPECT_EQ(kept(), "First half");
    choose(set->front(), "Second half");
    EXPECT_EQ(kept(), "Second half");
    trigger(set->front(), command::new_window);
    wait_for_front("");
    EXPECT_EQ(kept(), "Second half") << "nothing is open in front";
    ASSERT_TRUE(testing::open_and_wait(*set->front(), in_vault("Training")));
    EXPECT_EQ(kept(), "Training");
    quit();
    auto order = load_open_windows(places);
    ASSERT_EQ(order.size(), 3u);
    for (auto& one : order) one.order = 3 - one.order;
    ASSERT_TRUE(save_open_windows(places, order).ok());
    start();
    EXPECT_EQ(shown(), (names{"Training", "First half", "Second half"}));
    quit();
    ASSERT_TRUE(save_open_windows(places, {}).ok());
    start();
    EXPECT_EQ(shown(), names{"Training"}) << "and not the first event of the home vault";
    quit();
}

TEST_F(windows, that_are_gone_are_told_once_and_the_others_open) {
    start_with({"First half", "Second half", "Training"});
    quit();
    std::filesystem::remove_all(in_vault("First half"));
    set = std::make_unique<window_set>(places, loop);
    set->begin({{}, load_open_windows(places), {{user_message::tone::good, "Recovered", {}, {}, {}}}});
    ASSERT_TRUE(comes_true([&] { return shown() == names{"Second half", "Training"}; }));
    wait_for_front();
    message_bar& bar = messages(showing("Second half"));
    EXPECT_EQ(bar.waiting(), 2u);
    EXPECT_EQ(bar.headline(), "Recovered");
    bar.findChild<QPushButton*>("message.choice.0")->click();
    EXPECT_TRUE(bar.headline().contains("First half")) << bar.headline().toStdString();
    EXPECT_EQ(messages(showing("Training")).waiting(), 0u);
    EXPECT_EQ(listed(), (names{"Second half", "Training"}));
    quit();
    for (const char* name : {"Second half", "Training"}) std::filesystem::remove_all(in_vault(name));
    testing::put_stored_timeline(in_vault("Cup"));
    set = std::make_unique<window_set>(places, loop);
    set->begin({{in_vault("Cup"), in_vault("Nowhere")}, load_open_windows(places), {}});
    ASSERT_TRUE(comes_true([&] { return shown() == names{"Cup"}; }));
    EXPECT_TRUE(messages(set->front()).text().contains("Nowhere"));
    quit();
}

TEST_F(windows, of_a_vault_that_is_away_stay_listed_until_the_user_says_otherwise) {
    const std::string vault = home / "Cup.VVault";
    testing::put_stored_timeline(path_join(vault, "Cup final"));
    start({in_vault("First half"), path_join(vault, "Cup final")});
    quit();
    std::filesystem::rename(vault, home / "unplugged");
    start();
    EXPECT_EQ(shown(), names{"First half"});
    EXPECT_TRUE(messages(set->front()).headline().contains("Cup final"));
    EXPECT_EQ(listed(), (names{"First half", "Cup final"}));
    quit();
    std::filesystem::rename(home / "unplugged", vault);
    start();
    EXPECT_EQ(shown(), (names{"First half", "Cup final"}));
    quit();
    std::filesystem::rename(vault, home / "unplugged");
    start();
    auto* forget = messages(set->front()).findChild<QPushButton*>("message.choice.1");
    ASSERT_TRUE(forget);
    forget->click();
    EXPECT_EQ(listed(), names{"First half"});
    quit();
}

TEST_F(windows, show_a_folder_once) {
    start_with({"First half", "Second half"});
    main_window* second = showing("Second half");
    std::filesystem::create_symlink(in_vault("First half"), home / "a way to it");
    choose(set->front(), "Second half");
    second->opener().open_paths({home / "a way to it"});
    wait_for_front("First half");
    EXPECT_EQ(shown(), (names{"First half", "Second half"}));
    open_in_new_window(set->front(), "Second half");
    EXPECT_EQ(shown(), (names{"Second half", "First half"}));
    second->opener().open_paths({in_vault("Training"), in_vault("First half")});
    wait_for_front("First half");
    ASSERT_TRUE(testing::has_opened(*second));
    EXPECT_EQ(shown(), (names{"First half", "Training"}));
    QTest::keyClick(set->front(), Qt::Key_Tab, Qt::ControlModifier);
    wait_for_front("Training");
    EXPECT_EQ(shown(), (names{"Training", "First half"}));
    quit();
}

TEST_F(windows, code_only_in_the_active_one_and_let_go_when_left) {
    start_with({"First half", "Second half"});
    main_window* first = showing("First half");
    main_window* second = showing("Second half");
    EXPECT_TRUE(first->session().player().is_heard() && !second->session().player().is_heard());
    QTest::keyPress(first, Qt::Key_A);
    ASSERT_EQ(timeline(first).live_clips().size(), 1u);
    choose(first, "Second half");
    EXPECT_TRUE(timeline(first).live_clips().empty()) << "the key is held by nobody any more";
    EXPECT_EQ(timeline(first).clip_count(), 3u);
    EXPECT_TRUE(!first->session().player().is_heard() && second->session().player().is_heard());
    QTest::keyRelease(second, Qt::Key_A);
    EXPECT_EQ(timeline(second).clip_count(), 2u);
    QTest::keyClick(second, Qt::Key_A);
    EXPECT_EQ(timeline(second).clip_count(), 3u);
    EXPECT_EQ(timeline(first).clip_count(), 3u);
    QTest::keyClick(second, Qt::Key_Space);
    EXPECT_TRUE(second->session().shown_event()->playback().is_playing());
    EXPECT_FALSE(first->session().shown_event()->playback().is_playing());
    QTest::keyClick(second, Qt::Key_Space);
    QTest::keyClick(second, Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(timeline(second).clip_count(), 2u);
    EXPECT_EQ(timeline(first).clip_count(), 3u);
    quit();
}

TEST_F(windows, share_vaults_and_settings) {
    start_with({"First half", "Second half"});
    trigger(set->front(), command::theme_dark);
    trigger(set->front(), command::hide_filtered_out);
    for (auto* one : set->windows()) {
        EXPECT_TRUE(one->actions()[command::theme_dark]->isChecked());
        EXPECT_TRUE(one->actions()[command::hide_filtered_out]->isChecked());
    }
    testing::put_stored_timeline(in_vault("Extra time"));
    for (auto* one : set->windows()) {
        auto* model = one->findChild<content_side_bar*>()->list()->model();
        EXPECT_TRUE(comes_true([&] {
            return !model
                        ->match(model->index(0, 0), Qt::DisplayRole, "Extra time", 1,
                                Qt::MatchRecursive | Qt::MatchExactly)
                        .isEmpty();
        }));
    }
    quit();
    start();
    for (auto* one : set->windows()) EXPECT_TRUE(one->actions()[command::theme_dark]->isChecked());
    trigger(set->front(), command::theme_desktop);
    quit();
}

// While the volume takes nothing a press is in memory alone; closing the window would lose it.
TEST_F(windows, tell_before_closing_which_presses_are_not_on_record) {
    start_with({"First half"});
    wait_for_front();
    const press_engine& logger = set->front()->session().shown_event()->logger();
    rlimit before{};
    ASSERT_EQ(::getrlimit(RLIMIT_FSIZE, &before), 0);
    rlimit full = before;
    full.rlim_cur = 0;
    const auto handled = ::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &full), 0);
    QTest::keyClick(set->front(), Qt::Key_A);
    EXPECT_GT(logger.unrecorded(), 0u);
    QString told;
    QTimer::singleShot(0, set->front(), [&told] {
        auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
        ASSERT_TRUE(box);
        told = box->informativeText();
        QTest::keyClick(box, Qt::Key_Escape);  // stays
    });
    EXPECT_FALSE(set->quit());
    EXPECT_TRUE(told.contains("in memory only")) << told.toStdString();
    ASSERT_EQ(::setrlimit(RLIMIT_FSIZE, &before), 0);
    ::signal(SIGXFSZ, handled);
    EXPECT_TRUE(set->quit());
    const auto saved = load_timeline(in_vault("First half"));
    ASSERT_TRUE(saved) << saved.message();
    std::size_t clips = 0;
    for (const auto& row : saved.value().content.rows) clips += row->clips().size();
    EXPECT_EQ(clips, 3u) << "two were there";
}

TEST_F(windows, stay_when_one_cannot_save_and_the_user_wants_to) {
    start_with({"First half", "Second half"});
    QTest::keyClick(set->front(), Qt::Key_A);
    // Its files cannot be written where a file stands in the place of the folder.
    std::filesystem::rename(in_vault("First half"), home / "moved");
    testing::put_file(in_vault("First half"), "no folder");
    const auto answer = [this](const char* words) {
        QTimer::singleShot(0, set->front(), [words] {
            auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
            ASSERT_TRUE(box);
            for (QAbstractButton* one : box->buttons()) {
                if (one->text().remove('&') == words) QTest::mouseClick(one, Qt::LeftButton);
            }
        });
    };
    answer("Stay");
    EXPECT_FALSE(set->quit());
    EXPECT_EQ(set->windows().size(), 2u);
    answer("Close Anyway");
    EXPECT_TRUE(set->quit());
    EXPECT_TRUE(set->windows().empty());
    set.reset();
    names paths;
    for (const auto& one : load_open_windows(places)) paths.push_back(path_name(one.open_from_path));
    EXPECT_EQ(paths, (names{"First half", "Second half"}));
}

}  // namespace
}  // namespace vistels
