// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <utility>

#include "formula/clip_filter.h"

namespace vistels {

// What the filter of one view of a timeline lets through; without a filter every clip passes. One thread.
class clip_verdicts {
  public:
    bool is_on() const { return filter_ != nullptr; }
    bool passes(const sxy_CLIP& clip) const { return !filter_ || passing_.contains(clip); }
    // Whether it is one of the qualifiers that the filter asks for.
    bool marks(const qual_ITEM& qualifier) const { return filter_ && filter_->meets(qualifier); }
    // The clips that pass, and perhaps some that are gone; null: every clip.
    const clip_set* passing() const { return filter_ ? &passing_ : nullptr; }

    // Null: no filter.
    clip_filter* filter() const { return filter_.get(); }
    void set(std::shared_ptr<clip_filter> filter, clip_set passing) {
        filter_ = std::move(filter);
        passing_ = std::move(passing);
    }
    void clear() { set(nullptr, {}); }
    // For single verdicts that come later.
    clip_set& kept() { return passing_; }

  private:
    std::shared_ptr<clip_filter> filter_;
    clip_set passing_;
};

}  // namespace vistels
