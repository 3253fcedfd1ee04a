// SPDX-License-Identifier: GPL-3.0-or-later
// Rows chosen by their names: compacted into one and expanded again, by mouse and by key.
#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QContextMenuEvent>
#include <QMenu>
#include <QTest>
#include <QTimer>

#include "app/settings/settings_store.h"
#include "app/start/start_up.h"
#include "app/vaults/content_keeper.h"
#include "logger/press_engine.h"
#include "shell/event/event_session.h"
#include "shell/kit/message_bar.h"
#include "shell/kit/theme.h"
#include "shell/panes/timeline/timeline_metrics.h"
#include "shell/panes/timeline/timeline_names.h"
#include "shell/panes/timeline/timeline_state.h"
#include "shell/panes/timeline/timeline_view.h"
#include "shell/program/qt_run_loop.h"
#include "shell/window/event_opener.h"
#include "shell/window/main_window.h"
#include "support/open_and_wait.h"
#include "support/patience.h"
#include "support/temporary_folder.h"
#include "support/timeline_builder.h"
#include "util/file_system.h"

namespace vistels {
namespace {

using testing::becomes_active;
using testing::clip_of;
using testing::row_of;
using testing::temporary_folder;
using names = std::vector<std::string>;

// The rows Attack, Defence, Cross and Corner with one clip each.
struct row_names : public ::testing::Test {
    row_names() : places(with_store({home / "Home Vault.VVault", home / "Home Folder.VVault"})) {
        EXPECT_TRUE(start_up(places, 1, 0).ok());
        const std::string folder = path_join(places.home_vault, "Final");
        EXPECT_TRUE(make_folders(folder).ok());
        sxy_DATA_root root;
        timeline_edit edit{"made", "", {}};
        std::size_t at = 0;
        for (const char* name : {"Attack", "Defence", "Cross", "Corner"}) {
            const double start = 10.0 * static_cast<double>(at);
            const std::string uuid = std::string("row ") + name;
            edit.operations.emplace_back(operation::insert_row{at++, row_of(uuid, name)});
            edit.operations.emplace_back(operation::insert_clip{
                shared_text(uuid), clip_of(std::string("clip ") + name, start, start + 5)});
        }
        change_set touched;
        EXPECT_TRUE(apply_edit(root, edit, touched).ok());
        EXPECT_TRUE(save_timeline(root.snapshot(), folder).ok());
        window.resize(1600, 1000);
        window.show();
        window.activateWindow();
        EXPECT_TRUE(becomes_active(&window));
        EXPECT_TRUE(testing::open_and_wait(window, folder));
        list = window.findChild<timeline_names*>();
    }
    ~row_names() override { window.close(); }

    const sxy_DATA_root& timeline() { return window.session().shown_event()->timeline().timeline(); }
    names rows() {
        names all;
        for (const auto& row : timeline().rows()) all.push_back(row->name());
        return all;
    }
    QPoint place_of(const char* name) {
        const timeline_state& state = window.timeline().state();
        for (const timeline_row& row : state.rows()) {
            if (row.name != name) continue;
            return {60, timeline_sizes.ruler_height + row.top + row.height / 2 - state.first_y()};
        }
        ADD_FAILURE() << name;
        return {};
    }
    void click(const char* name, Qt::KeyboardModifiers with = {}) {
        QTest::mouseClick(list, Qt::LeftButton, with, place_of(name));
    }
    // Chooses from the menu of the row; with nothing to choose only says what could be.
    void choose_of(const char* name, const char* action, bool can_be_chosen = true) {
        bool was_shown = false;
        QTimer::singleShot(0, list, [&] {
            auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
            ASSERT_TRUE(menu);
            auto* one = menu->findChild<QAction*>(QLatin1String(action));
            ASSERT_TRUE(one);
            was_shown = true;
            EXPECT_EQ(one->isEnabled(), can_be_chosen) << action;
            menu->setActiveAction(one);
            QTest::keyClick(menu, can_be_chosen ? Qt::Key_Return : Qt::Key_Escape);
        });
        const QPoint at = place_of(name);
        QContextMenuEvent asked(QContextMenuEvent::Mouse, at, list->mapToGlobal(at));
        QApplication::sendEvent(list, &asked);
        EXPECT_TRUE(was_shown);
        window.activateWindow();  // as window systems do when a menu closes
        EXPECT_TRUE(becomes_active(&window));
    }
    void press(Qt::Key key, Qt::KeyboardModifiers with = Qt::ControlModifier) {
        QTest::keyClick(&window, key, with);
    }

    temporary_folder home;
    home_places places;
    qt_run_loop loop;
    content_keeper content{places, loop};
    job_list jobs{loop};
    main_window window{places, loop, content, jobs};
    timeline_names* list = nullptr;
};

TEST_F(row_names, are_compacted_and_expanded_by_their_menu_and_undone) {
    const std::string before = testing::state_text(timeline());
    click("Attack");
    click("Cross", Qt::ControlModifier);
    choose_of("Cross", "timeline_rows.compact");
    EXPECT_EQ(rows(), (names{"Attack + Cross", "Defence", "Corner"}));
    EXPECT_EQ(timeline().rows()[0]->clips().size(), 2u);
    EXPECT_EQ(window.timeline().state().rows()[0].merged.size(), 2u);
    press(Qt::Key_Z);
    EXPECT_EQ(testing::state_text(timeline()), before);
    press(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(rows().size(), 3u);
    choose_of("Defence", "timeline_rows.expand", false);
    choose_of("Attack + Cross", "timeline_rows.expand");
    EXPECT_EQ(rows(), (names{"Attack", "Defence", "Cross", "Corner"}));
    EXPECT_EQ(list->chosen().size(), 2u) << "they can be compacted again at once";
    EXPECT_EQ(testing::state_text(timeline()), before);
    press(Qt::Key_Z);
    EXPECT_EQ(rows(), (names{"Attack + Cross", "Defence", "Corner"}));
}

TEST_F(row_names, are_chosen_by_keys_and_compacted_by_the_commands) {
    list->setFocus();
    QTest::keyClick(list, Qt::Key_Down);
    QTest::keyClick(list, Qt::Key_Down, Qt::ShiftModifier);
    QTest::keyClick(list, Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_EQ(list->chosen().size(), 3u);
    press(Qt::Key_K, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(rows(), (names{"Attack", "Defence + Cross + Corner"}));
    press(Qt::Key_E, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(rows().size(), 4u);
    QTest::keyClick(list, Qt::Key_Escape);
    EXPECT_TRUE(list->chosen().empty());
}

TEST_F(row_names, say_why_they_cannot_be_compacted) {
    auto& bar = *window.findChild<message_bar*>();
    choose_of("Corner", "timeline_rows.compact", false);
    press(Qt::Key_K, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_TRUE(bar.text().contains("two rows")) << bar.text().toStdString();
    QTest::keyPress(&window, Qt::Key_A);  // a clip grows on "Attack"
    click("Attack");
    click("Corner", Qt::ShiftModifier);
    EXPECT_EQ(list->chosen().size(), 4u);
    choose_of("Corner", "timeline_rows.compact");
    EXPECT_EQ(rows().size(), 4u);
    EXPECT_FALSE(bar.text().contains("two rows")) << bar.text().toStdString();
    QTest::keyRelease(&window, Qt::Key_A);
    choose_of("Corner", "timeline_rows.compact");
    EXPECT_EQ(rows(), names{"Attack + Defence + Cross + 1"});
}

}  // namespace
}  // namespace vistels
