// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <optional>
#include <string_view>
#include <vector>

#include "formula/filter_outcome.h"
#include "formula/parser_ROOT.h"
#include "timeline/records/clip_set.h"
#include "timeline/records/sxy_ROW.h"
#include "util/job.h"

namespace vistels {

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
    // All clips of a row likewise, into the set.
    void judge(const sxy_ROW& row, clip_set& passing);
    void judge_and_mark(const sxy_ROW& row, clip_set& passing);
    // Whether it is a qualifier's name or category that a word asks for: what its mark says.
    bool meets(const qual_ITEM& qualifier);
    // As judge() for one clip. The marks of the words (FLAG_Word_as_present) and the results of the nodes are
    // put into `formula`, which this filter was made from; they stay 0 with a syntax error.
    bool explain(const sxy_CLIP& clip, const sxy_ROW* row, parser_ROOT& formula);

    // All clips of the rows, of a snapshot or as they are; nothing when `work` was cancelled.
    std::optional<passing_clips> passing(const std::vector<row_pointer>& rows, job& work);
    // The same with the marks that differ, which stay as they are.
    std::optional<filter_outcome> passing_and_marks(const std::vector<row_pointer>& rows, job& work);

  private:
    struct engine;
    std::unique_ptr<engine> engine_;
};

}  // namespace vistels
