// SPDX-License-Identifier: GPL-3.0-or-later
// Vaults in the window: made, replaced, added, chosen, taken from the list; what a vault holds shows by
// itself; a timeline without pictures and one that another program writes.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QDesktopServices>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSpinBox>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QTreeView>
#include <QUrl>
#include <filesystem>

#include "app/settings/settings_store.h"
#include "app/settings/vault_preferences.h"
#include "app/start/start_up.h"
#include "app/vaults/content_keeper.h"
#include "app/vaults/known_vaults.h"
#include "document/writer_lock.h"
#include "logger/press_engine.h"
#include "shell/event/event_notices.h"
#include "shell/event/event_session.h"
#include "shell/event/read_only_guard.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/collection/transport_bar.h"
#include "shell/panes/side_bar/content_model.h"
#include "shell/panes/side_bar/content_side_bar.h"
#include "shell/panes/timeline/timeline_view.h"
#include "shell/program/qt_run_loop.h"
#include "shell/window/event_opener.h"
#include "shell/window/main_window.h"
#include "shell/window/window_actions.h"
#include "support/open_and_wait.h"
#include "support/stored_event.h"
#include "support/stored_timeline.h"
#include "support/temporary_folder.h"
#include "timeline/files/sxy_Save_Load.h"
#include "timeline/files/timeline_form.h"
#include "util/file_system.h"
#include "video/synchronised_playback.h"

namespace vistels {
namespace {

using testing::put_file;
using testing::temporary_folder;

// Takes what would be shown in the desktop's file manager.
class shown_folders : public QObject {
    Q_OBJECT
  public:
    shown_folders() { QDesktopServices::setUrlHandler(QStringLiteral("file"), this, "take"); }
    ~shown_folders() override { QDesktopServices::unsetUrlHandler(QStringLiteral("file")); }
    Q_INVOKABLE void take(const QUrl& url) { paths << url.toLocalFile(); }
    QStringList paths;
};

struct vault_window : public ::testing::Test {
    vault_window() {
        places = {home / "Home Vault.VVault", home / "Home Folder.VVault"};
        EXPECT_TRUE(start_up(places, 1, 0).ok());
        places = with_store(places);
    }
    ~vault_window() override {
        if (window) window->close();
    }
    void show() {
        content = std::make_unique<content_keeper>(places, loop);
        window = std::make_unique<main_window>(places, loop, *content, jobs);
        window->resize(1600, 1000);
        window->show();
        window->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(window.get()));
        window->refresh_content();
        ASSERT_TRUE(QTest::qWaitFor([&] { return line("Home Vault").isValid(); }));
    }
    // A timeline of two clips that belongs to no collection.
    std::string put_timeline(const char* name) {
        return testing::put_stored_timeline(path_join(places.home_vault, name));
    }
    QTreeView& list() { return *window->findChild<content_side_bar*>()->list(); }
    QModelIndex line(const char* words) {
        auto* model = list().model();
        return model
            ->match(model->index(0, 0), Qt::DisplayRole, words, 1, Qt::MatchRecursive | Qt::MatchExactly)
            .value(0);
    }
    void open_line(const char* words) {
        ASSERT_TRUE(QTest::qWaitFor([&] { return line(words).isValid(); })) << words;
        list().setCurrentIndex(line(words));
        QTest::keyClick(&list(), Qt::Key_Return);
        ASSERT_TRUE(testing::has_opened(*window));
    }
    // Runs the command, whose panel is answered by `does`.
    void with_panel(command which, const std::function<void(QDialog&)>& does) {
        bool answered = false;
        QTimer::singleShot(0, window.get(), [&] {
            auto* panel = qobject_cast<QDialog*>(QApplication::activeModalWidget());
            ASSERT_TRUE(panel);
            does(*panel);
            answered = true;
            if (panel->isVisible()) panel->done(QDialog::Rejected);
        });
        trigger(which);
        EXPECT_TRUE(answered);
    }
    void trigger(command which) { window->actions()[which]->trigger(); }
    template <class widget>
    static widget& part(QDialog& panel, const char* name) {
        auto* found = panel.findChild<widget*>(QLatin1String(name));
        EXPECT_TRUE(found) << name;
        return *found;
    }
    message_bar& messages() { return *window->findChild<message_bar*>(); }
    event_session& session() { return window->session(); }
    const sxy_DATA_root& timeline() { return session().shown_event()->timeline().timeline(); }

