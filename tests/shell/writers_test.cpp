// SPDX-License-Identifier: GPL-3.0-or-later
// The window beside another program: one that has the timeline, takes it, or changes its file.
#include <gtest/gtest.h>

#include <QAction>
#include <QDesktopServices>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <filesystem>

#include "app/settings/settings_store.h"
#include "app/start/start_up.h"
#include "app/vaults/content_keeper.h"
#include "logger/press_engine.h"
#include "shell/event/event_session.h"
#include "shell/event/read_only_guard.h"
#include "shell/kit/message_bar.h"
#include "shell/program/qt_run_loop.h"
#include "shell/window/event_opener.h"
#include "shell/window/main_window.h"
#include "shell/window/window_actions.h"
#include "support/open_and_wait.h"
#include "support/patience.h"
#include "support/second_writer.h"
#include "support/stored_timeline.h"
#include "support/temporary_folder.h"
#include "util/file_system.h"

namespace vistels {
namespace {

using testing::becomes_active;
using testing::comes_true;
using testing::second_writer;
using testing::temporary_folder;

struct writers : public ::testing::Test {
    writers() {
        places = {home / "Home Vault.VVault", home / "Home Folder.VVault"};
        EXPECT_TRUE(start_up(places, 1, 0).ok());
        places = with_store(places);
        folder = testing::put_stored_timeline(path_join(places.home_vault, "Cup final"));
    }
    ~writers() override {
        if (window) window->close();
    }
    void open() {
        content = std::make_unique<content_keeper>(places, loop);
        window = std::make_unique<main_window>(places, loop, *content, jobs);
        window->resize(1600, 1000);
        window->show();
        window->activateWindow();
        ASSERT_TRUE(becomes_active(window.get()));
        ASSERT_TRUE(testing::open_and_wait(*window, folder));
        ASSERT_TRUE(window->session().is_open());
    }
    void close() {
        window->close();
        window.reset();
    }
    void code() { QTest::keyClick(window.get(), Qt::Key_A); }
    void save() { window->actions()[command::save]->trigger(); }
    timeline_document& document() { return window->session().shown_event()->timeline(); }
    std::size_t clips() { return document().timeline().clip_count(); }
    bool has(const char* clip) { return document().timeline().find_clip(clip).has_value(); }
    message_bar& bar() { return *window->findChild<message_bar*>(); }
    read_only_mark& mark() { return *window->findChild<read_only_mark*>(); }
    // Presses the button of the message that is shown.
    void choose(const char* words) {
        QPushButton* found = nullptr;
        // Those of the message before go when the loop is next at rest.
        const auto find = [&] {
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            for (auto* one : bar().findChildren<QPushButton*>()) {
                if (one->text() == words && one->isVisible()) found = one;
            }
            return found != nullptr;
        };
        ASSERT_TRUE(comes_true(find)) << words << " beside: " << bar().headline().toStdString();
        QTest::mouseClick(found, Qt::LeftButton);
    }

    temporary_folder home;
    home_places places;
    std::string folder;
    qt_run_loop loop;
    std::unique_ptr<content_keeper> content;
    job_list jobs{loop};
    std::unique_ptr<main_window> window;
};

TEST_F(writers, an_event_that_another_program_has_is_taken_over_by_a_persons_word) {
    second_writer other(folder);
    ASSERT_EQ(other.opened_as(), "writes");
    ASSERT_EQ(other.code(), "done");
    open();
    EXPECT_TRUE(bar().headline().contains("not changed")) << bar().headline().toStdString();
    EXPECT_TRUE(mark().isVisible());
    code();
    EXPECT_EQ(clips(), 3u) << "theirs is seen, and nothing coded";
    EXPECT_TRUE(bar().headline().contains("was not coded"));
    choose("Continue");
    choose("Try Again");
    EXPECT_TRUE(mark().isVisible()) << "the other program is at work";
    ASSERT_EQ(other.code(), "done");
    choose("Take Over");
    EXPECT_TRUE(comes_true([&] { return !mark().isVisible(); }));
    EXPECT_EQ(bar().waiting(), 0u);
    EXPECT_TRUE(has("theirs 1") && has("theirs 2")) << "what it did until then is kept";
    code();
    EXPECT_EQ(clips(), 5u);
    const std::string refused = other.code();
    EXPECT_NE(refused, "done");
    EXPECT_FALSE(refused.empty());
    other.close();
    save();
    close();
    open();
    EXPECT_EQ(clips(), 5u);
    EXPECT_FALSE(mark().isVisible());
}

TEST_F(writers, an_event_that_is_taken_away_is_told_and_comes_back) {
    open();
    code();
    save();  // a save that runs while the other takes over would make two writers of it
    second_writer other(folder);
    ASSERT_EQ(other.opened_as(), "reads");
    ASSERT_EQ(other.take_over(), "done");
    ASSERT_EQ(other.code(), "done");
    code();
    EXPECT_TRUE(comes_true([&] { return mark().isVisible(); }));
    EXPECT_EQ(clips(), 3u);
    other.kill();
    EXPECT_TRUE(comes_true([&] { return mark().is_free(); }));
    QTest::mouseClick(mark().findChild<QToolButton*>("read_only.again"), Qt::LeftButton);
    EXPECT_TRUE(comes_true([&] { return !mark().isVisible(); }));
    EXPECT_TRUE(has("one") && has("theirs 1")) << "the killed program's work is brought back";
    // The press that found the timeline gone was kept in memory.
    EXPECT_TRUE(comes_true([&] { return clips() == 5; })) << clips();
    code();
    EXPECT_EQ(clips(), 6u);
}

TEST_F(writers, a_strangers_change_of_the_file_is_kept_beside_and_told) {
    open();
    code();
    // Another program writes the file without asking.
    sxy_DATA_root theirs;
    timeline_edit edit{"theirs", "", {operation::insert_row{0, testing::row_of("r", "Shot")}}};
    edit.operations.emplace_back(
        operation::insert_clip{shared_text("r"), testing::clip_of("stranger", 1, 2)});
    change_set touched;
    ASSERT_TRUE(apply_edit(theirs, edit, touched).ok());
    ASSERT_TRUE(save_timeline(theirs.snapshot(), folder).ok());
    const std::string bytes = testing::file_bytes(path_join(folder, "chron data.plist"));
    code();
    save();
    ASSERT_TRUE(comes_true([&] { return bar().waiting() > 0; }));
    EXPECT_TRUE(bar().headline().contains("changed by another program")) << bar().headline().toStdString();
    EXPECT_TRUE(bar().text().contains("conflict")) << bar().text().toStdString();
    ASSERT_EQ(document().conflicts().size(), 1u);
    EXPECT_EQ(testing::file_bytes(document().conflicts().front().kept_as), bytes);
    choose("Continue");
    EXPECT_EQ(bar().waiting(), 0u);
    EXPECT_EQ(clips(), 4u);
    close();
    open();
    EXPECT_EQ(clips(), 4u);
    EXPECT_FALSE(has("stranger"));
}

}  // namespace
}  // namespace vistels
