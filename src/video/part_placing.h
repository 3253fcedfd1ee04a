// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>

#include "video/movie_Part_DRONE_Offset_Item.h"

namespace vistels {

// Where a movie part may lie on its vistel's time line, by its gap to the part before; seconds.
struct gap_range {
    double least = 0;
    double most = 0;  // infinite for the last part
    bool holds(double gap) const { return gap >= least && gap <= most; }
};

// A part that is dragged between its neighbours, which stay: what its gap gains, the gap behind it loses.
gap_range allowed_gap(const movie_Part_DRONE_Offsets_Root& parts, std::size_t part);

// The parts with that part dragged to that gap, which is brought within what is allowed. An unknown part
// changes nothing.
movie_Part_DRONE_Offsets_Root with_part_placed(movie_Part_DRONE_Offsets_Root parts, std::size_t part,
                                               double gap);
// The parts with that gap, from 0, before the part; it and all behind it move along.
movie_Part_DRONE_Offsets_Root with_gap(movie_Part_DRONE_Offsets_Root parts, std::size_t part, double gap);

// One drag of a part, from mouse-down to release.
class part_drag {
  public:
    part_drag(movie_Part_DRONE_Offsets_Root parts, std::size_t part);

    // The mouse is that many seconds from where it went down. The part follows it as far as it may.
    void move_to(double seconds);
    // As they are shown now.
    const movie_Part_DRONE_Offsets_Root& parts() const { return parts_; }
    // Whether the mouse is where the part may lie.
    bool is_valid() const { return is_valid_; }
    // The mouse goes up: outside a valid place the gap of mouse-down is back.
    movie_Part_DRONE_Offsets_Root release() const { return is_valid_ ? parts_ : at_mouse_down_; }
    movie_Part_DRONE_Offsets_Root cancel() const { return at_mouse_down_; }

  private:
    movie_Part_DRONE_Offsets_Root at_mouse_down_;
    movie_Part_DRONE_Offsets_Root parts_;
    std::size_t part_;
    bool is_valid_ = true;
};

// By how much the nudge button's step number `repeat`, from 0 at the press, moves a part: a frame at first,
// and the longer it is held the more. Seconds.
double nudge_seconds(int repeat, double frame_seconds);

// By how much part `index` starts later in `after` than in `before`; 0 for a part that is not in both.
double part_movement(const movie_Part_DRONE_Offsets_Root& before, const movie_Part_DRONE_Offsets_Root& after,
                     std::size_t index);

// The part that stands at a time of the vistel's time line; nothing in a gap.
std::optional<std::size_t> part_at(const movie_Part_DRONE_Offsets_Root& parts, double seconds);

}  // namespace vistels