    temporary_folder home;
    home_places places;
    qt_run_loop loop;
    std::unique_ptr<content_keeper> content;
    job_list jobs{loop};
    std::unique_ptr<main_window> window;
};

TEST_F(vault_window, a_vault_is_made_and_replaced_only_when_that_is_chosen) {
    show();
    // The panel waits until the vault is made, or not.
    const auto click = [](QDialog& panel, const char* button) {
        QTest::mouseClick(&part<QPushButton>(panel, button), Qt::LeftButton);
        EXPECT_TRUE(QTest::qWaitFor([&] {
            return !panel.isVisible() || part<QPushButton>(panel, "create_vault.cancel").isEnabled();
        }));
    };
    const auto fill = [&](QDialog& panel, bool focus) {
        part<QLineEdit>(panel, "create_vault.name").setText("Cup");
        part<QLineEdit>(panel, "create_vault.parent").setText(QString::fromStdString(home.path()));
        part<QCheckBox>(panel, "create_vault.focus").setChecked(focus);
        click(panel, "create_vault.create");
    };
    with_panel(command::new_vault, [&](QDialog& panel) { fill(panel, true); });
    const std::string vault = home / "Cup.VVault";
    EXPECT_TRUE(is_folder(vault));
    EXPECT_EQ(focus_vault_of(places).path, vault);
    EXPECT_TRUE(QTest::qWaitFor([&] { return line("Cup").data(content_model::focus_role).toBool(); }));

    put_file(path_join(vault, "kept"), "x");
    with_panel(command::new_vault, [&](QDialog& panel) {
        EXPECT_EQ(part<QLineEdit>(panel, "create_vault.parent").text().toStdString(), home.path());
        EXPECT_TRUE(part<QCheckBox>(panel, "create_vault.focus").isChecked());
        fill(panel, false);
        EXPECT_EQ(part<QLabel>(panel, "create_vault.problem").text(), "Vault 'Cup' already exists.");
        EXPECT_TRUE(part<QPushButton>(panel, "create_vault.cancel").isDefault());
        QTest::keyClick(&panel, Qt::Key_Return);  // Cancel
        EXPECT_TRUE(file_exists(path_join(vault, "kept")));
        click(panel, "create_vault.create");
        click(panel, "create_vault.replace");
    });
    EXPECT_TRUE(is_folder(vault));
    EXPECT_FALSE(file_exists(path_join(vault, "kept")));

    put_file(home / "no folder", "x");
    with_panel(command::new_vault, [&](QDialog& panel) {
        part<QLineEdit>(panel, "create_vault.name").setText("Other");
        part<QLineEdit>(panel, "create_vault.parent").setText(QString::fromStdString(home / "no folder"));
        click(panel, "create_vault.create");
        EXPECT_EQ(part<QLabel>(panel, "create_vault.problem").text(), "Could not create folder.");
        EXPECT_TRUE(part<QLabel>(panel, "create_vault.reason").text().contains("no folder"));
        EXPECT_TRUE(panel.isVisible());
    });
}

TEST_F(vault_window, vaults_are_added_focused_and_taken_from_the_list) {
    std::filesystem::create_directories(home / "Team.VVault");
    show();
    auto* bar = window->findChild<content_side_bar*>();
    Q_EMIT bar->folders_dropped({QString::fromStdString(home / "Team.VVault")});
    ASSERT_TRUE(QTest::qWaitFor([&] { return line("Team").isValid(); }));
    with_panel(command::choose_focus_vault, [&](QDialog& panel) {
        auto& vaults = part<QListWidget>(panel, "focus_vault.list");
        ASSERT_EQ(vaults.count(), 2);
        vaults.setCurrentRow(1);
        QTest::keyClick(&vaults, Qt::Key_Return);
    });
    EXPECT_EQ(focus_vault_of(places).path, home / "Team.VVault");
    ASSERT_TRUE(QTest::qWaitFor([&] { return line("Team").data(content_model::focus_role).toBool(); }));

    list().setCurrentIndex(line("Home Vault"));
    trigger(command::remove_vault);
    EXPECT_TRUE(messages().headline().contains("stays")) << messages().headline().toStdString();
    messages().clear();
    list().setCurrentIndex(line("Team"));
    trigger(command::remove_vault);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !line("Team").isValid(); }));
    EXPECT_TRUE(is_folder(home / "Team.VVault"));
    EXPECT_EQ(focus_vault_of(places).path, places.home_vault);
}

