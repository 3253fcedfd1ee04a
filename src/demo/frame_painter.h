// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>

#include "demo/canvas.h"
#include "demo/film_camera.h"
#include "demo/grain.h"
#include "demo/simulation.h"

namespace vistels::demo {

// Paints what one camera sees of a game, frame by frame. One thread at a time; `game` must outlive it.
class frame_painter {
  public:
    frame_painter(const game_record& game, const film_camera& camera, std::uint64_t seed);

    // The picture at a moment of the game (seconds), with `number` as its block code; good until the next
    // call.
    const std::uint8_t* paint(double seconds, std::uint32_t number);
    int stride() const { return picture_.stride(); }

  private:
    const game_record& game_;
    const film_camera camera_;
    canvas picture_;
    canvas behind_;  // of a camera that stands still: all that does not move, behind the players
    canvas before_;  // and before them
    grain grain_;
};

}  // namespace vistels::demo
