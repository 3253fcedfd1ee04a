// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "formula/parser_ROOT.h"
#include "timeline/records/sxy_ROW.h"
#include "util/job.h"

namespace vistels {

// What a filter found out about all clips of some rows, with nothing changed yet.
struct filter_outcome {
    struct row_outcome {
        row_pointer row;
        std::size_t passing = 0;
    };
    std::vector<row_outcome> rows;  // in their order
    std::size_t total = 0;          // clips
    std::size_t passing = 0;        // clips that pass

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
    std::vector<marked<sxy_CLIP>> clips;
    std::vector<marked<qual_ITEM>> qualifiers;
};

// Writes the marks of an outcome: clips and qualifiers are filtered in or not, the qualifiers' marks before
// become their previous ones, and each row knows how many of its clips pass. Takes time by the marks that
// differ, not by the clips. Clips that were marked by others since must be judged again afterwards. Any
// thread, one at a time.
void put_in_place(const filter_outcome& outcome);

// All clips of the rows pass and no qualifier is marked, as without a filter.
void unfilter(const std::vector<row_pointer>& rows);
void unfilter(const sxy_CLIP& clip);

// How many clips of the row are filtered in, by their marks; the row's count is set to it.
std::size_t count_passing(const sxy_ROW& row);

// Judges clips by one formula. A formula with a syntax error lets nothing pass and leaves marks as they are.
//
// What it once compared it remembers: each different name or category is looked at once a word. For one
// thread at a time; clips and rows that it is given must be on a timeline or a snapshot, and any thread may
// set their marks meanwhile.
class clip_filter {
  public:
    explicit clip_filter(const parser_ROOT& formula);
    explicit clip_filter(std::string_view text) : clip_filter(parser_ROOT::for_filter(text)) {}
    ~clip_filter();
    clip_filter(clip_filter&&) noexcept;
    clip_filter& operator=(clip_filter&&) noexcept;

    bool has_error() const;
    // Whether a verdict depends on the name or the category of the clip's row.
    bool looks_at_rows() const;

    // Whether the clip passes. `row`: the row that it is in, or null.
    bool judge(const sxy_CLIP& clip, const sxy_ROW* row);
    // The same, and sets the marks of the clip and its qualifiers; their previous marks stay.
    bool judge_and_mark(const sxy_CLIP& clip, const sxy_ROW* row);
    // All clips of a row likewise, and the row's count.
    void judge_and_mark(const sxy_ROW& row);
    // The same without marks on the clip: instead those of the words (FLAG_Word_as_present) and the results
    // of the nodes are put into `formula`, which this filter was made from. They stay 0 with a syntax error.
    bool explain(const sxy_CLIP& clip, const sxy_ROW* row, parser_ROOT& formula);

    // All clips of the rows; nothing when `work` was cancelled. The marks stay as they are.
    std::optional<filter_outcome> judge_all(const std::vector<row_pointer>& rows, job& work);
    // The same, and sets the marks at once, previous ones too. Counts in the outcome, no lists. Marks are as
    // they were, or some set already, when `work` was cancelled.
    std::optional<filter_outcome> judge_and_mark_all(const std::vector<row_pointer>& rows, job& work);

  private:
    struct engine;
    std::unique_ptr<engine> engine_;
};

}  // namespace vistels
