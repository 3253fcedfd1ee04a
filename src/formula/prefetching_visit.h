// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <array>
#include <cstddef>

#include "timeline/records/clip_list.h"
#include "util/prefetch.h"

namespace vistels {

// Visits the clips of a list in order, with their qualifiers at hand.
//
// Clips lie all over the memory, each some steps away from its qualifiers: to reach them takes many times as
// long as to look at them. So each step of the way is asked for some clips ahead, and memory answers for many
// at once.
class prefetching_visit {
  public:
    explicit prefetching_visit(const clip_list& clips) : clips_(clips) {}

    // Visits the next clips, a thousand or so; returns how many, 0 at the end.
    template <class Visit>
    std::size_t visit_some(const Visit& visit) {
        std::size_t count = 0;
        while (at_ < clips_.size() && count < block_.size()) {
            const auto run = clips_.run_from(at_);
            const std::size_t taken = std::min(run.size(), block_.size() - count);
            for (const auto& clip : run.first(taken)) block_[count++] = clip.get();
            at_ += taken;
        }
        for (std::size_t step = 0; count > 0 && step < count + 3 * look_ahead; ++step) {
            if (step < count) prefetch_all(*block_[step]);
            prefetch_qualifiers(step, count);
            if (step >= 3 * look_ahead) visit(*block_[step - 3 * look_ahead]);
        }
        return count;
    }

  private:
    // Long enough for memory to answer, few enough to stay in the first cache.
    static constexpr std::size_t look_ahead = 8;

    // What is looked at may begin in one line of the cache and end in the next.
    template <class Record>
    static void prefetch_all(const Record& record) {
        prefetch(record.first_looked_at());
        prefetch(record.last_looked_at());
    }

    void prefetch_qualifiers(std::size_t step, std::size_t count) const {
        if (step >= look_ahead && step - look_ahead < count) {
            if (const auto* all = block_[step - look_ahead]->qualifiers_in_place()) prefetch_all(*all);
        }
        if (step >= 2 * look_ahead && step - 2 * look_ahead < count) {
            const auto* all = block_[step - 2 * look_ahead]->qualifiers_in_place();
            if (all == nullptr) return;
            for (const qual_ITEM& item : *all) prefetch_all(item);
        }
    }

    const clip_list& clips_;
    std::size_t at_ = 0;
    std::array<const sxy_CLIP*, 1024> block_;
};

}  // namespace vistels
