// SPDX-License-Identifier: GPL-3.0-or-later
// The window with an event of two small movies: coded by mouse and key, undone, closed, opened again.
#include <gtest/gtest.h>

#include <QAction>
#include <QLineEdit>
#include <QTest>
#include <QTreeView>
#include <filesystem>
#include <utility>

#include "app/start/open_requests.h"
#include "app/start/start_up.h"
#include "logger/press_engine.h"
#include "shell/event/event_session.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/side_bar/content_side_bar.h"
#include "shell/panes/timeline/timeline_view.h"
#include "shell/program/qt_run_loop.h"
#include "shell/window/event_opener.h"
#include "shell/window/main_window.h"
#include "shell/window/saved_label.h"
#include "shell/window/window_actions.h"
#include "support/shown_event.h"
#include "util/file_system.h"
#include "video/synchronised_playback.h"
#include "video/video_coll_Files.h"

namespace vistels {
namespace {

using testing::put_file;

struct event_window : public testing::shown_event {
    void close() {
        window->close();
        window.reset();
    }

    double now() { return event().playback().collection_time(); }
    void trigger(command which) { window->actions()[which]->trigger(); }

    // The button with that name on the code window's canvas.
    QWidget* button(const std::string& name) {
        const std::string uuid = shown_event::button(name);
        return uuid.empty() ? nullptr
                            : window->findChild<QWidget*>("code_button." + QString::fromStdString(uuid));
    }
    void code_with_key(Qt::Key key, double from, double to) {
        window->session().player().seek(from);
        QTest::keyPress(window.get(), key);
        window->session().player().seek(to);
        QTest::keyRelease(window.get(), key);
    }
};

TEST_F(event_window, is_coded_by_key_and_mouse) {
    open();
    ASSERT_TRUE(window->session().is_open());
    code_with_key(Qt::Key_A, 1, 2);
    ASSERT_EQ(timeline().clip_count(), 1u);
    EXPECT_EQ(timeline().rows().front()->name(), "Attack");
    const auto clip = timeline().rows().front()->clips()[0];
    EXPECT_LE(clip->secs_start(), 1);
    EXPECT_GE(clip->secs_end(), 2);

    window->session().player().seek(1.5);
    QWidget* left = button("Left");
    ASSERT_TRUE(left);
    QTest::mouseClick(left, Qt::LeftButton);
    ASSERT_EQ(timeline().find_clip(clip->id())->clip->qualifiers()->size(), 1u);
    EXPECT_EQ(timeline().find_clip(clip->id())->clip->qualifiers()->front().name().str(), "Left");

    QWidget* goal = button("Goal");
    ASSERT_TRUE(goal);
    QTest::mousePress(goal, Qt::LeftButton);
    EXPECT_EQ(timeline().live_clips().size(), 1u);
    QTest::mouseRelease(goal, Qt::LeftButton);
    EXPECT_EQ(timeline().live_clips().size(), 0u);
    EXPECT_EQ(timeline().clip_count(), 2u);
}

TEST_F(event_window, undoes_redoes_and_deletes) {
    open();
    code_with_key(Qt::Key_A, 1, 2);
    code_with_key(Qt::Key_D, 2, 3);
    ASSERT_EQ(timeline().clip_count(), 2u);
    EXPECT_TRUE(window->actions()[command::undo]->text().contains("Defence"));
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(timeline().clip_count(), 1u);
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(timeline().clip_count(), 2u);
    QTest::keyClick(window.get(), Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(window.get(), Qt::Key_Delete);
    EXPECT_EQ(timeline().clip_count(), 0u);
    trigger(command::undo);
    EXPECT_EQ(timeline().clip_count(), 2u);
}

TEST_F(event_window, everything_is_there_when_it_opens_again) {
    open();
    code_with_key(Qt::Key_A, 1, 2);
    const std::string clip = timeline().rows().front()->clips()[0]->id();
    window->timeline().select({clip});
    window->findChild<QWidget*>("inspector.stars")->setFocus();
    QTest::keyClick(window->findChild<QWidget*>("inspector.stars"), Qt::Key_Up);
    QTest::keyPress(window.get(), Qt::Key_G);  // still down when the window closes
    window->session().player().seek(3);
    close();
    open();
    ASSERT_EQ(timeline().clip_count(), 2u);
    ASSERT_TRUE(timeline().find_clip(clip));
    EXPECT_EQ(timeline().find_clip(clip)->clip->stars(), 1);
    EXPECT_NEAR(now(), 3, 0.001);
}

TEST_F(event_window, keys_move_the_playhead) {
    open();
    const std::pair<QKeySequence, double> cases[] = {
        {Qt::Key_Home, 0},
        {QKeySequence(Qt::SHIFT | Qt::Key_Right), 1},
        {QKeySequence(Qt::SHIFT | Qt::Key_Left), 0},
        {Qt::Key_End, 4},
    };
    for (const auto& [keys, seconds] : cases) {
        QTest::keyClick(window.get(), keys[0].key(), keys[0].keyboardModifiers());
        EXPECT_NEAR(now(), seconds, 0.05) << keys.toString().toStdString();
    }
    QTest::keyClick(window.get(), Qt::Key_Home);
    ASSERT_TRUE(QTest::qWaitFor([&] { return event().playback().is_settled(); }));
    QTest::keyClick(window.get(), Qt::Key_Right);
    ASSERT_TRUE(QTest::qWaitFor([&] { return event().playback().is_settled(); }));
    EXPECT_NEAR(now(), 0.1, 0.01);
    QTest::keyClick(window.get(), Qt::Key_Space);
    EXPECT_TRUE(event().playback().is_playing());
    QTest::keyClick(window.get(), Qt::Key_L);
    EXPECT_EQ(event().playback().rate(), 2);
    QTest::keyClick(window.get(), Qt::Key_K);
    EXPECT_FALSE(event().playback().is_playing());
    QTest::keyClick(window.get(), Qt::Key_J);
    EXPECT_EQ(event().playback().rate(), -1);
    QTest::keyClick(window.get(), Qt::Key_Space);
}

TEST_F(event_window, typing_in_a_field_codes_nothing) {
    open();
    code_with_key(Qt::Key_A, 1, 2);
    window->timeline().select({timeline().rows().front()->clips()[0]->id()});
    auto* field = window->findChild<QLineEdit*>("inspector.end");
    ASSERT_TRUE(field);
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, "0:03.5");
    QTest::keyClick(field, Qt::Key_A);
    EXPECT_EQ(timeline().clip_count(), 1u);
    QTest::keyClick(field, Qt::Key_Backspace);
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_NEAR(timeline().rows().front()->clips()[0]->secs_end(), 3.5, 1e-9);
}

TEST_F(event_window, a_missing_movie_is_told_in_its_vistel_and_the_other_plays) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(places.home_vault)) {
        if (entry.path().filename() == "part 001.mp4") {
            std::filesystem::remove(entry.path());
            break;
        }
    }
    open();
    auto* view = window->findChild<collection_view*>();
    const auto vistels = event().collection().vistels();
    ASSERT_TRUE(QTest::qWaitFor([&] { return window->session().has_all_pictures(); }));
    int with_picture = 0;
    int with_words = 0;
    for (const auto& vistel : vistels) {
        with_picture += view->has_picture(vistel->uuid()) ? 1 : 0;
        with_words += view->words_in(vistel->uuid()).contains("part 001.mp4") ? 1 : 0;
    }
    EXPECT_EQ(with_picture, 1);
    EXPECT_EQ(with_words, 1);
}

