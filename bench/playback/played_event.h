// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <functional>
#include <limits>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "demo/block_code.h"
#include "media/frame_reader.h"
#include "media/packet_index.h"
#include "support/coded_movie.h"
#include "support/measure.h"
#include "util/plain_run_loop.h"
#include "video/synchronised_playback.h"

// Vistels that are played without a window, and what is looked at meanwhile.
namespace vistels::bench {

inline constexpr double longest_wait_seconds = 30;
inline constexpr double tick_seconds = 1.0 / 60;

inline double percentile(std::vector<double> values, double share) {
    if (values.empty()) return 0;
    std::sort(values.begin(), values.end());
    return values[static_cast<std::size_t>(share * static_cast<double>(values.size() - 1))];
}

struct picture_size {
    int width = 0;
    int height = 0;
};
// As a window of 1920x1080 asks for with four vistels, and for one that is enlarged.
inline constexpr picture_size small_picture{477, 268};
inline constexpr picture_size large_picture{1600, 900};

// One vistel with the time stamps of its movies. Their pictures say which frame they are: on the vistel's own
// time line, so many a second.
struct camera {
    static constexpr long none = -1;  // between two parts
    static constexpr long unreadable = -2;

    playback_vistel vistel;
    std::vector<packet_index> indices;  // one for each part
    double frame_rate = 30;
    bool is_of_demo = true;

    static camera open(const playback_vistel& vistel, double frame_rate, bool is_of_demo) {
        camera made{vistel, {}, frame_rate, is_of_demo};
        for (const auto& part : vistel.parts) {
            auto index = read_packet_index(part.path);
            if (!index.ok()) stop_with(index.message());
            made.indices.push_back(std::move(index).value());
        }
        return made;
    }

    // The frame due at a time on the vistel's own time line.
    long due_at(double seconds) const {
        long due = none;
        for (std::size_t k = 0; k < indices.size(); ++k) {
            const auto& part = vistel.parts[k];
            const double within = seconds + frame_tolerance_seconds - part.start;
            if (within < 0 || within >= part.duration) continue;
            const double stamp = indices[k].seconds_of(indices[k].frame_at(seconds - part.start));
            due = std::lround((part.start + stamp) * frame_rate);
        }
        return due;
    }

    long read(const picture& shown) const {
        if (!is_of_demo) return vistels::testing::read_frame_number(shown);
        const auto code = read_block_code(shown.bytes.data(), shown.width, shown.height, shown.stride);
        return code ? static_cast<long>(*code) : unreadable;
    }
};

// What was seen of pictures that changed while playing.
struct seen_pictures {
    double begun = 0;  // of the machine's time, as all that follows
    int ticks = 0;
    int right_ticks = 0;       // at which all showed the frame that was due
    std::vector<double> gaps;  // of the machine's time, from one picture of a vistel to the next ...
    double first_gap =
        0;  // ... and the longest that began in the first half second, which are not among them
    std::vector<std::size_t> pictures;  // different ones, of each vistel
    int turns = 0;                      // pictures that lie against the direction of playing
    double clock_error = 0;             // the largest, in seconds of the collection
    double seconds = 0;                 // of the machine's time
    double right_share() const { return ticks == 0 ? 0 : static_cast<double>(right_ticks) / ticks; }
    double largest_gap() const { return percentile(gaps, 1); }
    double median_gap() const { return percentile(gaps, 0.5); }
};

class played_event {
  public:
    played_event(std::vector<camera> cameras, picture_size size)
        : cameras_(std::move(cameras)), playback_(loop_) {
        std::vector<playback_vistel> vistels;
        for (const auto& camera : cameras_) vistels.push_back(camera.vistel);
        playback_.set_volume(0);
        playback_.set_vistels(vistels);
        for (const auto& camera : cameras_) {
            playback_.set_view_size(camera.vistel.uuid, size.width, size.height);
        }
        seek_and_wait(0);
    }

    synchronised_playback& playback() { return playback_; }
    const synchronised_playback& playback() const { return playback_; }
    plain_run_loop& loop() { return loop_; }
    const std::vector<camera>& cameras() const { return cameras_; }

    // Where the first of them ends.
    double end() const {
        double shortest = std::numeric_limits<double>::max();
        for (const auto& camera : cameras_) {
            const auto& last = camera.vistel.parts.back();
            shortest = std::min(shortest, last.start + last.duration - camera.vistel.lead);
        }
        return shortest;
    }

