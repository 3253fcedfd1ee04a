// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "formula/clip_filter.h"
#include "logger/markup_Button_Item.h"
#include "timeline/records/sxy_ROW.h"
#include "util/job.h"

namespace vistels {

// What the clips that pass a formula come to.
struct clip_tally {
    std::size_t passing = 0;
    std::size_t of = 0;           // clips in the rows that the formula names; without rows in all
    double seconds = 0;           // that the passing ones last
    std::optional<double> first;  // where the first of them starts, on the collection's clock

    bool operator==(const clip_tally&) const = default;
};

// What a button shows of it, by its "output_type": "count" (also any other), "duration", "percentage" or
// "first time"; empty where there is no first. Times are written as "output_time_format" says, which has as
// many parts as are wanted: "hh:mm:ss" (also when it is empty), "mm:ss", "ss", with ".f" for parts of a
// second; "remove_prefix_0s" leaves out zeros in front.
std::string output_text(const button_formula& shown, const clip_tally& tally);

// Tallies the clips of a timeline for several formulas at once, and again when the timeline has changed: only
// clips that are not the same any more are judged. Growing clips do not count. For one thread at a time.
class formula_tallies {
  public:
    explicit formula_tallies(const std::vector<std::string>& formulas);

    // One for each formula, in their order; nothing for one with a syntax error. Nothing at all when `work`
    // was cancelled. `rows` are those of a snapshot, which no edit changes.
    std::optional<std::vector<std::optional<clip_tally>>> count(const std::vector<row_pointer>& rows,
                                                                job& work);

  private:
    struct formula {
        parser_ROOT parsed;
        clip_filter filter;
    };
    struct judged_row {
        row_pointer row;
        std::vector<std::vector<bool>> passes;  // by formula, of its clips
        std::vector<clip_tally> tallies;        // by formula
    };

    struct row_clips;
    std::optional<judged_row> judge(const row_pointer& row, const judged_row* before, job& work);
    void judge(formula& by, const row_clips& clips, const std::vector<bool>* passed, judged_row& to);

    std::vector<formula> formulas_;
    std::unordered_map<shared_text, judged_row> rows_;
};

}  // namespace vistels