TEST_F(vault_window, an_unavailable_vault_is_listed_or_hidden_as_set) {
    std::filesystem::create_directories(home / "Away.VVault");
    ASSERT_TRUE(add_known_vault(places, home / "Away.VVault").ok());
    std::filesystem::remove_all(home / "Away.VVault");
    show();
    ASSERT_TRUE(QTest::qWaitFor([&] { return line("Away").isValid(); }));
    EXPECT_FALSE(line("Away").data(content_model::problem_role).toString().isEmpty());
    with_panel(command::vault_warning, [&](QDialog& panel) {
        auto& percent = part<QSpinBox>(panel, "vault_warning.percent");
        percent.setValue(0);
        EXPECT_EQ(percent.value(), 1);
        percent.setValue(99);
        part<QCheckBox>(panel, "vault_warning.unavailable").setChecked(false);
        QTest::mouseClick(&part<QPushButton>(panel, "vault_warning.keep"), Qt::LeftButton);
    });
    EXPECT_EQ(load_minimum_free_space(places).percent, 99);
    EXPECT_TRUE(QTest::qWaitFor([&] { return !line("Away").isValid(); }));
    EXPECT_FALSE(window->actions()[command::show_unavailable]->isChecked());
    EXPECT_TRUE(QTest::qWaitFor(
        [&] { return line("Home Vault").data(content_model::space_role).toString().contains("free"); }));
    trigger(command::show_unavailable);
    EXPECT_TRUE(QTest::qWaitFor([&] { return line("Away").isValid(); }));
}

TEST_F(vault_window, what_comes_into_a_vault_shows_and_what_cannot_be_opened_is_said) {
    const shown_folders shown;
    show();
    const std::string folder = path_join(places.home_vault, "Set pieces");
    std::filesystem::create_directories(folder);
    put_file(path_join(folder, "composer info.plist"), "<plist/>");
    open_line("Set pieces");
    EXPECT_TRUE(messages().headline().contains("Composers")) << messages().headline().toStdString();
    EXPECT_EQ(shown.paths.join(","), QString::fromStdString(folder));
    messages().findChild<QPushButton*>("message.choice.1")->click();
    EXPECT_EQ(shown.paths.size(), 2);
    EXPECT_EQ(messages().waiting(), 1u);
    EXPECT_FALSE(session().is_open());

    // What lies below a collection is listed; its timeline is counted, and shown by the collection.
    const std::string match = path_join(places.home_vault, "Video Groups/Final");
    testing::put_stored_event(places.home_vault, match, 0);
    testing::put_stored_timeline(match);
    std::filesystem::create_directories(path_join(match, "Passes"));
    put_file(path_join(match, "Passes/Matrix.plist"), "<plist/>");
    open_line("Passes");
    EXPECT_EQ(shown.paths.back(), QString::fromStdString(path_join(match, "Passes")));
    EXPECT_FALSE(session().is_open());
    EXPECT_EQ(line("Home Vault").data(content_model::summary_role).toString(),
              "1 collection, 1 timeline, 1 composer, 1 matrix");
}

