// SPDX-License-Identifier: GPL-3.0-or-later
// What goes on in a window while jobs run in it, and what they leave when they are not wanted any more.
#include <gtest/gtest.h>

#include <QAction>
#include <QMessageBox>
#include <QPushButton>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <thread>

#include "shell/event/collection_commands.h"
#include "shell/event/vistel_files.h"
#include "shell/kit/job_button.h"
#include "shell/kit/message_bar.h"
#include "shell/window/window_actions.h"
#include "support/open_and_wait.h"
#include "support/patience.h"
#include "support/shown_event.h"
#include "support/stored_timeline.h"
#include "video/padding_movies.h"
#include "video/synchronised_playback.h"
#include "video/vault_lock.h"
#include "video/video_coll_LOAD.h"

namespace vistels {
namespace {

using testing::comes_true;

// Changes of the vault wait, as long as the test wants, for a job that has its key.
class window_with_jobs : public testing::shown_event {
  protected:
    void SetUp() override {
        shown_event::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;
        open();
        hold_vault();
    }
    void TearDown() override {
        may_end = true;
        shown_event::TearDown();
    }
    void hold_vault() {
        may_end = false;
        job_order order{"Something else", {}, {vault_lock_key(folder)}};
        order.work = [this](job& work) -> result<void> {
            while (!may_end && !work.is_cancelled()) std::this_thread::yield();
            return {};
        };
        others.start(std::move(order));
    }
    bool let_all_end() {
        may_end = true;
        return comes_true([&] { return jobs.jobs().empty(); });
    }
    vistel_files& files() { return window->collection().files(); }
    std::vector<std::shared_ptr<single_Vistel_CTR>> vistels() { return event().collection().vistels(); }
    QString movie() { return QString::fromStdString(home / "left end.mp4"); }
    void add() { files().add({movie()}, {}); }
    void append(std::size_t vistel) {
        files().add_as({movie()}, vistels()[vistel]->uuid(), movies_as::parts_of_existing);
    }
    std::size_t folders_of_vistels() { return names_in_folder(vistels_folder_of(folder)).size(); }
    message_bar& bar() { return *find<message_bar>("message"); }
    bool is_told(const char* words) {
        return comes_true(
            [&] { return (bar().headline() + bar().text()).contains(QString::fromUtf8(words)); });
    }
    void choose(const char* button) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);  // those of earlier messages
        QTest::mouseClick(find<QPushButton>(button), Qt::LeftButton);
    }
    // Closes the window and answers what it asks.
    bool close(const char* answer) {
        QTimer::singleShot(0, window.get(), [this, answer] {
            auto* question = find<QMessageBox>("jobs_unfinished");
            EXPECT_TRUE(question->text().contains("Adding movies"));
            for (auto* one : question->buttons()) {
                if (one->text().remove('&') == QLatin1String(answer)) return one->click();
            }
            ADD_FAILURE() << answer;
        });
        return window->close();
    }

    std::atomic<bool> may_end = false;
    job_group others{jobs};
};

TEST_F(window_with_jobs, coding_and_playing_go_on_and_no_press_is_lost) {
    add();
    window->actions()[command::play]->trigger();
    constexpr std::size_t presses = 40;
    for (std::size_t n = 0; n < presses; ++n) {
        QTest::keyPress(window.get(), n % 2 ? Qt::Key_A : Qt::Key_D);
        // It ends in the middle of them, while a button is down.
        if (n == presses / 2) {
            may_end = true;
            ASSERT_TRUE(comes_true([&] { return vistels().size() == 3; }));
        }
        QTest::keyRelease(window.get(), n % 2 ? Qt::Key_A : Qt::Key_D);
    }
    EXPECT_TRUE(event().playback().is_playing());
    EXPECT_EQ(timeline().clip_count(), presses);
    EXPECT_EQ(timeline().live_clips().size(), 0U);
    // Each is a step of its own, the new vistel one among them.
    for (std::size_t n = 0; n < presses / 2; ++n) window->actions()[command::undo]->trigger();
    EXPECT_EQ(timeline().clip_count(), presses / 2);
    EXPECT_EQ(vistels().size(), 3U);
    for (std::size_t n = 0; n < presses / 2 + 1; ++n) window->actions()[command::undo]->trigger();
    EXPECT_EQ(timeline().clip_count(), 0U);
    EXPECT_EQ(vistels().size(), 2U);
}

