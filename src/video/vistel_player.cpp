// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/vistel_player.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace vistels {

namespace {

constexpr std::size_t memory_budget_bytes = 96U << 20U;  // for the frames of one movie part
constexpr double next_part_seconds = 1.0;                // a part is opened so long before it is reached
constexpr double usual_frame_seconds = 1.0 / 30;

std::vector<playback_part> in_order(std::vector<playback_part> parts) {
    std::stable_sort(parts.begin(), parts.end(),
                     [](const playback_part& a, const playback_part& b) { return a.start < b.start; });
    return parts;
}

}  // namespace

vistel_player::vistel_player(std::vector<playback_part> parts, std::function<void()> on_arrival)
    : parts_(in_order(std::move(parts))), on_arrival_(std::move(on_arrival)) {
    for (const auto& part : parts_) {
        movies_.push_back(std::make_unique<playback_movie>(part.path, memory_budget_bytes));
    }
}

vistel_player::~vistel_player() {
    const std::lock_guard lock(mutex_);
    ending_ = true;
}

vistel_player::place vistel_player::place_of(double seconds) const {
    if (is_still()) return {0, 0};
    const double reached = seconds + frame_tolerance_seconds;
    int part = -1;
    for (std::size_t i = 0; i < parts_.size() && parts_[i].start <= reached; ++i) part = static_cast<int>(i);
    if (part < 0) return {-1, 0};
    const playback_part& found = parts_[static_cast<std::size_t>(part)];
    const bool is_last = part + 1 == static_cast<int>(parts_.size());
    // The last part's last frame stays; after others comes their gap.
    if (!is_last && reached >= found.start + found.duration) return {-1, 0};
    return {part, seconds - found.start};
}

int vistel_player::part_at_or_after(double seconds) const {
    int part = 0;
    while (part < static_cast<int>(parts_.size()) &&
           parts_[static_cast<std::size_t>(part)].start + parts_[static_cast<std::size_t>(part)].duration <=
               seconds) {
        ++part;
    }
    return part;
}

bool vistel_player::is_still() const {
    return parts_.size() == 1 && parts_.front().is_still;
}

double vistel_player::duration() const {
    return parts_.empty() ? 0 : parts_.back().start + parts_.back().duration;
}

void vistel_player::set_size(int width, int height) {
    const std::lock_guard lock(mutex_);
    demand_.width = width;
    demand_.height = height;
}

void vistel_player::want(double seconds, double rate, int direction) {
    if (parts_.empty()) return;
    {
        const std::lock_guard lock(mutex_);
        wanted_seconds_ = seconds;
        demand_.rate = rate;
        demand_.direction = direction;
        ++demand_number_;
        if (working_) return;
        working_ = true;
    }
    queue_.post([this] { work(); });
}

void vistel_player::work() {
    for (;;) {
        double seconds = 0;
        playback_demand demand;
        std::uint64_t number = 0;
        {
            const std::lock_guard lock(mutex_);
            if (ending_) return;
            seconds = wanted_seconds_;
            demand = demand_;
            number = demand_number_;
        }
        const auto made = work_once(seconds, demand);
        if (made == playback_movie::progress::wanted_frame_came || made == playback_movie::progress::failed) {
            on_arrival_();
        }
        if (made != playback_movie::progress::nothing_to_do) continue;
        const std::lock_guard lock(mutex_);
        if (number != demand_number_) continue;
        working_ = false;
        return;
    }
}

// The part that is shown first, then the one that playing comes to next.
playback_movie::progress vistel_player::work_once(double seconds, const playback_demand& demand) {
    const place here = place_of(seconds);
    const int near_part = here.part >= 0 ? here.part : part_at_or_after(seconds);
    close_far_parts(near_part);
    if (here.part >= 0) {
        playback_demand own = demand;
        own.seconds = here.seconds;
        const auto made = movies_[static_cast<std::size_t>(here.part)]->work(own);
        if (made != playback_movie::progress::nothing_to_do) return made;
    }
    const bool backwards = demand.rate < 0 || (demand.rate == 0 && demand.direction < 0);
    const int next = backwards ? near_part - 1 : here.part >= 0 ? near_part + 1 : near_part;
    if (next < 0 || next >= static_cast<int>(parts_.size())) return playback_movie::progress::nothing_to_do;
    const playback_part& coming = parts_[static_cast<std::size_t>(next)];
    const double away = backwards ? seconds - (coming.start + coming.duration) : coming.start - seconds;
    const double soon = next_part_seconds * std::max(1.0, std::abs(demand.rate));
    if (away > soon) return playback_movie::progress::nothing_to_do;
    playback_demand other = demand;
    other.seconds = backwards ? std::max(0.0, coming.duration - 2 * frame_tolerance_seconds) : 0;
    const auto made = movies_[static_cast<std::size_t>(next)]->work(other);
    return made == playback_movie::progress::nothing_to_do ? made : playback_movie::progress::worked;
}

void vistel_player::close_far_parts(int near_part) {
    for (int i = 0; i < static_cast<int>(movies_.size()); ++i) {
        if (std::abs(i - near_part) > 1) movies_[static_cast<std::size_t>(i)]->close();
    }
}

vistel_player::view vistel_player::look(double seconds) const {
    if (parts_.empty()) return {vistel_state::unreadable, nullptr, 0, 0, "There are no movie parts."};
    const place here = place_of(seconds);
    if (here.part < 0) return {vistel_state::blank, nullptr, seconds, seconds, {}};
    const playback_movie& movie = *movies_[static_cast<std::size_t>(here.part)];
    const double start = parts_[static_cast<std::size_t>(here.part)].start;
    view seen;
    seen.problem = movie.problem();
    if (!seen.problem.empty()) {
        seen.state = vistel_state::unreadable;
        return seen;
    }
    seen.frame = movie.frame_at(here.seconds);
    if (seen.frame) {
        seen.state = vistel_state::showing;
    } else {
        seen.frame = movie.frame_before(here.seconds);
    }
    if (seen.frame) {
        seen.frame_seconds = start + seen.frame->time;
        seen.until_seconds = start + seen.frame->until;
    }
    return seen;
}

std::optional<double> vistel_player::preceding(double seconds) const {
    const place here = place_of(seconds);
    if (here.part < 0) return std::nullopt;
    const playback_movie& movie = *movies_[static_cast<std::size_t>(here.part)];
    const auto shown = movie.frame_at(here.seconds);
    const auto before = shown ? movie.frame_preceding(*shown) : nullptr;
    if (!before) return std::nullopt;
    return parts_[static_cast<std::size_t>(here.part)].start + before->time;
}

double vistel_player::frame_seconds(double seconds) const {
    const place here = place_of(seconds);
    return here.part < 0 ? usual_frame_seconds
                         : movies_[static_cast<std::size_t>(here.part)]->frame_seconds();
}

}  // namespace vistels