    double seek_and_wait(double seconds) {
        bool done = false;
        const double before = loop_.time().seconds();
        playback_.seek(seconds, [&] { done = true; });
        if (!loop_.run_until([&] { return done; }, longest_wait_seconds))
            stop_with("A seek did not come to its end");
        return loop_.time().seconds() - before;
    }

    void run(double seconds) {
        const double until = loop_.time().seconds() + seconds;
        loop_.run_until([&] { return loop_.time().seconds() >= until; }, seconds + 1);
    }

    bool is_right(const camera& camera, double collection_seconds, bool tell) const {
        const auto shown = playback_.picture(camera.vistel.uuid);
        const long due = camera.due_at(collection_seconds + camera.vistel.lead);
        const long read = shown ? camera.read(*shown) : camera::none;
        if (tell && read != due) {
            std::printf("  %s at %.4f: frame %ld instead of %ld\n", camera.vistel.uuid.c_str(),
                        collection_seconds, read, due);
        }
        return read == due;
    }

    bool all_right(double collection_seconds, bool tell) const {
        return std::all_of(cameras_.begin(), cameras_.end(),
                           [&](const camera& camera) { return is_right(camera, collection_seconds, tell); });
    }

    // Plays from a time for so long, as far as the movies go, and looks at each tick.
    seen_pictures play(double from, double rate, double most_seconds, bool reads_pictures = false) {
        seek_and_wait(from);
        playback_.set_rate(rate);
        const double way = rate > 0 ? end() - 0.2 - from : from - 0.2;
        const double lasts = std::min(most_seconds, way / std::abs(rate));
        seen_pictures seen;
        seen.pictures.assign(cameras_.size(), 0);
        std::vector<last_seen> watched(cameras_.size());
        playback_.play();
        const double begun = loop_.time().seconds();
        seen.begun = begun;
        const double begun_at = playback_.collection_time_at(begun);
        const auto timer = loop_.start_timer(tick_seconds, true, [&] {
            // The frame is judged by the very time that it was chosen for.
            const double before = playback_.collection_time();
            playback_.tick();
            const double after = playback_.collection_time();
            if (!playback_.is_playing()) return;
            ++seen.ticks;
            if (reads_pictures && (all_right(before, false) || all_right(after, false))) ++seen.right_ticks;
            const double now = loop_.time().seconds();
            const double error = playback_.collection_time_at(now) - (begun_at + rate * (now - begun));
            seen.clock_error = std::max(seen.clock_error, std::abs(error));
            for (std::size_t i = 0; i < cameras_.size(); ++i) look(i, now, rate, watched[i], seen);
        });
        loop_.run_until([&] { return loop_.time().seconds() - begun >= lasts; },
                        lasts + longest_wait_seconds);
        seen.seconds = loop_.time().seconds() - begun;
        playback_.pause();
        loop_.stop_timer(timer);
        for (const auto& one : watched) {
            if (one.shown) add_gap(one.since, begun + seen.seconds, seen);
        }
        return seen;
    }

  private:
    struct last_seen {
        picture_pointer shown;
        double since = 0;
    };

    static void add_gap(double from, double to, seen_pictures& seen) {
        constexpr double beginning_seconds = 0.5;
        if (from - seen.begun < beginning_seconds) {
            seen.first_gap = std::max(seen.first_gap, to - from);
        } else {
            seen.gaps.push_back(to - from);
        }
    }

    void look(std::size_t i, double now, double rate, last_seen& before, seen_pictures& seen) const {
        const auto shown = playback_.picture(cameras_[i].vistel.uuid);
        if (!shown || (before.shown && shown->stamp == before.shown->stamp)) return;
        ++seen.pictures[i];
        if (before.shown) {
            add_gap(before.since, now, seen);
            if ((shown->stamp < before.shown->stamp) != (rate < 0)) ++seen.turns;
        }
        before = {shown, now};
    }

    plain_run_loop loop_;
    const std::vector<camera> cameras_;
    synchronised_playback playback_;
};

// Whether some vistel's movie is still being read.
inline bool is_reading(const played_event& event) {
    return std::any_of(event.cameras().begin(), event.cameras().end(),
                       [&](const camera& camera) { return event.playback().is_reading(camera.vistel.uuid); });
}

}  // namespace vistels::bench
