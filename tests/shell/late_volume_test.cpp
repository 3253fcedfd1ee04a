// SPDX-License-Identifier: GPL-3.0-or-later
// A volume on which every write and sync takes its time: the window goes on ticking, and nothing is lost.
#include <QAction>

#include "shell/event/collection_commands.h"
#include "shell/event/event_notices.h"
#include "shell/panes/timeline/timeline_view.h"
#include "shell/window/window_actions.h"
#include "support/main_thread_watch.h"
#include "support/patience.h"
#include "support/shown_event.h"
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

}  // namespace
}  // namespace vistels