TEST_F(vault_window, a_timeline_alone_is_coded_on_a_clock) {
    const std::string folder = put_timeline("Away game");
    show();
    open_line("Away game");
    ASSERT_TRUE(session().is_open());
    EXPECT_EQ(session().name(), "Away game");
    EXPECT_FALSE(window->findChild<collection_view*>()->isVisible());
    EXPECT_TRUE(window->findChild<QWidget*>("transport.play")->isVisible());
    EXPECT_TRUE(window->timeline().isVisible());
    QTest::keyClick(window.get(), Qt::Key_End);
    auto& playback = session().shown_event()->playback();
    EXPECT_DOUBLE_EQ(playback.collection_time(), 45);
    session().shown_event()->playback().seek(12);  // as a click on the ruler does
    EXPECT_TRUE(window->findChild<clock_label*>()->text().startsWith("0:00:12"));
    QTest::keyClick(window.get(), Qt::Key_End);
    QTest::keyClick(window.get(), Qt::Key_Space);
    EXPECT_TRUE(playback.is_playing());
    EXPECT_TRUE(QTest::qWaitFor([&] { return playback.collection_time() > 45.05; }));  // beyond its last clip
    QTest::keyPress(window.get(), Qt::Key_A);
    QTest::keyRelease(window.get(), Qt::Key_A);
    QTest::keyClick(window.get(), Qt::Key_Space);
    EXPECT_EQ(timeline().clip_count(), 3u);
    trigger(command::save);
    EXPECT_FALSE(file_exists(path_join(folder, "video group.plist")));
    EXPECT_FALSE(is_folder(path_join(folder, "Logger")));
    window->close();
    const auto saved = load_timeline(folder);
    ASSERT_TRUE(saved.ok());
    EXPECT_EQ(sxy_DATA_root(saved.value().content).clip_count(), 3u);
}

TEST_F(vault_window, a_timeline_that_another_program_writes_refuses_and_is_tried_again) {
    const std::string folder = put_timeline("Away game");
    auto other = writer_lock::take(folder, timeline_form);
    ASSERT_TRUE(other.ok());
    show();
    open_line("Away game");
    auto* mark = window->findChild<read_only_mark*>();
    EXPECT_TRUE(mark->isVisible());
    messages().clear();
    QTest::keyClick(window.get(), Qt::Key_A);
    EXPECT_EQ(timeline().clip_count(), 2u);
    EXPECT_TRUE(messages().headline().contains("was not coded")) << messages().headline().toStdString();
    trigger(command::save);
    EXPECT_TRUE(session().shown_event()->logger().unrecorded() == 0);

    auto* again = mark->findChild<QToolButton*>("read_only.again");
    again->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !session().notices().access().is_trying(); }));
    EXPECT_TRUE(mark->isVisible());
    other.value().reset();
    EXPECT_TRUE(QTest::qWaitFor([&] { return mark->is_free(); }));
    again->click();
    EXPECT_TRUE(QTest::qWaitFor([&] { return !mark->isVisible(); }));
    EXPECT_EQ(messages().waiting(), 0u);
    QTest::keyClick(window.get(), Qt::Key_A);
    EXPECT_EQ(timeline().clip_count(), 3u);
}

TEST_F(vault_window, an_event_that_is_gone_is_said_and_the_first_one_opens) {
    testing::put_stored_event(places.home_vault, path_join(places.home_vault, "Video Groups/Final"), 0);
    show();
    window->opener().open_last_or_demo(home / "Cup.VVault/Video Groups/Semifinal");
    ASSERT_TRUE(testing::has_opened(*window));
    EXPECT_TRUE(messages().headline().contains("Semifinal")) << messages().headline().toStdString();
    EXPECT_TRUE(session().is_open());
}

}  // namespace
}  // namespace vistels

#include "vaults_test.moc"
