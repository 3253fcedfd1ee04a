// SPDX-License-Identifier: GPL-3.0-or-later
#include <algorithm>
#include <cmath>
#include <utility>

#include "video/synchronised_playback.h"

// Going to a time, stepping, and what brings back vistels that lag.

namespace vistels {

namespace {

// Enough to come before a frame by the tolerance with which frames are found.
constexpr double before_frame_seconds = 2 * frame_tolerance_seconds;
constexpr double hand_rests_seconds = 0.15;

}  // namespace

void synchronised_playback::seek(double collection_seconds, std::function<void()> done) {
    seek(seek_wish{collection_seconds, 0, {}}, std::move(done));
}

void synchronised_playback::seek(const seek_wish& wish, std::function<void()> done) {
    stop_stepping();
    move_to(wish.collection_seconds, 0, false, std::move(done), wish.tolerance);
}

void synchronised_playback::seek_vistel(const std::string& uuid, const seek_wish& wish,
                                        std::function<void()> done) {
    entry* const found = find(uuid);
    if (found == nullptr || !std::isfinite(wish.collection_seconds)) return;
    found->seeks = own_seek{wish, std::move(done)};
    start_timer();
    tick();
}

void synchronised_playback::cancel_seeks() {
    stop_stepping();
    done_ = nullptr;
    tolerance_ = 0;
    for (auto& vistel : vistels_) vistel.seeks.reset();
    tick();
}

std::string synchronised_playback::seek_source(const std::string& uuid) const {
    const entry* const found = find(uuid);
    return found == nullptr || !found->seeks ? std::string() : found->seeks->wish.source;
}

// Once a frame that is near enough is shown, or none will come, the vistel goes by the clock again. Gives
// back whom to tell.
std::function<void()> synchronised_playback::end_own_seek(entry& vistel) {
    if (!vistel.seeks || (vistel.state == vistel_state::waiting && !vistel.is_near)) return nullptr;
    auto ended = std::move(vistel.seeks->done);
    vistel.seeks.reset();
    // What stands there now need not be what the clock asks for.
    if (vistel.state == vistel_state::showing) vistel.state = vistel_state::waiting;
    vistel.is_near = false;
    start_timer();
    return ended ? std::move(ended) : [] {};
}

void synchronised_playback::move_to(double seconds, int direction, bool snap, std::function<void()> done,
                                    double tolerance) {
    for (auto& vistel : vistels_) {
        vistel.seeks.reset();
        vistel.is_from_before = true;
    }
    if (rest_timer_ != 0) loop_.stop_timer(std::exchange(rest_timer_, 0));
    tolerance_ = std::max(tolerance, 0.0);
    hurries_ = true;
    ++jumps_;
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

void synchronised_playback::scrub(double collection_seconds) {
    if (is_playing()) return seek(collection_seconds, nullptr);
    stop_stepping();
    move_to(collection_seconds, 0, false, nullptr, key_frames_will_do);
    rest_timer_ = loop_.start_timer(hand_rests_seconds, false, [this] {
        rest_timer_ = 0;
        seek(clock_.time(), nullptr);
    });
}

void synchronised_playback::step(int frames, std::function<void()> done) {
    if (is_playing()) pause();
    const bool goes_on = frames > 0 ? steps_left_ > 0 : steps_left_ < 0;
    steps_left_ = goes_on ? steps_left_ + frames : frames;
    steps_done_ = std::move(done);
    if (!goes_on && frames != 0) go_on_stepping();
}

void synchronised_playback::stop_stepping() {
    steps_left_ = 0;
    steps_done_ = nullptr;
}

void synchronised_playback::go_on_stepping() {
    if (steps_left_ == 0) {
        if (const auto done = std::exchange(steps_done_, nullptr)) done();
        return;
    }
    const int direction = steps_left_ > 0 ? 1 : -1;
    steps_left_ -= direction;
    step_once(direction);
}

void synchronised_playback::step_once(int direction) {
    const auto done = [this] { go_on_stepping(); };
    const entry* const by = stepped();
    if (by == nullptr) return stop_stepping();
    const double lead = by->vistel.lead;
    const double seconds = clock_.time() + lead;
    const auto seen = by->player->look(seconds);
    const bool is_known = seen.state == vistel_state::showing;
    const double usual = by->player->frame_seconds(seconds);
    if (direction > 0) {
        move_to((is_known ? seen.until_seconds : seconds + usual) - lead, 1, false, done);
        return;
    }
    const auto before = is_known ? by->player->preceding(seconds) : std::nullopt;
    double to = seconds - usual;
    if (is_known) to = before ? *before : seen.frame_seconds - before_frame_seconds;
    move_to(to - lead, -1, !before, done);
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
        return vistel.state == vistel_state::waiting && !vistel.is_near && is_followed(vistel);
    });
}

// Whether the vistel has a picture for this time, and gets on with it.
bool synchronised_playback::is_answering_now(const entry& vistel) const {
    return is_followed(vistel) && vistel.state != vistel_state::blank &&
           vistel.state != vistel_state::unreadable && !is_over(vistel.vistel.uuid);
}

// A vistel that lags is sought on its own to where the leader is: a frame near enough is shown as soon as it
// can be had, and only then the very one of the clock. Playing backwards, who lags has the later time.
void synchronised_playback::correct_lags() {
    const double forwards = clock_.rate() < 0 ? -1 : 1;
    std::vector<lagging_vistel> looked_at;
    for (const auto& vistel : vistels_) {
        lagging_vistel made;
        made.number = vistel.vistel.number;
        made.has_overlay = vistel.player->is_still();
        made.is_away = !is_answering_now(vistel);
        made.is_playing = true;
        made.last_correction_seconds = vistel.last_correction_seconds;
        // A frame that is the right one stands at the clock's time, however long ago it began.
        if (vistel.state == vistel_state::showing && !vistel.seeks) {
            made.seconds = forwards * shown_time_;
        } else if (vistel.shown && !vistel.is_from_before) {
            made.seconds = forwards * (vistel.shown_seconds - vistel.vistel.lead);
        }
        looked_at.push_back(made);
    }
    const auto moves = advance_lagging_players(looked_at, loop_.time().seconds());
    for (std::size_t i = 0; i < vistels_.size(); ++i) {
        vistels_[i].last_correction_seconds = looked_at[i].last_correction_seconds;
    }
    for (const auto& move : moves) {
        const seek_wish wish{forwards * move.to_seconds, lag_move_tolerance_seconds, lag_move_source};
        vistels_[move.vistel].seeks = own_seek{wish, nullptr};
    }
    correction_note_ = moves.empty() ? "" : time_fix_note;
    if (!moves.empty()) ++corrections_;
}

}  // namespace vistels
