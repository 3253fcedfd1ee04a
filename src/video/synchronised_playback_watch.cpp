// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <utility>

#include "video/synchronised_playback.h"

// Vistels whose volume or decoder hangs, and movies that go or are changed while they are played.

namespace vistels {

namespace {

constexpr double look_seconds = 0.25;
constexpr double file_check_seconds = 2;          // while it can be shown ...
constexpr double failed_file_check_seconds = 10;  // ... and when it cannot
// Each try that hangs keeps a thread.
constexpr std::ptrdiff_t most_left = 3;

}  // namespace

void synchronised_playback::need_watch() {
    if (watch_timer_ != 0 || (is_settled() && !is_playing())) return;
    watch_timer_ = loop_.start_timer(look_seconds, true, [this] { look_after_vistels(); });
}

void synchronised_playback::look_after_vistels() {
    bool is_needed = is_playing();
    bool changed = false;
    for (auto& vistel : vistels_) {
        const bool answered = vistel.watch.answers();
        is_needed = look_after(vistel) || is_needed;
        changed = changed || answered != vistel.watch.answers();
    }
    if (!is_needed) {
        loop_.stop_timer(watch_timer_);
        watch_timer_ = 0;
    }
    if (changed) tick();
}

// Whether it has to be looked after again.
bool synchronised_playback::look_after(entry& vistel) {
    if (vistel.vistel.parts.empty()) return false;
    const work_progress progress = vistel.player->progress();
    vistel.watch.look(progress, patience_.seconds());
    if (vistel.watch.should_try(patience_.seconds())) try_anew(vistel);
    const double now = loop_.time().seconds();
    const bool has_failed = vistel.state == vistel_state::unreadable;
    const double pause = has_failed ? failed_file_check_seconds : file_check_seconds;
    if (is_followed(vistel) && vistel.watch.answers() && now - vistel.files_checked >= pause) {
        vistel.files_checked = now;
        vistel.player->check_files();
    }
    return progress.is_busy || has_failed || vistel.state == vistel_state::waiting;
}

void synchronised_playback::try_anew(entry& vistel) {
    std::erase_if(vistel.left, [](const auto& one) { return one.expired(); });
    if (std::ssize(vistel.left) >= most_left) return;
    vistel.left.push_back(vistel_player::leave(std::move(vistel.player)));
    vistel.player = make_player(vistel.vistel);
    vistel.player->set_size(vistel.width, vistel.height);
    vistel.watch.try_anew(patience_.seconds());
    tick();
}

bool synchronised_playback::is_reading(const std::string& uuid) const {
    const entry* const found = find(uuid);
    return found != nullptr && found->player->progress().is_busy;
}

double synchronised_playback::decode_milliseconds(const std::string& uuid) const {
    const entry* const found = find(uuid);
    return found == nullptr ? 0 : found->player->decode_milliseconds();
}

double synchronised_playback::difference(const std::string& uuid) const {
    const entry* const found = find(uuid);
    if (found == nullptr || found->state != vistel_state::waiting || !found->shown) return 0;
    return found->shown_seconds - found->vistel.lead - shown_time();
}

}  // namespace vistels