TEST_F(window_with_jobs, two_run_at_once_and_one_is_cancelled) {
    add();
    files().copy_movie(vistels()[0]->uuid(), home.path());
    const std::string copy = home / (vistels()[0]->name() + " (2).mp4");
    ASSERT_TRUE(comes_true([&] { return file_exists(copy) && jobs.jobs().size() == 2; }));
    EXPECT_TRUE(is_told("The movie is on the desktop"));
    auto* button = find<job_button>("jobs");
    ASSERT_TRUE(comes_true([&] { return button->words() == "2 tasks"; }));
    window->actions()[command::jobs]->trigger();
    auto* list = find<QWidget>("jobs.list");
    ASSERT_TRUE(list->isVisible());
    QTest::mouseClick(list->findChild<QWidget*>("jobs.cancel.2"), Qt::LeftButton);
    ASSERT_TRUE(comes_true([&] { return jobs.jobs().size() == 1; }));
    QTest::keyClick(list, Qt::Key_Escape);
    EXPECT_FALSE(list->isVisible());
    ASSERT_TRUE(let_all_end());
    EXPECT_FALSE(button->isVisible());
    EXPECT_FALSE(window->actions()[command::jobs]->isEnabled());
    EXPECT_EQ(vistels().size(), 2U);
    EXPECT_EQ(folders_of_vistels(), 2U);
}

TEST_F(window_with_jobs, closing_the_window_asks_and_stops_them) {
    add();
    EXPECT_FALSE(close("Stay"));
    EXPECT_TRUE(window->isVisible());
    ASSERT_TRUE(window->session().is_open());
    EXPECT_TRUE(close("Stop and Close"));
    window.reset();
    ASSERT_TRUE(let_all_end());
    EXPECT_EQ(load_collection(folder).value().collection.vistels().size(), 2U);
    EXPECT_EQ(folders_of_vistels(), 2U);
}

TEST_F(window_with_jobs, opening_another_event_asks_and_stops_those_of_this_one) {
    const std::string other = path_join(places.home_vault, "Video Groups/Cup");
    testing::put_stored_timeline(other);
    add();
    for (int time = 0; time < 2; ++time) {
        window->opener().open_folder(other);
        EXPECT_EQ(window->session().folder(), folder);
        EXPECT_EQ(bar().headline(), "“Adding movies” is not finished");
        if (time == 0) choose("message.choice.0");
    }
    choose("message.choice.1");
    ASSERT_TRUE(testing::has_opened(*window));
    EXPECT_EQ(window->session().folder(), other);
    ASSERT_TRUE(let_all_end());
    EXPECT_EQ(folders_of_vistels(), 2U);
}

TEST_F(window_with_jobs, what_cannot_be_done_meanwhile_is_refused_in_words) {
    add();
    add();
    EXPECT_TRUE(is_told("“Adding movies” is under way already."));
    bar().clear();
    files().remove(vistels()[1]->uuid());
    EXPECT_TRUE(is_told("“Something else” is under way in the same vault."));
    ASSERT_TRUE(let_all_end());
    EXPECT_EQ(vistels().size(), 3U);
}

// The files of what does not fit any more go.
TEST_F(window_with_jobs, movies_for_a_vistel_that_was_taken_back_are_not_kept) {
    ASSERT_TRUE(let_all_end());
    add();
    ASSERT_TRUE(let_all_end());
    ASSERT_EQ(vistels().size(), 3U);
    const std::string data = vistels()[2]->data_folder();
    hold_vault();
    append(2);
    window->actions()[command::undo]->trigger();
    ASSERT_EQ(vistels().size(), 2U);
    ASSERT_TRUE(let_all_end());
    EXPECT_TRUE(is_told("Its vistel was taken out of the collection meanwhile."));
    EXPECT_TRUE(file_exists(path_join(data, "part 001.mp4")));
    EXPECT_TRUE(comes_true([&] { return !file_exists(path_join(data, "part 002.mp4")); }));
}

TEST_F(window_with_jobs, a_step_that_needs_padding_movies_is_taken_when_they_are_there) {
    ASSERT_TRUE(let_all_end());
    ASSERT_TRUE(event().set_offset(vistels()[0]->uuid(), 1.5));
    const auto padding = [&] { return padding_files_of(event().collection()); };
    find<QAction>("collection.pad")->trigger();
    ASSERT_TRUE(let_all_end());
    const auto made = padding();
    ASSERT_FALSE(made.empty());
    const auto are_there = [&](bool there) {
        EXPECT_TRUE(comes_true([&] {
            return std::all_of(made.begin(), made.end(),
                               [&](const auto& one) { return file_exists(one.path) == there; });
        })) << there;
    };
    window->actions()[command::undo]->trigger();
    EXPECT_TRUE(padding().empty());
    are_there(false);
    // It waits for its turn, then for the movies, and the window goes on.
    hold_vault();
    window->actions()[command::redo]->trigger();
    window->actions()[command::redo]->trigger();
    EXPECT_TRUE(padding().empty());
    are_there(false);
    ASSERT_TRUE(let_all_end());
    EXPECT_EQ(padding(), made);
    are_there(true);
    // Something else was done before its turn came.
    window->actions()[command::undo]->trigger();
    hold_vault();
    window->actions()[command::redo]->trigger();
    QTest::keyClick(window.get(), Qt::Key_A);
    ASSERT_TRUE(let_all_end());
    EXPECT_TRUE(is_told("The event was changed while movies were written for this."));
    EXPECT_TRUE(padding().empty());
    are_there(false);
    EXPECT_EQ(timeline().clip_count(), 1U);
}

}  // namespace
}  // namespace vistels
