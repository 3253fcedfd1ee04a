// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "logger/markup_Button_Item.h"

namespace vistels {

// The triggers of a code window's buttons by their times, and up to which time the playhead has passed them.
// Seconds on the collection's clock. One thread.
class trigger_track {
  public:
    struct passing {
        double at = 0;
        std::string button;
        bool goes_down = false;
    };

    // Those of other buttons from now on; what was passed stays passed.
    void set_buttons(const std::vector<button_record>& buttons);

    // The playhead runs forwards from `at`, whose triggers it passes unless it stopped there behind them.
    void begin(double at);
    // It stands, runs backwards or is dragged: it passes none.
    void stop();
    // It goes on from there without passing what lies between.
    void jump(double to);
    bool is_running() const { return from_.has_value(); }
    bool has_any() const { return !all_.empty(); }
    // It has run on to `at`, and has not passed all up to there yet.
    bool is_before(double at) const { return from_ && *from_ < at; }
    // What it passes on its way to `to`, in order of time, then as the buttons lie; each once.
    std::vector<passing> pass(double to);
    // The next one that it comes to.
    std::optional<double> next() const;

    // The clock was moved; the buttons come with other triggers then.
    void shift(double seconds);

  private:
    std::size_t first_from(double seconds, bool is_passed) const;

    std::vector<passing> all_;  // by time
    std::optional<double> from_;
    bool is_from_passed_ = false;       // those at that very time
    std::optional<double> stopped_at_;  // behind its triggers
};

}  // namespace vistels
