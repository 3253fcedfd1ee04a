// SPDX-License-Identifier: GPL-3.0-or-later
// The very frames that stand in the window at each tick, read back from what it painted.
#include <gtest/gtest.h>

#include <QTest>
#include <cmath>
#include <map>

#include "app/event/event_player.h"
#include "app/event/offset_changes.h"
#include "app/event/open_event.h"
#include "app/settings/settings_store.h"
#include "app/start/open_requests.h"
#include "app/start/start_up.h"
#include "app/vaults/content_keeper.h"
#include "shell/event/event_session.h"
#include "shell/panes/collection/collection_pane.h"
#include "shell/window/event_opener.h"
#include "shell/window/main_window.h"
#include "support/painted_frames.h"
#include "support/patience.h"
#include "support/temporary_folder.h"
#include "util/job_list.h"
#include "util/simulated_run_loop.h"
#include "video/video_coll_Files.h"

namespace vistels {
namespace {

using testing::comes_true;

constexpr int movie_rates[] = {25, 30, 50, 60};
constexpr double movie_seconds = 4;

// A window on a clock of its own that shows four cameras of different frame rates.
class shown_frames : public ::testing::Test {
  protected:
    void SetUp() override {
        ASSERT_TRUE(start_up(places, 1, 0));
        std::vector<std::string> movies;
        for (const int rate : movie_rates) {
            movies.push_back(home / std::to_string(rate) + " a second.mp4");
            if (!testing::write_block_coded_movie(movies.back(), 480, rate, movie_seconds))
                GTEST_SKIP() << "built without media";
        }
        const std::string folder = new_collection_folder(places.home_vault, "Rates");
        job work;
        ASSERT_TRUE(new_collection(folder, "Rates", movies, movies_as::vistel_each, work));
        content = std::make_unique<content_keeper>(places, loop);
        window = std::make_unique<main_window>(places, loop, *content, jobs);
        window->resize(1601, 1003);
        window->show();
        ASSERT_TRUE(testing::becomes_active(window.get()));
        window->opener().open_folder(folder);
        ASSERT_TRUE(comes_true([&] {
            loop.run_posted();
            return !window->opener().is_at_work();
        }));
        view = window->findChild<collection_view*>();
        ASSERT_TRUE(view && window->session().is_open());
        // The sound device runs by the machine's clock, which is another here.
        window->session().player().set_muted(true);
        const auto vistels = event().collection().vistels();
        for (std::size_t i = 0; i < vistels.size(); ++i) rates[vistels[i]->uuid()] = movie_rates[i];
    }
    void TearDown() override {
        if (window) window->close();
    }

    open_event& event() { return *window->session().shown_event(); }
    synchronised_playback& playback() { return event().playback(); }

    // By the offset rule, from nothing that playback knows: the last frame whose time is not later.
    std::optional<std::uint32_t> due(const std::string& vistel, double seconds) {
        const auto at = movie_time_at(event().collection(), vistel, seconds);
        if (!at || *at < 0) return std::nullopt;
        const double last = movie_seconds * rates[vistel] - 1;
        return static_cast<std::uint32_t>(std::min(last, std::floor((*at + 0.0001) * rates[vistel])));
    }
    std::string seen() {
        std::string text;
        for (const auto& [vistel, rate] : rates) {
            const auto number = testing::painted_number(*view, vistel);
            text += " " + std::to_string(rate) + ":" + (number ? std::to_string(*number) : "-");
        }
        return text;
    }
    std::string due_all(double seconds) {
        std::string text;
        for (const auto& [vistel, rate] : rates) {
            const auto number = due(vistel, seconds);
            text += " " + std::to_string(rate) + ":" + (number ? std::to_string(*number) : "-");
        }
        return text;
    }
    // The clock stands still meanwhile.
    bool becomes_right(double seconds) {
        const std::string wanted = due_all(seconds);
        return comes_true([&] {
            loop.run_posted();
            return playback().is_settled() && seen() == wanted;
        });
    }
    // Plays for so many ticks; how many frames of the fastest camera were left out.
    void play(double hertz, int ticks, double from) {
        playback().ticks().set_rate(hertz);
        window->session().player().seek(from);
        ASSERT_TRUE(becomes_right(from)) << "at " << from << ":" << seen();
        playback().play();
        for (int tick = 1; tick <= ticks; ++tick) {
            loop.advance_to(begun() + tick / hertz + 1e-7);
            ASSERT_NEAR(playback().shown_time(), from + tick / hertz, 1e-6);
            ASSERT_TRUE(becomes_right(from + tick / hertz))
                << "at tick " << tick << " of " << hertz << ":" << seen() << " in place of"
                << due_all(from + tick / hertz);
        }
        playback().pause();
        loop.advance(1);
    }
    // When the clock began to move.
    double begun() {
        if (!begun_) begun_ = loop.time().seconds();
        return *begun_;
    }

    testing::temporary_folder home;
    const home_places places = with_store({home / "Home Vault.VVault", home / "Home Folder.VVault"});
    simulated_run_loop loop;
    job_list jobs{loop};
    std::unique_ptr<content_keeper> content;
    std::unique_ptr<main_window> window;
    collection_view* view = nullptr;
    std::map<std::string, int> rates;
    std::optional<double> begun_;
};

TEST_F(shown_frames, every_tick_shows_the_due_frame_of_every_camera) {
    struct {
        double hertz;
        int ticks;
        double from;
        QSize window;
    } const cases[] = {
        {60, 100, 0, {1601, 1003}},  // each frame of the fastest once
        {59.94, 50, 0.371, {1433, 871}},
        {144, 60, 1.2, {1291, 777}},
        {25, 25, 2.01, {1601, 1003}},
    };
    for (const auto& one : cases) {
        window->resize(one.window);
        begun_.reset();
        play(one.hertz, one.ticks, one.from);
        if (HasFatalFailure()) return;
    }
}

TEST_F(shown_frames, offsets_move_the_frames_of_their_camera_alone) {
    const auto vistels = event().collection().vistels();
    ASSERT_TRUE(event().set_offset(vistels[1]->uuid(), 0.37));
    ASSERT_TRUE(event().set_offset(vistels[3]->uuid(), -0.21));
    play(60, 60, 0.5);
}

}  // namespace
}  // namespace vistels
