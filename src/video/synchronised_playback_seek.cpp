// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <utility>

#include "video/synchronised_playback.h"

// Going to a time, stepping, and what brings back vistels that lag.

namespace vistels {

namespace {

// Enough to come before a frame by the tolerance with which frames are found.
constexpr double before_frame_seconds = 2 * frame_tolerance_seconds;

}  // namespace

void synchronised_playback::seek(double collection_seconds, std::function<void()> done) {
    move_to(collection_seconds, 0, false, std::move(done));
}

void synchronised_playback::move_to(double seconds, int direction, bool snap, std::function<void()> done) {
    clock_.seek(seconds);
    direction_ = direction;
    snap_to_frame_ = snap;
    done_ = std::move(done);
    sound_.restart();
    start_timer();
    tick();
    // Without vistels no picture tells of the new time.
    if (vistels_.empty()) pictures_changed.emit();
}

void synchronised_playback::step(int direction, std::function<void()> done) {
    if (is_playing()) pause();
    const entry* const by = stepped();
    if (by == nullptr || direction == 0) return;
    const double lead = by->vistel.lead;
    const double seconds = clock_.time() + lead;
    const auto seen = by->player->look(seconds);
    const bool is_known = seen.state == vistel_state::showing;
    const double usual = by->player->frame_seconds(seconds);
    if (direction > 0) {
        move_to((is_known ? seen.until_seconds : seconds + usual) - lead, 1, false, std::move(done));
        return;
    }
    const auto before = is_known ? by->player->preceding(seconds) : std::nullopt;
    double to = seconds - usual;
    if (is_known) to = before ? *before : seen.frame_seconds - before_frame_seconds;
    move_to(to - lead, -1, !before, std::move(done));
}

void synchronised_playback::settle() {
    if (!is_settled()) return;
    if (snap_to_frame_) {
        snap_to_frame_ = false;
        const entry* const by = stepped();
        if (by != nullptr && by->state == vistel_state::showing) {
            clock_.seek(by->shown_seconds - by->vistel.lead);
            tick();
            return;
        }
    }
    if (const auto done = std::exchange(done_, nullptr)) done();
}

bool synchronised_playback::is_settled() const {
    return std::none_of(vistels_.begin(), vistels_.end(), [this](const entry& vistel) {
        return vistel.state == vistel_state::waiting && is_followed(vistel);
    });
}

// A vistel that lags is asked for the time that the others are at.
void synchronised_playback::correct_lags() {
    std::vector<lagging_vistel> looked_at;
    for (const auto& vistel : vistels_) {
        lagging_vistel made;
        made.number = vistel.vistel.number;
        made.has_overlay = vistel.player->is_still();
        made.is_playing = vistel.state == vistel_state::waiting;
        made.last_correction_seconds = vistel.last_correction_seconds;
        if (vistel.shown) made.seconds = vistel.shown_seconds - vistel.vistel.lead;
        looked_at.push_back(made);
    }
    const auto moves = advance_lagging_players(looked_at, loop_.time().seconds());
    for (std::size_t i = 0; i < vistels_.size(); ++i) {
        vistels_[i].last_correction_seconds = looked_at[i].last_correction_seconds;
    }
    for (const auto& move : moves) {
        entry& late = vistels_[move.vistel];
        late.player->want(move.to_seconds + late.vistel.lead, clock_.rate(), 0);
    }
    correction_note_ = moves.empty() ? "" : time_fix_note;
}

}  // namespace vistels
