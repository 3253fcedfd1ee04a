// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/timeline/timeline_tracks.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <limits>

namespace vistels {
namespace {

// Counts colours without touching all 256 counters again for each bar.
class colour_votes {
  public:
    void add(std::uint8_t colour, std::uint32_t votes) {
        if (votes_[colour] == 0) seen_.push_back(colour);
        votes_[colour] += votes;
    }

    // The most frequent; the first one seen when several are. Empties the count.
    std::uint8_t take_winner() {
        std::uint8_t winner = seen_.empty() ? std::uint8_t{0} : seen_.front();
        for (const std::uint8_t colour : seen_) {
            if (votes_[colour] > votes_[winner]) winner = colour;
        }
        for (const std::uint8_t colour : seen_) votes_[colour] = 0;
        seen_.clear();
        return winner;
    }

  private:
    std::array<std::uint32_t, 256> votes_{};
    std::vector<std::uint8_t> seen_;
};

// Collects narrow clips that lie close together into one bar.
class bar_maker {
  public:
    bar_maker(const timeline_scale& scale, double width, const bar_limits& limits,
              std::vector<timeline_bar>& bars)
        : scale_(scale), width_(width), limits_(limits), bars_(bars) {}

    void add(const track_clip& clip) {
        const double left = scale_.x_of(clip.start);
        const double right = scale_.x_of(clip.end);
        if (right - left < limits_.merge_below) {
            add_narrow(left, right, clip, clip.colour, 1);
            return;
        }
        flush();
        push({left, right, clip.index, 1, clip.colour, clip.dimmed});
    }

    void add_narrow(double left, double right, const track_clip& first, std::uint8_t colour,
                    std::uint32_t count) {
        if (run_.count > 0 && left - run_.right >= limits_.gap_below) flush();
        if (run_.count == 0) run_ = {left, right, first.index, 0, colour, true};
        run_.right = std::max(run_.right, right);
        run_.count += count;
        run_.dimmed = run_.dimmed && first.dimmed;
        votes_.add(colour, count);
    }

    void flush() {
        if (run_.count == 0) return;
        run_.colour = votes_.take_winner();
        push(run_);
        run_.count = 0;
    }

  private:
    void push(timeline_bar bar) {
        // Far beyond the edges is as good as just beyond them, and fits any integer.
        constexpr double beyond = 64;
        bar.right = std::max(bar.right, bar.left + limits_.least_width);
        bar.left = std::max(bar.left, -beyond);
        bar.right = std::min(bar.right, width_ + beyond);
        if (bar.right > 0 && bar.left < width_) bars_.push_back(bar);
    }

    const timeline_scale& scale_;
    const double width_;
    const bar_limits& limits_;
    std::vector<timeline_bar>& bars_;
    timeline_bar run_{0, 0, 0, 0, 0, false};
    colour_votes votes_;
};

}  // namespace

void clip_track::assign(std::vector<track_clip> clips) {
    static std::atomic<std::uint64_t> versions{0};
    version_ = ++versions;
    clips_ = std::move(clips);
    latest_end_.clear();
    latest_end_.reserve(clips_.size());
    blocks_.clear();
    blocks_.reserve(clips_.size() / block_size + 1);
    double latest = -std::numeric_limits<double>::infinity();
    colour_votes votes;
    for (std::size_t position = 0; position < clips_.size(); ++position) {
        const track_clip& clip = clips_[position];
        if (position % block_size == 0) {
            if (!blocks_.empty()) blocks_.back().colour = votes.take_winner();
            blocks_.push_back({clip.end, 0, 0, 0});
        }
        block& current = blocks_.back();
        current.widest_gap = std::max(current.widest_gap, clip.start - current.end);
        current.end = std::max(current.end, clip.end);
        current.longest = std::max(current.longest, clip.end - clip.start);
        votes.add(clip.colour, 1);
        latest = std::max(latest, clip.end);
        latest_end_.push_back(latest);
    }
    if (!blocks_.empty()) blocks_.back().colour = votes.take_winner();
}

std::size_t clip_track::first_reaching(double seconds) const {
    return static_cast<std::size_t>(std::upper_bound(latest_end_.begin(), latest_end_.end(), seconds) -
                                    latest_end_.begin());
}

std::size_t clip_track::first_starting(double seconds) const {
    const auto found = std::lower_bound(clips_.begin(), clips_.end(), seconds,
                                        [](const track_clip& clip, double at) { return clip.start < at; });
    return static_cast<std::size_t>(found - clips_.begin());
}

std::size_t clip_track::at(double seconds, double tolerance) const {
    std::size_t nearest = size();
    double nearest_distance = tolerance;
    for (std::size_t position = first_reaching(seconds - tolerance); position < size(); ++position) {
        const track_clip& clip = clips_[position];
        if (clip.start > seconds + tolerance) break;
        const double distance = std::max({clip.start - seconds, seconds - clip.end, 0.0});
        if (distance <= nearest_distance) {
            nearest = position;
            nearest_distance = distance;
        }
    }
    return nearest;
}

void clip_track::add_bars(const timeline_scale& scale, double width, const bar_limits& limits,
                          std::vector<timeline_bar>& bars) const {
    const double last_seconds = scale.seconds_at(width);
    const double narrow_seconds = limits.merge_below * scale.seconds_per_pixel;
    const double gap_seconds = limits.gap_below * scale.seconds_per_pixel;
    bar_maker maker(scale, width, limits, bars);
    // A pixel more: a bar is drawn wider than a very short clip.
    std::size_t position = first_reaching(scale.seconds_at(-limits.least_width));
    while (position < size() && clips_[position].start < last_seconds) {
        const block& whole = blocks_[position / block_size];
        const bool merges =
            position % block_size == 0 && whole.longest < narrow_seconds && whole.widest_gap < gap_seconds;
        if (!merges) {
            maker.add(clips_[position++]);
            continue;
        }
        const std::size_t next = std::min(position + block_size, size());
        maker.add_narrow(scale.x_of(clips_[position].start), scale.x_of(whole.end), clips_[position],
                         whole.colour, static_cast<std::uint32_t>(next - position));
        position = next;
    }
    maker.flush();
}

}  // namespace vistels
