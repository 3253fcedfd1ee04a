// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace vistels {

// Decides at random which buttons are pressed and how long each is held: in every cycle some of those that
// are up, each once. Half of the presses last less than a cycle, none more than eight. The same seed and
// calls give the same presses. Seconds are those of any clock that does not go back. One thread.
class random_presses {
  public:
    explicit random_presses(std::uint32_t seed) : random_(seed) {}

    // The buttons that are pressed at `now`: `count` of those that are up, or all. A press of one of them
    // that was still to end is forgotten.
    std::vector<std::string> begin_cycle(std::vector<std::string> up, std::size_t count, double now,
                                         double cycle_seconds);
    // When the next press ends; nothing while none lasts.
    std::optional<double> next_end() const;
    // The buttons whose presses have ended by `now`, in the order in which they did; each is told once.
    std::vector<std::string> take_ended(double now);
    // Those of all presses that last, which end now.
    std::vector<std::string> take_all();

    // A number from 0 to below `count`, which is above 0.
    std::size_t below(std::size_t count) { return random_() % count; }

    static constexpr double most_cycles = 8;

  private:
    struct lasting_press {
        std::string button;
        double end = 0;
    };

    std::mt19937 random_;
    std::vector<lasting_press> lasting_;  // by end
};

}  // namespace vistels
