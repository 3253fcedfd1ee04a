// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "shell/panes/timeline/timeline_scale.h"

namespace vistels {

// A clip as far as its place on the screen goes.
struct track_clip {
    double start = 0;
    double end = 0;
    std::uint32_t index = 0;  // in its row
    std::uint8_t colour = 0;  // in its row's palette
    bool dimmed = false;
};

// What is drawn as one piece: a clip, or several too narrow to be told apart.
struct timeline_bar {
    double left = 0;  // pixels
    double right = 0;
    std::uint32_t index = 0;  // of the first clip, in its row
    std::uint32_t count = 1;
    std::uint8_t colour = 0;  // the most frequent one
    bool dimmed = false;
};

struct bar_limits {
    double merge_below = 3;  // pixels: narrower clips are merged
    double gap_below = 1;    // over gaps narrower than this
    double least_width = 1;  // of a bar
};

// Clips in ascending order of start, ready to be drawn at any scale: what it costs depends on the width,
// hardly on the number of clips, since stretches in which all clips merge are passed over in one go. Values
// only, no thread of its own.
class clip_track {
  public:
    void assign(std::vector<track_clip> clips);

    // Another one after each assign(): what was made of the clips is current as long as it is the same.
    std::uint64_t version() const { return version_; }
    std::size_t size() const { return clips_.size(); }
    const track_clip& operator[](std::size_t position) const { return clips_[position]; }

    // The first position from which on clips end after `seconds`; earlier ones all end before.
    std::size_t first_reaching(double seconds) const;
    // The first position from which on clips start at or after `seconds`.
    std::size_t first_starting(double seconds) const;
    // The clip on top at `seconds`, or the nearest within `tolerance` seconds; size() when there is none.
    std::size_t at(double seconds, double tolerance) const;

    // Appends the bars from x = 0 to `width`, in the order in which they are to be drawn.
    void add_bars(const timeline_scale& scale, double width, const bar_limits& limits,
                  std::vector<timeline_bar>& bars) const;

  private:
    // A stretch of clips that follow one another.
    struct block {
        double end = 0;           // of the clip that ends last
        double longest = 0;       // clip, in seconds
        double widest_gap = 0;    // inside, in seconds
        std::uint8_t colour = 0;  // the most frequent
    };
    static constexpr std::size_t block_size = 64;

    std::uint64_t version_ = 0;
    std::vector<track_clip> clips_;
    std::vector<double> latest_end_;  // of all clips up to the one at the same position
    std::vector<block> blocks_;
};

}  // namespace vistels
