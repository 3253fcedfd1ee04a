// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/playback_pace.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace vistels {

namespace {

constexpr double fast_forward_rate = 4;  // beyond, unreferenced frames are passed over
constexpr double key_frame_rate = 8;     // beyond, all but key frames
constexpr double key_frame_reverse_rate = 3;
constexpr double every_frame_rate = 2;  // up to here every frame is shown ...
constexpr double ticks_a_second = 60;   // ... and beyond what these can show

constexpr double jump_seconds = 1;         // farther in one look is none of playing's
constexpr double longest_look = 0.25;      // counts of the time between two looks
constexpr double first_missed = 0.3;       // until the first step that leaves out more ...
constexpr double further_missed = 1;       // ... and until the next: it has to catch up first
constexpr double behind_missed = 0.1;      // from here on late frames are shown
constexpr double forgetting = 0.25;        // of what was missed, in the time in which nothing is
constexpr double longest_way = 1;          // to where a jump goes ...
constexpr double longest_reverse_way = 2;  // ... with all that going back needs there
constexpr double first_patience = 3;
constexpr double longest_patience = 200;
constexpr double patience_growth = 4;

}  // namespace

const playback_pace::step& playback_pace::chosen() const {
    static constexpr std::array forwards{step{frames_decoded::all, 1},
                                         step{frames_decoded::without_unreferenced, 1},
                                         step{frames_decoded::key_frames_only, 1}};
    static constexpr std::array backwards{
        step{frames_decoded::all, 1}, step{frames_decoded::without_unreferenced, 1},
        step{frames_decoded::without_unreferenced, 4}, step{frames_decoded::key_frames_only, 1}};
    return rate_ < 0 ? backwards[step_] : forwards[step_];
}

std::size_t playback_pace::step_count() const {
    return rate_ < 0 ? 4 : 3;
}

std::size_t playback_pace::usual_step() const {
    if (rate_ > key_frame_rate || rate_ < -key_frame_reverse_rate) return step_count() - 1;
    return rate_ > fast_forward_rate ? 1 : 0;
}

frames_decoded playback_pace::decoded() const {
    return chosen().decoded;
}

double playback_pace::spacing(double frame_seconds) const {
    if (frame_seconds <= 0) return 0;
    const double tick = std::abs(rate_) / ticks_a_second;
    const double by_ticks = std::abs(rate_) > every_frame_rate ? std::floor(tick / frame_seconds + 0.001) : 1;
    const double frames = std::max<double>(by_ticks, chosen().frames_apart);
    // Where frames stand for a little more or less than they do on average, the same ones are meant.
    return frames > 1 ? (frames - 0.5) * frame_seconds : 0;
}

bool playback_pace::shows_all(double frame_seconds) const {
    return decoded() == frames_decoded::all && spacing(frame_seconds) == 0;
}

void playback_pace::begin(const look_taken& now) {
    *this = {};
    rate_ = now.rate;
    step_ = usual_step();
    last_wanted_ = now.wanted_seconds;
    is_under_way_ = true;
    patience_ = first_patience;
    since_tried_ = longest_patience;
}

void playback_pace::look(const look_taken& now) {
    if (now.rate != rate_) begin(now);
    if (rate_ == 0) return;
    count(now);
    choose(now);
}

void playback_pace::count(const look_taken& now) {
    const double moved = (now.wanted_seconds - last_wanted_) / rate_;
    last_wanted_ = now.wanted_seconds;
    const double gone = std::clamp(moved, 0.0, longest_look);
    if (moved < 0 || moved > jump_seconds) {
        is_under_way_ = true;
        under_way_ = 0;
    }
    under_way_ += gone;
    if (!now.is_missing || under_way_ > (rate_ < 0 ? longest_reverse_way : longest_way))
        is_under_way_ = false;
    // A frame that comes between two ticks was not missed.
    const bool is_missed = now.is_missing && was_missing_ && !is_under_way_;
    was_missing_ = now.is_missing;
    missed_ = is_missed ? missed_ + gone : std::max(0.0, missed_ - forgetting * gone);
    well_ = now.is_missing ? 0 : well_ + gone;
    since_tried_ += gone;
    is_behind_ = is_missed && missed_ > behind_missed;
}

void playback_pace::choose(const look_taken& now) {
    const bool is_usual = step_ == usual_step();
    if (missed_ > (is_usual ? first_missed : further_missed) && step_ + 1 < step_count()) {
        ++step_;
        missed_ = 0;
        // What had gone well with less left out may be tried again soon.
        patience_ = since_tried_ < 2 * patience_ ? std::min(patience_ * patience_growth, longest_patience)
                                                 : first_patience;
    } else if (!is_usual && now.is_full && well_ > patience_) {
        --step_;
        missed_ = well_ = since_tried_ = 0;
    }
}

}  // namespace vistels