// Its last picture stays, which must not be taken for one of that moment.
TEST_F(event_window, a_vistel_whose_movie_is_over_says_so) {
    open();
    auto* view = window->findChild<collection_view*>();
    const std::string left = event().collection().vistels()[0]->uuid();
    const std::string right = event().collection().vistels()[1]->uuid();
    const QString words = view->chip_words(right);
    ASSERT_TRUE(event().set_offset(right, -1).ok());  // began, and ends, a second before the other
    const auto say_over = [&] {
        return std::pair(view->chip_words(left).contains("ended"), view->chip_words(right).contains("ended"));
    };
    for (const double seconds : {2.9, 3.5, 1.0}) {
        window->session().player().seek(seconds);
        const std::pair expected{false, seconds > 3};
        EXPECT_TRUE(QTest::qWaitFor([&] { return say_over() == expected; })) << seconds;
    }
    EXPECT_EQ(view->chip_words(right), words);
}

TEST_F(event_window, a_damaged_timeline_is_named_and_left_alone) {
    put_file(path_join(folder, "chron data.plist"), "<plist><dict><key>rows");
    open();
    EXPECT_FALSE(window->session().is_open());
    const auto* bar = window->findChild<message_bar*>();
    EXPECT_TRUE(bar->text().contains("chron data.plist")) << bar->text().toStdString();
    EXPECT_EQ(testing::file_bytes(path_join(folder, "chron data.plist")), "<plist><dict><key>rows");
}

TEST_F(event_window, says_when_it_saved_and_lists_what_there_is) {
    open();
    window->refresh_content();
    code_with_key(Qt::Key_A, 1, 2);
    auto* saved = window->findChild<saved_label*>();
    trigger(command::save);
    EXPECT_TRUE(QTest::qWaitFor([&] { return saved->text().startsWith("Saved "); }))
        << saved->text().toStdString();
    auto* list = window->findChild<content_side_bar*>()->list();
    EXPECT_TRUE(QTest::qWaitFor([&] { return list->model()->rowCount() == 1; }));
    const auto found = list->model()->match(list->model()->index(0, 0), Qt::DisplayRole, "Harbour", -1,
                                            Qt::MatchRecursive | Qt::MatchExactly);
    EXPECT_FALSE(found.isEmpty());
}

}  // namespace
}  // namespace vistels
