// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <vector>

#include "demo/seeded_random.h"

namespace vistels::demo {

// The noise of a camera's sensor: other values for every picture, the same ones for the same seed.
class grain {
  public:
    explicit grain(std::uint64_t seed);

    // Adds noise to pixels of 4 bytes B, G, R, A.
    void add_to(std::uint8_t* bgra, int width, int height, int stride);

  private:
    seeded_random random_;
    std::vector<std::int8_t> noise_;
};

}  // namespace vistels::demo
