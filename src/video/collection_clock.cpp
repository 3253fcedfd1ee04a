// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/collection_clock.h"

#include <algorithm>
#include <cmath>

namespace vistels {

namespace {

constexpr std::size_t stretches_kept = 16;
constexpr double largest_correction = 0.05;  // of the speed
constexpr double correction_seconds = 1;     // in which a difference is made up for
// From the larger one on it is made up for, until it is below the smaller. Sound that is 45 ms early or 125
// ms late begins to be noticed (ITU-R BT.1359).
constexpr double noticed_seconds = 0.015;
constexpr double in_step_seconds = 0.003;

}  // namespace

collection_clock::collection_clock(const clock& source) : source_(source) {
    stretches_.push_back({source.seconds(), 0, 0});
}

void collection_clock::start_stretch(double time, double speed_factor) {
    stretches_.push_back(
        {source_.seconds(), std::clamp(time, first_, last_), playing_ ? rate_ * speed_factor : 0});
    if (stretches_.size() > stretches_kept) stretches_.pop_front();
}

void collection_clock::change(double time) {
    start_stretch(time, 1);
    follows_ = false;
    changed_ = stretches_.back().source_seconds;
}

double collection_clock::time_to_show(double source_seconds) const {
    return time_at(std::max(source_seconds, changed_));
}

void collection_clock::set_range(double first, double last) {
    const double now = time();
    first_ = first;
    last_ = std::max(first, last);
    change(now);
}

double collection_clock::time_at(double source_seconds) const {
    auto found = stretches_.rbegin();
    while (std::next(found) != stretches_.rend() && found->source_seconds > source_seconds) ++found;
    const double gone = std::max(0.0, source_seconds - found->source_seconds);
    return std::clamp(found->time + gone * found->speed, first_, last_);
}

void collection_clock::play() {
    if (playing_) return;
    const double now = time();
    playing_ = true;
    change(now);
}

void collection_clock::pause() {
    if (!playing_) return;
    const double now = time();
    playing_ = false;
    change(now);
}

void collection_clock::seek(double seconds) {
    if (std::isfinite(seconds)) change(seconds);
}

void collection_clock::set_rate(double rate) {
    if (!std::isfinite(rate) || rate == rate_) return;
    const double now = time();
    rate_ = rate;
    change(now);
}

bool collection_clock::can_move() const {
    return rate_ > 0 ? time() < last_ : rate_ < 0 && time() > first_;
}

void collection_clock::follow(double seconds) {
    if (!playing_ || !std::isfinite(seconds)) return;
    const double now = time();
    const bool is_off = std::abs(seconds - now) >= (follows_ ? in_step_seconds : noticed_seconds);
    if (!is_off && !follows_) return;
    follows_ = is_off;
    if (!is_off) return start_stretch(now, 1);
    const double wanted = (seconds - now) / correction_seconds / (rate_ == 0 ? 1 : rate_);
    start_stretch(now, 1 + std::clamp(wanted, -largest_correction, largest_correction));
}

}  // namespace vistels
