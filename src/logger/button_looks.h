// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <unordered_map>

#include "timeline/form/point.h"
#include "util/colour_text.h"

namespace vistels {

// What a run makes of how buttons look; none of it is saved. By the buttons' UUIDs. One thread.
class button_looks {
  public:
    struct look {
        std::optional<colour> button_colour;
        std::optional<colour> mark_colour;
        int depth = 0;             // above 0: in front of the others, below: behind them
        std::deque<point> traces;  // where its field was pressed, the last one at the end
    };

    // Null: as it is stored.
    const look* of(const std::string& button) const {
        const auto found = looks_.find(button);
        return found == looks_.end() ? nullptr : &found->second;
    }
    void set_button_colour(const std::string& button, colour to) { looks_[button].button_colour = to; }
    void set_mark_colour(const std::string& button, colour to) { looks_[button].mark_colour = to; }
    void bring_to_front(const std::string& button) { looks_[button].depth = ++front_; }
    void send_to_back(const std::string& button) { looks_[button].depth = --back_; }
    // The last `most` are kept.
    void add_trace(const std::string& button, point place, std::size_t most) {
        auto& traces = looks_[button].traces;
        traces.push_back(place);
        while (traces.size() > most) traces.pop_front();
    }
    void clear_traces(const std::string& button) { looks_[button].traces.clear(); }

  private:
    std::unordered_map<std::string, look> looks_;
    int front_ = 0;
    int back_ = 0;
};

}  // namespace vistels
