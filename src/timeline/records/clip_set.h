// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "timeline/records/sxy_CLIP.h"

namespace vistels {

// A set of clips, a bit for each by its number: what a view of a timeline lets through, or what is selected
// in it. A clip that an edit changed is still the same clip, and so is one that was taken away and comes
// back. A million clips take 125 kB. A value, for one thread at a time.
class clip_set {
  public:
    bool contains(const sxy_CLIP& clip) const {
        const std::uint32_t at = clip.number_now() - first_;
        return at / 64 < words_.size() && (words_[at / 64] >> (at % 64) & 1U) != 0;
    }
    void put(const sxy_CLIP& clip, bool is_in) {
        const std::uint32_t number = clip.number();
        if (number - first_ >= words_.size() * 64) make_room(number);
        const std::uint32_t at = number - first_;
        std::uint64_t& word = words_[at / 64];
        word = (word & ~(std::uint64_t{1} << (at % 64))) | (std::uint64_t{is_in} << (at % 64));
    }

  private:
    void make_room(std::uint32_t number);

    std::vector<std::uint64_t> words_;
    std::uint32_t first_ = 0;  // the number of the first bit
};

}  // namespace vistels
