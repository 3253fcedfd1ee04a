// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/vistel_player.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "video/collection_failures.h"

namespace vistels {

namespace {

constexpr double next_part_seconds = 1.0;  // a part is opened so long before it is reached
constexpr double usual_frame_seconds = 1.0 / 30;
constexpr double share_of_the_last = 0.1;  // piece of work in the time that one takes

std::vector<playback_part> in_order(std::vector<playback_part> parts) {
    std::stable_sort(parts.begin(), parts.end(),
                     [](const playback_part& a, const playback_part& b) { return a.start < b.start; });
    return parts;
}

}  // namespace

vistel_player::vistel_player(std::vector<playback_part> parts, std::function<void()> on_arrival,
                             std::shared_ptr<frame_budget> budget)
    : parts_(in_order(std::move(parts))),
      share_(std::move(budget), [this] { look_again(); }),
      on_arrival_(std::move(on_arrival)) {
    for (const auto& part : parts_) {
        movies_.push_back(std::make_unique<playback_movie>(part.path, share_.pictures(), part.duration));
    }
    if (parts_.empty()) share_.ask(0, 0);
}

vistel_player::~vistel_player() {
    share_.disconnect();
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

void vistel_player::want(double seconds, double rate, int direction, bool alone, double tolerance,
                         bool hurries) {
    if (parts_.empty()) return;
    const std::lock_guard lock(mutex_);
    wanted_seconds_ = seconds;
    demand_.rate = rate;
    demand_.direction = direction;
    demand_.alone = alone;
    demand_.hurries = hurries;
    demand_.tolerance = tolerance;
    resting_ = false;
    post_work();
}

void vistel_player::check_files() {
    const std::lock_guard lock(mutex_);
    checks_files_ = true;
    post_work();
}

work_progress vistel_player::progress() const {
    const std::uint64_t stages = stages_;
    return {stages / 2, stages % 2 != 0};
}

std::weak_ptr<vistel_player> vistel_player::leave(std::unique_ptr<vistel_player> player) {
    const std::shared_ptr<vistel_player> held(std::move(player));
    held->share_.disconnect();
    {
        const std::lock_guard lock(held->mutex_);
        held->ending_ = true;
    }
    held->queue_.post([held] {});
    return held;
}

void vistel_player::rest() {
    const std::lock_guard lock(mutex_);
    if (resting_ && demand_number_ > 0) return;
    resting_ = true;
    post_work();
}

void vistel_player::look_again() {
    const std::lock_guard lock(mutex_);
    post_work();
}

// Under mutex_.
void vistel_player::post_work() {
    ++demand_number_;
    if (working_) return;
    working_ = true;
    queue_.post([this] { work(); });
}

void vistel_player::work() {
    for (;;) {
        double seconds = 0;
        playback_demand demand;
        std::uint64_t number = 0;
        bool resting = false;
        bool checks = false;
        {
            const std::lock_guard lock(mutex_);
            if (ending_) return;
            seconds = wanted_seconds_;
            demand = demand_;
            number = demand_number_;
            resting = resting_;
            checks = std::exchange(checks_files_, false);
        }
        ++stages_;
        auto made = playback_movie::progress::nothing_to_do;
        for (const auto& movie : movies_) {
            if (checks) movie->check_file();
        }
        if (resting) {
            let_go();
        } else {
            made = work_timed(seconds, demand);
        }
        ++stages_;
        const bool is_news =
            made == playback_movie::progress::wanted_frame_came || made == playback_movie::progress::failed;
        if (has_missed_frame(seconds) || is_news) on_arrival_();
        if (made != playback_movie::progress::nothing_to_do) continue;
        const std::lock_guard lock(mutex_);
        if (number != demand_number_) continue;
        working_ = false;
        return;
    }
}

// A frame that is read ahead may come between a look for it and the news that it is wanted.
bool vistel_player::has_missed_frame(double seconds) {
    const place here = place_of(seconds);
    if (!is_missed_ || here.part < 0) return false;
    const auto frame = movies_[static_cast<std::size_t>(here.part)]->frame_at(here.seconds);
    return frame && !(frame->sparse && demanded_rate() == 0) && is_missed_.exchange(false);
}

void vistel_player::let_go() {
    for (const auto& movie : movies_) movie->keep({});
    share_.ask(0, 0);
    share_.limit();
}

// The part that is shown first, then the one that playing comes to next.
std::vector<vistel_player::near_part> vistel_player::near_parts(double seconds,
                                                                const playback_demand& demand) const {
    std::vector<near_part> found;
    const place here = place_of(seconds);
    const double soon = next_part_seconds * std::max(1.0, std::abs(demand.rate));
    if (here.part >= 0) {
        found.push_back({here.part, true, demand});
        found.back().demand.seconds = here.seconds;
        found.back().demand.alone = demand.alone || is_still() || seconds > duration() + soon;
    }
    const int middle = here.part >= 0 ? here.part : part_at_or_after(seconds);
    const bool backwards = demand.rate < 0 || (demand.rate == 0 && demand.direction < 0);
    const auto add = [&](int index, bool comes_after) {
        if (demand.alone || demand.tolerance > 0 || index < 0 || index >= static_cast<int>(parts_.size()))
            return;
        const playback_part& part = parts_[static_cast<std::size_t>(index)];
        const double away = comes_after ? part.start - seconds : seconds - (part.start + part.duration);
        if (away > soon) return;
        found.push_back({index, comes_after != backwards, demand});
        found.back().demand.seconds =
            comes_after ? 0 : std::max(0.0, part.duration - 2 * frame_tolerance_seconds);
    };
    add(middle - 1, false);
    add(here.part >= 0 ? middle + 1 : middle, true);
    return found;
}

// Each part gets of the vistel's share what it needs of all that they need.
void vistel_player::share_memory(std::vector<near_part>& parts) {
    std::vector<std::size_t> wanted;
    std::size_t least = 0;
    std::size_t all = 0;
    bool is_known = true;
    for (const auto& part : parts) {
        const playback_movie& movie = *movies_[static_cast<std::size_t>(part.index)];
        const auto needs = movie.needs(part.demand);
        is_known = is_known && (!part.is_read || movie.is_open() || movie.problem());
        wanted.push_back(needs.wanted);
        least = std::max(least, needs.least);
        all += needs.wanted;
    }
    if (is_known) share_.ask(least, all);
    const std::size_t limit = share_.limit();
    std::vector<bool> is_near(movies_.size());
    for (std::size_t i = 0; i < parts.size(); ++i) {
        const auto index = static_cast<std::size_t>(parts[i].index);
        parts[i].demand.memory = all == 0 ? 0 : limit * wanted[i] / all;
        is_near[index] = true;
        movies_[index]->keep(parts[i].demand);
    }
    for (std::size_t i = 0; i < movies_.size(); ++i) {
        if (!is_near[i]) movies_[i]->keep({});
    }
}

playback_movie::progress vistel_player::work_timed(double seconds, const playback_demand& demand) {
    const auto begun = std::chrono::steady_clock::now();
    const auto made = work_once(seconds, demand);
    if (made == playback_movie::progress::nothing_to_do || made == playback_movie::progress::failed)
        return made;
    const double took =
        std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - begun).count();
    const double before = decode_milliseconds_;
    decode_milliseconds_ = before == 0 ? took : before + (took - before) * share_of_the_last;
    return made;
}

playback_movie::progress vistel_player::work_once(double seconds, const playback_demand& demand) {
    const place here = place_of(seconds);
    const int middle = here.part >= 0 ? here.part : part_at_or_after(seconds);
    for (int i = 0; i < static_cast<int>(movies_.size()); ++i) {
        if (std::abs(i - middle) > 1) movies_[static_cast<std::size_t>(i)]->close();
    }
    auto parts = near_parts(seconds, demand);
    share_memory(parts);
    for (const auto& part : parts) {
        if (!part.is_read || (demand.hurries && part.index != here.part)) continue;
        const auto made = movies_[static_cast<std::size_t>(part.index)]->work(part.demand);
        if (made == playback_movie::progress::nothing_to_do) continue;
        // Nobody waits for a part that comes.
        return part.index == here.part ? made : playback_movie::progress::worked;
    }
    return playback_movie::progress::nothing_to_do;
}

double vistel_player::demanded_rate() const {
    const std::lock_guard lock(mutex_);
    return demand_.rate;
}

vistel_player::view vistel_player::look(double seconds, double tolerance) const {
    if (parts_.empty()) return {vistel_state::unreadable, nullptr, 0, 0, no_movie_parts(), {}, false};
    const place here = place_of(seconds);
    if (here.part < 0) return {vistel_state::blank, nullptr, seconds, seconds, {}, {}, false};
    const playback_movie& movie = *movies_[static_cast<std::size_t>(here.part)];
    const double start = parts_[static_cast<std::size_t>(here.part)].start;
    view seen;
    seen.problem = movie.problem();
    if (seen.problem) {
        seen.state = vistel_state::unreadable;
        return seen;
    }
    seen.difference = movie.difference_from_record();
    const double rate = demanded_rate();
    is_missed_ = true;  // first, so that a frame that comes from now on is told
    seen.frame = movie.frame_at(here.seconds);
    // What was passed over while playing fast may be nearer: at rest it is waited for.
    if (seen.frame && !(seen.frame->sparse && rate == 0)) {
        is_missed_ = false;
        seen.state = vistel_state::showing;
    } else if (const auto near = tolerance > 0 ? movie.frame_near(here.seconds, tolerance) : nullptr) {
        is_missed_ = false;
        seen.is_near = true;
        seen.frame = near;
    } else if (!seen.frame) {
        seen.frame = rate < 0 ? movie.frame_after(here.seconds) : movie.frame_before(here.seconds);
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
