// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

// libmpv, when it is installed: as many players as there are vistels, each with one movie, which decode and
// show nothing.

#if VISTELS_HAVE_MPV

#include <mpv/client.h>

#include <array>
#include <chrono>
#include <clocale>
#include <string>
#include <vector>

#include "support/measure.h"

namespace vistels::bench {

class peer_players {
  public:
    static constexpr bool is_there = true;

    explicit peer_players(const std::vector<std::string>& paths) {
        std::setlocale(LC_NUMERIC, "C");
        for (const auto& path : paths) {
            mpv_handle* const made = mpv_create();
            if (made == nullptr) stop_with("libmpv makes no player");
            for (const auto& [name, value] :
                 std::array<std::array<const char*, 2>, 7>{{{"vo", "null"},
                                                            {"audio", "no"},
                                                            {"pause", "yes"},
                                                            {"hr-seek", "yes"},
                                                            {"keep-open", "yes"},
                                                            {"hwdec", "no"},
                                                            {"load-scripts", "no"}}}) {
                if (mpv_set_option_string(made, name, value) < 0) stop_with("libmpv refuses an option");
            }
            if (mpv_initialize(made) < 0) stop_with("libmpv does not begin");
            players_.push_back(made);
            tell({"loadfile", path.c_str(), nullptr}, players_.size() - 1);
        }
        wait_for_all();
    }
    ~peer_players() {
        for (auto* const player : players_) mpv_terminate_destroy(player);
    }
    peer_players(const peer_players&) = delete;
    peer_players& operator=(const peer_players&) = delete;

    // How long it takes until all show the frames of their times.
    double seek(const std::vector<double>& seconds) {
        return lasts([&] {
            for (std::size_t i = 0; i < players_.size(); ++i) {
                tell({"seek", std::to_string(seconds[i]).c_str(), "absolute+exact", nullptr}, i);
            }
        });
    }
    double step_back() {
        return lasts([&] {
            for (std::size_t i = 0; i < players_.size(); ++i) tell({"frame-back-step", nullptr}, i);
        });
    }

  private:
    void tell(std::vector<const char*> words, std::size_t player) {
        if (mpv_command(players_[player], words.data()) < 0) stop_with("libmpv refuses a command");
    }
    template <class Work>
    double lasts(Work&& work) {
        const auto begun = std::chrono::steady_clock::now();
        work();
        wait_for_all();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - begun).count();
    }
    // Until each has told that it shows what it went to.
    void wait_for_all() {
        constexpr double patience_seconds = 30;
        for (auto* const player : players_) {
            for (;;) {
                const mpv_event* const event = mpv_wait_event(player, patience_seconds);
                if (event->event_id == MPV_EVENT_PLAYBACK_RESTART) break;
                if (event->event_id == MPV_EVENT_NONE || event->event_id == MPV_EVENT_END_FILE)
                    stop_with("libmpv did not come to where it was sent");
            }
        }
    }

    std::vector<mpv_handle*> players_;
};

}  // namespace vistels::bench

#else

#include <string>
#include <vector>

namespace vistels::bench {

class peer_players {
  public:
    static constexpr bool is_there = false;
    explicit peer_players(const std::vector<std::string>&) {}
    double seek(const std::vector<double>&) { return 0; }
    double step_back() { return 0; }
};

}  // namespace vistels::bench

#endif
