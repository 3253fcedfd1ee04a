// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace vistels::demo {

// Numbers that look random and are the same for the same seed on every machine and with every library.
class seeded_random {
  public:
    explicit seeded_random(std::uint64_t seed) : state_(seed) {}

    std::uint64_t bits() {
        state_ += 0x9E3779B97F4A7C15u;
        std::uint64_t mixed = state_;
        mixed = (mixed ^ (mixed >> 30)) * 0xBF58476D1CE4E5B9u;
        mixed = (mixed ^ (mixed >> 27)) * 0x94D049BB133111EBu;
        return mixed ^ (mixed >> 31);
    }
    // From 0 to 1, 1 excluded.
    double share() { return static_cast<double>(bits() >> 11) * (1.0 / 9007199254740992.0); }
    double between(double low, double high) { return low + (high - low) * share(); }
    // From 0 to count - 1.
    std::size_t below(std::size_t count) { return static_cast<std::size_t>(bits() % count); }
    bool chance(double probability) { return share() < probability; }
    // -1 or 1.
    double side() { return chance(0.5) ? 1 : -1; }

    template <class Item>
    void shuffle(std::vector<Item>& items) {
        for (std::size_t left = items.size(); left > 1; --left)
            std::swap(items[left - 1], items[below(left)]);
    }

  private:
    std::uint64_t state_;
};

}  // namespace vistels::demo
