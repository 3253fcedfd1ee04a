// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "video/playback_movie.h"

#if VISTELS_HAVE_MEDIA

#include "support/coded_movie.h"
#include "support/temporary_folder.h"
#include "util/wait_watch.h"

namespace vistels {
namespace {

using namespace vistels::testing;

constexpr int width = 160;
constexpr int height = 120;
constexpr double movie_seconds = 60;
constexpr double tick_seconds = 1.0 / 60;

// What reading costs, in packets.
class read_count : public wait_watch {
  public:
    read_count() { listen(this); }
    ~read_count() override { listen(nullptr); }
    int taken() { return std::exchange(packets_, 0); }

  private:
    void begins(const wait_note& note) override {
        packets_ += std::string_view(note.call()) == "read movie" ? 1 : 0;
    }
    void ended(const wait_note&, double) override {}

    int packets_ = 0;
};

// Plays a movie on a machine that reads so many packets a tick, tick by tick in one thread, and notes at
// which ticks the picture changes.
class slow_machine {
  public:
    slow_machine(const std::string& path, double packets_a_tick, std::size_t frames_held)
        : packets_a_tick_(packets_a_tick), movie_(path, std::make_shared<picture_pool>()) {
        demand_.width = width;
        demand_.height = height;
        demand_.memory = frames_held * picture_bytes(width, height);
    }

    void play(double from, double rate, double ticks) {
        demand_.rate = rate;
        for (int tick = 0; tick < ticks; ++tick) {
            demand_.seconds = from + rate * tick * tick_seconds;
            read();
            look(tick);
        }
    }

    // From one change of the picture to the next, in ticks, after the first few seconds.
    std::vector<double> gaps(int after_tick) const {
        std::vector<double> found;
        for (std::size_t n = 1; n < changes_.size(); ++n) {
            if (changes_[n - 1] >= after_tick) found.push_back(changes_[n] - changes_[n - 1]);
        }
        std::sort(found.begin(), found.end());
        return found;
    }
    double longest_gap() const {
        const auto all = gaps(0);
        return all.empty() ? 1e9 : all.back();
    }
    int turns() const { return turns_; }
    int right() const { return right_; }

  private:
    void read() {
        packets_ = std::min(packets_ + packets_a_tick_, std::max(packets_a_tick_, 1.0));
        for (int pieces = 0; packets_ > 0 && pieces < 1000; ++pieces) {
            const auto made = movie_.work(demand_);
            ASSERT_NE(made, playback_movie::progress::failed) << movie_.problem().message();
            packets_ -= reads_.taken();
            if (made == playback_movie::progress::nothing_to_do) return;
        }
    }

    void look(int tick) {
        auto seen = movie_.frame_at(demand_.seconds);
        if (seen && seen->time <= demand_.seconds + 0.001 && demand_.seconds < seen->until + 0.001) ++right_;
        const auto away = [&](const picture& one) { return std::abs(one.time - demand_.seconds); };
        if (!seen) {
            seen =
                demand_.rate > 0 ? movie_.frame_before(demand_.seconds) : movie_.frame_after(demand_.seconds);
            if (!seen || (shown_ && away(*seen) >= away(*shown_))) return;
        }
        if (shown_ && seen->stamp == shown_->stamp) return;
        if (shown_ && (seen->stamp < shown_->stamp) != (demand_.rate < 0)) ++turns_;
        shown_ = seen;
        changes_.push_back(tick);
    }

    const double packets_a_tick_;
    read_count reads_;
    playback_movie movie_;
    playback_demand demand_;
    double packets_ = 0;
    picture_pointer shown_;
    std::vector<int> changes_;
    int turns_ = 0;
    int right_ = 0;
};

TEST(playback_pace, what_cannot_be_read_in_time_is_left_out_evenly) {
    const temporary_folder folder;
    movie_writer_settings settings;
    settings.width = width;
    settings.height = height;
    settings.preset = "ultrafast";
    settings.threads = 1;
    settings.video_bit_rate = 200'000;
    for (const int group : {1, 15, 60, 300}) {
        settings.gop_frames = group;
        ASSERT_TRUE(write_coded_movie(folder / (std::to_string(group) + ".mp4"), settings,
                                      static_cast<unsigned>(movie_seconds * settings.frame_rate))
                        .ok());
    }
    struct {
        double rate;
        int group;              // frames from one key frame to the next, of which there are 30 a second
        double packets;         // that are read in a tick
        std::size_t held;       // frames
        double usual, longest;  // ticks from picture to picture: the median, and at most when it has settled
        double first;           // ... and at most before
    } const cases[] = {
        // What can be read is shown at every tick.
        {4, 60, 8, 60, 1, 1, 2},
        {8, 60, 12, 60, 1, 2, 2},
        {1, 60, 2, 60, 2, 2, 2},
        {-1, 60, 2, 100, 2, 2, 2},
        {-2, 60, 4, 100, 1, 1, 2},
        // Half of what is needed, or less: key frames.
        {1, 60, 0.25, 60, 120, 130, 140},
        {2, 15, 0.5, 60, 15, 25, 30},
        {4, 60, 1, 60, 30, 31, 31},
        {8, 60, 1, 60, 15, 16, 16},
        // Key frames alone from the beginning ...
        {16, 60, 1, 60, 8, 8, 8},
        {64, 60, 3, 60, 2, 2, 2},
        {-8, 60, 2, 100, 15, 15, 31},
        {-8, 60, 0.5, 100, 15, 15, 15},
        // ... and those, too, are more than can be read.
        {64, 1, 1, 60, 2, 3, 5},
        {64, 1, 0.25, 60, 8, 12, 15},
        {16, 60, 0.1, 60, 40, 50, 60},
        {-8, 1, 0.5, 60, 4, 5, 10},
        // Backwards through long groups, of which a part is held.
        {-1, 300, 10, 40, 2, 2, 30},
        {-1, 300, 1.5, 40, 8, 50, 50},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE("rate " + std::to_string(c.rate) + ", groups of " + std::to_string(c.group) + ", " +
                     std::to_string(c.packets) + " packets a tick");
        slow_machine machine(folder / (std::to_string(c.group) + ".mp4"), c.packets, c.held);
        const double ticks = (movie_seconds - 1) / std::abs(c.rate) / tick_seconds;
        machine.play(c.rate > 0 ? 0 : movie_seconds - 0.5, c.rate, ticks);
        const auto gaps = machine.gaps(static_cast<int>(ticks / 3));
        ASSERT_FALSE(gaps.empty());
        EXPECT_LE(machine.turns(),
                  1);  // where more is read again, the picture may be one nearer to the clock
        EXPECT_NEAR(gaps[gaps.size() / 2], c.usual, c.usual / 2);
        EXPECT_LE(gaps.back(), c.longest);
        EXPECT_LE(machine.longest_gap(), c.first);
    }
}

}  // namespace
}  // namespace vistels

#endif
