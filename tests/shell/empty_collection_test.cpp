// SPDX-License-Identifier: GPL-3.0-or-later
// A collection without movies: coded by the clock, filmed later. And what is told a moment after opening.
#include <gtest/gtest.h>

#include <QApplication>
#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <filesystem>

#include "app/event/offset_changes.h"
#include "app/settings/settings.h"
#include "shell/event/align_control.h"
#include "shell/event/collection_commands.h"
#include "shell/event/vistel_files.h"
#include "shell/kit/controls.h"
#include "shell/kit/job_button.h"
#include "shell/kit/message_bar.h"
#include "shell/kit/work_panel.h"
#include "shell/panes/collection/collection_view.h"
#include "shell/panes/collection/volume_popover.h"
#include "shell/panes/side_bar/content_side_bar.h"
#include "shell/window/window_actions.h"
#include "support/open_and_wait.h"
#include "support/patience.h"
#include "support/shown_event.h"
#include "support/stored_event.h"
#include "support/stored_timeline.h"
#include "util/file_system.h"
#include "util/property_list.h"
#include "video/synchronised_playback.h"
#include "video/video_coll_LOAD.h"

namespace vistels {
namespace {

class empty_collection : public testing::shown_event {
  protected:
    void make(const QString& name) {
        window->actions()[command::new_empty_collection]->trigger();
        auto* button = find<QPushButton>("new_collection.make");
        EXPECT_FALSE(button->isEnabled());
        EXPECT_EQ(find<QComboBox>("new_collection.vault")->currentData().toString().toStdString(),
                  places.home_vault);
        find<QLineEdit>("new_collection.name")->setText(name);
        QTest::mouseClick(button, Qt::LeftButton);
        ASSERT_TRUE(testing::has_opened(*window));
    }
    event_session& session() { return window->session(); }
};

TEST_F(empty_collection, is_made_coded_and_filmed_later) {
    open();
    make("Kick: off");
    ASSERT_EQ(session().name(), "Kick: off");
    EXPECT_EQ(event().collection().state(), video_type_state::none);
    EXPECT_TRUE(event().has_collection());
    EXPECT_TRUE(event().runs_on_clock());
    EXPECT_EQ(session().fact(), "No camera · 0 clips");

    window->actions()[command::play]->trigger();
    EXPECT_TRUE(event().playback().is_playing());
    ASSERT_TRUE(QTest::qWaitFor([&] { return event().playback().collection_time() > 0.2; }, 60000));
    const auto& first = *event().logger().buttons().front();
    event().logger().press(first.uuid(), event().playback().collection_time());
    event().logger().release(first.uuid(), event().playback().collection_time() + 1);
    event().logger().release_all(event().playback().collection_time() + 1);
    EXPECT_EQ(timeline().clip_count(), 1U);
    // Pausing and playing again runs on: the clock does not begin anew.
    window->actions()[command::pause]->trigger();
    const double paused_at = event().playback().collection_time();
    window->actions()[command::play]->trigger();
    EXPECT_GE(event().playback().collection_time(), paused_at);
    window->actions()[command::pause]->trigger();
    session().player().step(1);
    const double stood_at = event().playback().collection_time();
    EXPECT_GT(stood_at, paused_at);

    window->collection().files().add_as({QString::fromStdString(home / "left end.mp4")}, {},
                                        movies_as::vistel_each);
    ASSERT_TRUE(QTest::qWaitFor([&] { return event().collection().vistels().size() == 1; }, 60000));
    EXPECT_FALSE(event().runs_on_clock());
    EXPECT_EQ(event().collection().state(), video_type_state::playback);
    EXPECT_EQ(event().playback().collection_time(), stood_at);
    // What was coded at the clip's start is seen at 2 s of the movie.
    auto& alignment = *window->collection().alignment();
    const auto coded = [&] { return (*timeline().rows().front()).clips()[0]->secs_start(); };
    session().player().seek(coded());
    alignment.mark_moment();
    session().player().seek(2);
    alignment.same_moment();
    const auto vistel = event().collection().vistels().front()->uuid();
    EXPECT_NEAR(movie_time_at(event().collection(), vistel, coded()).value_or(-1), 2, 1e-6);
    for (int step = 0; step < 2; ++step) window->actions()[command::undo]->trigger();
    EXPECT_TRUE(event().runs_on_clock());
    EXPECT_EQ(timeline().clip_count(), 1U);

    const std::string made = session().folder();
    ASSERT_TRUE(testing::open_and_wait(*window, folder));
    ASSERT_TRUE(testing::open_and_wait(*window, made));
    EXPECT_EQ(timeline().clip_count(), 1U);
}

TEST_F(empty_collection, a_streamed_movie_that_is_short_is_told_a_moment_after_opening) {
    const auto loaded = load_collection(folder);
    ASSERT_TRUE(loaded);
    const auto& vistel = *loaded.value().collection.vistels().front();
    const std::string path = path_join(vistel.data_folder(), vistel_file_name);
    auto record = read_dictionary_or_empty(path);
    record.set("http file", "https://example.org/a");
    auto& part = *(*record.find("drone_array")->array())[0].dictionary();
    part.set("part_duration", 20.0);
    testing::put_file(path, write_property_list(record));
    open();
    ASSERT_EQ(event().alerts().size(), 1U);
    EXPECT_TRUE(event().messages().empty());
    auto* bar = find<message_bar>("message");
    ASSERT_TRUE(QTest::qWaitFor([&] { return bar->waiting() > 0; }, 60000));
    EXPECT_EQ(bar->text(),
              "Vistel 'left end' is 16 seconds shorter than expected.  \n"
              "Restarting HLS localizing for this vistel may fix this.");
}

// The first start: nothing is there yet, and the window can be used while the demo event is made.
class first_start : public testing::shown_event {
  protected:
    void begin(int seconds) {
        std::filesystem::remove_all(path_join(places.home_vault, "Video Groups"));
        folder = path_join(places.home_vault, "Video Groups/not there");
        content = std::make_unique<content_keeper>(places, loop);
        window = std::make_unique<main_window>(places, loop, *content, jobs);
        window->resize(1600, 1000);
        window->show();
        window->opener().set_demo_size(1, seconds);
        window->opener().open_last_or_demo({});
        EXPECT_TRUE(testing::has_opened(*window));
        panel = find<work_panel>("work_panel");
        EXPECT_TRUE(panel->isVisible());
        EXPECT_TRUE(find<content_side_bar>("content")->isVisible());
        EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
    }
    // Waits for the work to end; no box stands over the window meanwhile.
    bool ends() {
        return QTest::qWaitFor(
            [&] {
                EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
                return !panel->is_running() && !window->opener().is_at_work();
            },
            120000);
    }
    std::size_t left_over() {
        std::size_t count = 0;
        for (const auto& name : names_in_folder(places.home_vault)) count += name.starts_with(".filming ");
        return count;
    }
    work_panel* panel = nullptr;
};

TEST_F(first_start, the_demo_event_opens_by_itself) {
    // What a program that was killed has left of it.
    std::filesystem::create_directories(places.home_vault + "/.filming X/Single Videos");
    begin(2);
    EXPECT_EQ(panel->parentWidget(), find<collection_view>("collection.view"));
    ASSERT_TRUE(ends());
    ASSERT_TRUE(window->session().is_open());
    EXPECT_EQ(window->session().name(), "Harbour – Northgate");
    EXPECT_FALSE(panel->isVisible());
    EXPECT_EQ(left_over(), 0U);
}

TEST_F(first_start, the_demo_event_takes_the_place_of_no_other) {
    begin(10);  // long enough to be worth showing on any machine
    testing::put_stored_timeline(path_join(places.home_vault, "Video Groups/Cup"));
    ASSERT_TRUE(testing::open_and_wait(*window, path_join(places.home_vault, "Video Groups/Cup")));
    // The place is that one's now; the menu bar goes on showing what is done.
    EXPECT_FALSE(panel->isVisible());
    auto* button = find<job_button>("jobs");
    EXPECT_TRUE(QTest::qWaitFor([&] { return button->isVisible() || !panel->is_running(); }, 60000));
    EXPECT_EQ(button->words(), "Making a demo event");
    ASSERT_TRUE(ends());
    EXPECT_FALSE(button->isVisible());
    EXPECT_EQ(path_name(window->session().folder()), "Cup");
    EXPECT_TRUE(window->findChild<message_bar*>()->headline().contains("demo event is ready"));
    EXPECT_TRUE(is_folder(path_join(places.home_vault, "Video Groups/Harbour – Northgate")));
}

TEST_F(first_start, cancelling_or_quitting_leaves_nothing_behind) {
    for (const bool quits : {false, true}) {
        begin(300);
        if (quits) {
            window.reset();
            // The program waits for what it has begun.
            EXPECT_TRUE(QTest::qWaitFor([&] { return jobs.jobs().empty(); }, 60000));
        }
        if (!quits) QTest::mouseClick(find<QPushButton>("work_panel.cancel"), Qt::LeftButton);
        if (!quits) {
            ASSERT_TRUE(ends());
            EXPECT_FALSE(window->session().is_open());
            EXPECT_EQ(window->findChild<message_bar*>()->waiting(), 0U);
        }
        EXPECT_EQ(left_over(), 0U);
        EXPECT_FALSE(is_folder(path_join(places.home_vault, "Video Groups")));
    }
}

// What is heard is the product of both volumes, and both are kept when the user lets go of them.
TEST_F(empty_collection, both_volumes_are_heard_and_kept_at_once) {
    ASSERT_TRUE(save_application_volume(places, 0.5));
    open();
    EXPECT_EQ(event().playback().volume(), 0.5);
    const auto is_stored = [&](double volume) {
        return testing::comes_true(
            [&] { return std::abs(load_collection(folder).value().collection.volume() - volume) < 1e-9; });
    };
    window->actions()[command::softer]->trigger();
    EXPECT_NEAR(event().playback().volume(), 0.45, 1e-9);
    EXPECT_TRUE(is_stored(0.9));
    window->actions()[command::volumes]->trigger();
    auto* popover = find<volume_popover>("volumes");
    ASSERT_TRUE(popover->isVisible());
    for (int step = 0; step < 2; ++step) {
        QTest::keyClick(find<value_slider>("volumes.event"), Qt::Key_Left);
        QTest::keyClick(find<value_slider>("volumes.application"), Qt::Key_Right);
    }
    EXPECT_NEAR(event().playback().volume(), 0.8 * 0.6, 1e-9);
    EXPECT_TRUE(is_stored(0.8));
    EXPECT_NEAR(load_application_volume(places), 0.6, 1e-9);
    EXPECT_NEAR(find<value_slider>("transport.volume")->value(), 0.8, 1e-9);
    QTest::keyClick(popover, Qt::Key_Escape);
    EXPECT_FALSE(popover->isVisible());
    // A change of the collection leaves it so, and muting is over when a volume is chosen.
    window->actions()[command::mute]->trigger();
    EXPECT_TRUE(event().set_sound_vistel(event().collection().vistels()[1]->uuid()));
    EXPECT_EQ(event().playback().volume(), 0);
    window->session().player().set_volume(1);
    EXPECT_NEAR(event().playback().volume(), 0.6, 1e-9);
    window->session().player().take_application_volume(0.25);
    EXPECT_EQ(event().playback().volume(), 0.25);
    EXPECT_NEAR(load_application_volume(places), 0.6, 1e-9);
}

}  // namespace
}  // namespace vistels
