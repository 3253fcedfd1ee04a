// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <vector>

#include "timeline/records/sxy_ROW.h"

namespace vistels {

// The clocks of a row of timer clips, ready to be asked for at every display tick: what an answer costs
// hardly depends on the number of clips. A clip's clock begins at its offset and runs on, or down, while the
// clip does; one that adds up goes on from the clips of its row that stand before it. Seconds; all times are
// those of the collection's clock. A value, made anew when the row changes; any thread.
class timer_clocks {
  public:
    timer_clocks() = default;
    explicit timer_clocks(const sxy_ROW& row);

    // What the clock of the clip at that place of the row shows at a time within it; before it as at its
    // start, behind it as at its end.
    double of_clip(std::size_t index, double at) const;
    // Of a clip that grows there.
    double of_growing(const sxy_CLIP& clip, double at) const;
    // What the row's clock shows while none grows: that of the clip that holds the time and started last,
    // else of the one that ended last before it; nothing when there is none.
    std::optional<double> of_row(double at) const;

  private:
    struct timer {
        double start = 0;
        double end = 0;
        double offset = 0;
        bool is_cumulative = false;
        bool counts_down = false;
    };
    static timer timer_of(const sxy_CLIP& clip);
    static double shown(const timer& one, double end, double run_before, double at);
    std::size_t count_starting_until(double seconds) const;

    std::vector<timer> clips_;
    std::vector<double> run_before_;      // of all clips before the one at that place; one more at the end
    std::vector<std::size_t> ends_last_;  // of the clips up to that place the one that ends last
};

}  // namespace vistels
