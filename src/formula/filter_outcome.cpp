// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/filter_outcome.h"

#include "formula/filter_marks.h"
#include "formula/prefetching_visit.h"
#include "util/prefetch.h"

namespace vistels {

namespace {

// Of a list: what it writes to must lie in the cache when its turn comes.
constexpr std::size_t write_ahead = 16;

}  // namespace

void put_in_place(const filter_outcome& outcome) {
    const auto each = [](const auto& list, const auto& mark) {
        for (std::size_t at = 0; at < list.size(); ++at) {
            if (at + write_ahead < list.size()) prefetch(list[at + write_ahead].record().first_looked_at());
            mark(list[at].record(), list[at].passes());
        }
    };
    each(outcome.clip_marks, [](const sxy_CLIP& clip, bool passes) { clip.set_filtered_in(passes); });
    each(outcome.qualifier_marks,
         [](const qual_ITEM& item, bool passes) { item.set_filter_marks(passes, item.filtered_in_now()); });
}

std::size_t count_passing(const sxy_ROW& row, const clip_set& passing) {
    std::size_t count = 0;
    for (std::size_t at = 0; at < row.clips().size();) {
        const auto run = row.clips().run_from(at);
        for (const auto& clip : run) prefetch(clip->first_looked_at());
        for (const auto& clip : run) count += passing.contains(*clip) ? 1 : 0;
        at += run.size();
    }
    return count;
}

namespace {

template <class Marks>
void unfilter_one(const sxy_CLIP& clip, Marks& marks) {
    marks.clip(clip, true);
    const auto* all = clip.qualifiers_in_place();
    if (all == nullptr) return;
    for (const qual_ITEM& item : *all) marks.qualifier(item, false);
}

}  // namespace

void unfilter(const sxy_CLIP& clip) {
    marks_of_one marks;
    unfilter_one(clip, marks);
}

void unfilter(const std::vector<row_pointer>& rows) {
    marks_that_differ marks(marks_written{});
    for (const auto& row : rows) {
        prefetching_visit clips(row->clips());
        while (clips.visit_some([&](const sxy_CLIP& clip) { unfilter_one(clip, marks); }) > 0) {
        }
    }
}

}  // namespace vistels
