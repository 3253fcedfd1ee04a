// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "util/property_value.h"
#include "util/signal.h"
#include "video/synchronised_playback.h"

namespace vistels {

// How a vistel fares in playback.
struct vistel_health {
    std::string uuid;
    std::int64_t frames = 0;         // shown
    std::int64_t dropped = 0;        // beyond those that lie between two ticks
    double decode_milliseconds = 0;  // that a frame took lately
    double difference = 0;           // seconds from the clock to what is shown; less than 0: it is late
};

// Counts what playback shows, from its being made on. Main thread.
class playback_tally {
  public:
    // Both must outlive the tally.
    playback_tally(const std::vector<playback_vistel>& vistels, synchronised_playback& playback);

    // In the order of the vistels.
    std::vector<vistel_health> health() const;
    // Adds "frames" and "dropped" (by vistel), "largest_difference" (seconds of collection time between what
    // two vistels show) and "fixes" (corrections of lagging vistels).
    void add_to(property_dictionary& printed) const;
    // Adds "decode_milliseconds" and "difference" (by vistel), as health() has them.
    void add_health_to(property_dictionary& printed) const;

  private:
    struct count {
        std::string uuid;
        double lead = 0;
        double begin = 0;  // on the vistel's own time line, as all times here
        double end = 0;
        std::int64_t frames = 0;
        std::int64_t dropped = 0;
        picture_pointer last;
        std::optional<double> last_seconds;
        bool has_jumped = false;  // and has not shown a right frame since
    };

    void look();
    void look_at(count& vistel);
    bool is_filmed_now(const count& vistel) const;

    synchronised_playback& playback_;
    std::vector<count> counts_;
    double largest_difference_ = 0;
    const int fixes_before_;
    int jumps_;
    connection pictures_changed_;
};

}  // namespace vistels
