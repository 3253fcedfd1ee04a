// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "timeline/records/clip_set.h"
#include "timeline/records/sxy_ROW.h"

namespace vistels {

// Which clips of some rows pass a filter; nothing is marked.
struct passing_clips {
    struct row_outcome {
        row_pointer row;
        std::size_t passing = 0;
    };
    clip_set clips;
    std::vector<row_outcome> rows;  // in their order
    std::size_t total = 0;          // clips
    std::size_t passing = 0;        // clips that pass
};

// The same, and in which clips and qualifiers the marks differ from that.
struct filter_outcome : passing_clips {
    // What must be changed, and to what (`passes`): 8 bytes each. The rows keep the records alive.
    template <class Record>
    class marked {
      public:
        marked() = default;
        marked(const Record& record, bool passes)
            : packed_(reinterpret_cast<std::uintptr_t>(&record) | std::uintptr_t{passes}) {}
        const Record& record() const {
            return *reinterpret_cast<const Record*>(packed_ & ~std::uintptr_t{1});
        }
        bool passes() const { return (packed_ & 1U) != 0; }

      private:
        std::uintptr_t packed_ = 0;  // records lie at even addresses
    };
    std::vector<marked<sxy_CLIP>> clip_marks;
    std::vector<marked<qual_ITEM>> qualifier_marks;
};

// Writes the marks of an outcome: clips and qualifiers are filtered in or not, the qualifiers' marks before
// become their previous ones. Takes time by the marks that differ, not by the clips. Clips that were marked
// by others since must be judged again afterwards. Any thread, one at a time.
void put_in_place(const filter_outcome& outcome);

// All clips of the rows pass and no qualifier is marked, as without a filter.
void unfilter(const std::vector<row_pointer>& rows);
void unfilter(const sxy_CLIP& clip);

// How many clips of the row are in the set.
std::size_t count_passing(const sxy_ROW& row, const clip_set& passing);

}  // namespace vistels
