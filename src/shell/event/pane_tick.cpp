// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/event/pane_tick.h"

#include <utility>

#include "app/event/event_player.h"
#include "app/event/open_event.h"
#include "logger/press_engine.h"

namespace vistels {

pane_tick::pane_tick(open_event& event, event_player& player, std::function<void()> show)
    : event_(event),
      show_(std::move(show)),
      task_(event.playback().ticks(), tick_step::views, [this] { tick(); }) {
    synchronised_playback& playback = event.playback();
    connections_.push_back(playback.pictures_changed.connect([this] {
        if (!task_.is_running()) tick();
    }));
    connections_.push_back(playback.state_changed.connect([this] { tick(); }));
    connections_.push_back(player.sought.connect([this] { tick(); }));
    connections_.push_back(event.collection_changed.connect([this] { tick(); }));
    connections_.push_back(event.logger().fired.connect([this](const button_fired&) { run_while_needed(); }));
    tick();
}

void pane_tick::tick() {
    show_();
    run_while_needed();
}

void pane_tick::run_while_needed() {
    press_engine& logger = event_.logger();
    task_.set_running(event_.playback().is_playing() || !logger.down_buttons().empty() ||
                      logger.unrecorded() > 0);
}

}  // namespace vistels
