// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <QTest>
#include <memory>
#include <string>
#include <vector>

#include "app/settings/settings_store.h"
#include "app/start/open_requests.h"
#include "app/start/start_up.h"
#include "app/vaults/content_keeper.h"
#include "logger/press_engine.h"
#include "shell/event/event_session.h"
#include "shell/program/qt_run_loop.h"
#include "shell/window/event_opener.h"
#include "shell/window/main_window.h"
#include "support/open_and_wait.h"
#include "support/patience.h"
#include "support/small_movies.h"
#include "support/temporary_folder.h"
#include "video/video_coll_Files.h"

namespace vistels::testing {

// A main window that shows an event of two small movies of 4 seconds, with the general code window.
class shown_event : public ::testing::Test {
  protected:
    void SetUp() override {
        places = {home / "Home Vault.VVault", home / "Home Folder.VVault"};
        ASSERT_TRUE(start_up(places, 1, 0).ok());
        places = with_store(places);
        const std::vector<std::string> movies = {home / "left end.mp4", home / "right end.mp4"};
        for (const auto& movie : movies) {
            if (!write_small_movie(movie, 4)) GTEST_SKIP() << "built without media";
        }
        folder = new_collection_folder(places.home_vault, "Harbour");
        job work;
        const auto made = new_collection(folder, "Harbour", movies, movies_as::vistel_each, work);
        ASSERT_TRUE(made.ok()) << made.message();
    }

    void open(QSize size = {1600, 1000}) {
        if (!content) content = std::make_unique<content_keeper>(places, loop);
        window = std::make_unique<main_window>(places, loop, *content, jobs);
        window->resize(size);
        window->show();
        window->activateWindow();
        ASSERT_TRUE(becomes_active(window.get()));
        ASSERT_TRUE(open_and_wait(*window, folder));
    }
    void TearDown() override {
        jobs.cancel_all();  // or closing would ask about them
        if (window) window->close();
    }

    open_event& event() { return *window->session().shown_event(); }
    const sxy_DATA_root& timeline() { return event().timeline().timeline(); }
    std::string button(const std::string& name) {
        for (const auto& one : event().logger().buttons()) {
            if (one->name() == name) return one->uuid();
        }
        return {};
    }
    // The names of the buttons that are down, in the order they went down.
    std::vector<std::string> down() {
        std::vector<std::string> names;
        for (const auto& one : event().logger().down_buttons()) {
            names.push_back(event().logger().button(one.button)->name());
        }
        return names;
    }
    template <class widget>
    widget* find(const char* name) {
        auto* found = window->findChild<widget*>(QLatin1String(name));
        EXPECT_TRUE(found) << name;
        return found;
    }

    temporary_folder home;
    home_places places;
    std::string folder;
    qt_run_loop loop;
    std::unique_ptr<content_keeper> content;
    job_list jobs{loop};
    std::unique_ptr<main_window> window;
};

}  // namespace vistels::testing
