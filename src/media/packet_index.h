// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "util/result.h"

namespace vistels {

// When each frame of a movie is shown, in order, as its packets say: in ticks from the first frame.
struct packet_index {
    double seconds_per_tick = 0;
    std::vector<std::int64_t> stamps;  // ascending, at least one

    double seconds_of(std::size_t frame) const {
        return static_cast<double>(stamps[frame]) * seconds_per_tick;
    }
    // The frame shown at a time, by the rule of frame_reader.
    std::size_t frame_at(double seconds) const;
};

// Reads the whole file, without decoding.
result<packet_index> read_packet_index(const std::string& path);

}  // namespace vistels
