// SPDX-License-Identifier: GPL-3.0-or-later
// A volume on which every write and sync takes its time: the window goes on ticking, and nothing is lost.
#include <QAction>

#include "shell/event/collection_commands.h"
#include "shell/event/event_notices.h"
#include "shell/panes/timeline/timeline_view.h"
#include "shell/window/window_actions.h"
#include "support/main_thread_watch.h"
#include "support/open_and_wait.h"
#include "support/patience.h"
#include "support/shown_event.h"
#include "support/stored_timeline.h"
#include "video/synchronised_playback.h"

namespace vistels {
namespace {

using testing::comes_true;

struct late_volume : public testing::shown_event {
    ~late_volume() override { testing::watched_application::make_volumes_late({}); }
};

TEST_F(late_volume, the_window_ticks_while_an_event_is_coded_changed_and_saved) {
    open();
    event().set_silenced(true);
    testing::watched_application::make_volumes_late(std::chrono::milliseconds(300));
    int ticks = 0;
    auto counting =
        std::make_unique<tick_task>(event().playback().ticks(), tick_step::views, [&] { ++ticks; });
    counting->start();
    int saves = 0;
    QObject::connect(&window->session().notices(), &event_notices::saved, window.get(),
                     [&](const QString& problem) {
                         EXPECT_EQ(problem, QString());
                         ++saves;
                     });
    const auto save_and_tick = [&] {
        const int before = ticks;
        const int saves_before = saves;
        QTest::keyClick(window.get(), Qt::Key_S, Qt::ControlModifier);
        EXPECT_TRUE(comes_true([&] { return saves > saves_before; }));
        EXPECT_GT(ticks - before, 10);
    };
    for (const Qt::Key key : {Qt::Key_A, Qt::Key_D, Qt::Key_A}) {
        QTest::keyPress(window.get(), key);
        QTest::keyClick(window.get(), Qt::Key_Right, Qt::ShiftModifier);
        QTest::keyRelease(window.get(), key);
    }
    save_and_tick();
    // Changes of the collection, which are saved each.
    window->collection().use_layout(ready_layout::grid);
    QTest::keyClick(window.get(), Qt::Key_Z, Qt::ControlModifier);
    find<QAction>("hide_filtered_out")->trigger();
    save_and_tick();
    testing::watched_application::make_volumes_late({});
    const auto clips = timeline().clip_count();
    EXPECT_EQ(clips, 3U);
    counting.reset();
    window->close();
    window.reset();
    open();
    EXPECT_EQ(timeline().clip_count(), clips);
}

// Leaving what was just coded, for another event or for good, leaves nothing to write to the thread of the
// windows.
TEST_F(late_volume, an_event_is_left_when_it_is_saved) {
    const std::string other = testing::put_stored_timeline(path_join(places.home_vault, "Cup"));
    open();
    const auto code = [&] {
        QTest::keyPress(window.get(), Qt::Key_A);
        QTest::keyRelease(window.get(), Qt::Key_A);
    };
    code();
    const auto clips = timeline().clip_count();
    testing::watched_application::make_volumes_late(std::chrono::milliseconds(300));
    const int before = testing::watched_application::expected_writes();
    window->opener().open_folder(other);
    code();  // as long as it is read, the one that is open is coded
    EXPECT_EQ(window->session().folder(), folder);
    EXPECT_EQ(window->opener().coming(), other);
    ASSERT_TRUE(testing::has_opened(*window));
    EXPECT_EQ(window->session().folder(), other);
    code();
    const auto others_clips = timeline().clip_count();
    QTest::keyClick(window.get(), Qt::Key_W, Qt::ControlModifier);
    ASSERT_TRUE(comes_true([&] { return !window->isVisible(); }));
    EXPECT_EQ(testing::watched_application::expected_writes(), before);
    testing::watched_application::make_volumes_late({});
    window.reset();
    open();
    EXPECT_EQ(timeline().clip_count(), clips + 1);
    ASSERT_TRUE(testing::open_and_wait(*window, other));
    EXPECT_EQ(timeline().clip_count(), others_clips);
}

// What is asked for last counts, and what is given up leaves nothing behind that is open.
TEST_F(late_volume, an_event_that_is_being_read_gives_way) {
    const std::string first = testing::put_stored_timeline(path_join(places.home_vault, "First half"));
    const std::string second = testing::put_stored_timeline(path_join(places.home_vault, "Second half"));
    open();
    testing::watched_application::make_volumes_late(std::chrono::milliseconds(300));
    window->opener().open_folder(first);
    window->opener().open_folder(second);
    auto* bar = find<message_bar>("message");
    EXPECT_TRUE(comes_true([&] { return bar->headline() == "Opening “Second half”"; }));
    ASSERT_TRUE(testing::has_opened(*window));
    EXPECT_EQ(window->session().folder(), second);
    EXPECT_EQ(bar->waiting(), 0U);
    window->opener().open_folder(first);
    window->opener().cancel();
    testing::watched_application::make_volumes_late({});
    EXPECT_EQ(window->session().folder(), second);
    ASSERT_TRUE(testing::open_and_wait(*window, first));
    EXPECT_FALSE(event().timeline().is_read_only());
}

}  // namespace
}  // namespace vistels
