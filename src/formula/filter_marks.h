// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>

#include "formula/filter_outcome.h"

namespace vistels {

// What becomes of the marks of clips and qualifiers while a filter judges them: each kind has clip() and
// qualifier(), which are told of a record and whether it is to be marked.

// Writes marks, the qualifiers' earlier ones as their previous.
struct marks_written {
    static void clip(const sxy_CLIP& clip, bool passes) { clip.set_filtered_in(passes); }
    static void qualifier(const qual_ITEM& item, bool marked) {
        item.set_filter_marks(marked, item.filtered_in_now());
    }
};

// Lists marks for later.
struct marks_listed {
    void clip(const sxy_CLIP& clip, bool passes) const { found->clip_marks.emplace_back(clip, passes); }
    void qualifier(const qual_ITEM& item, bool marked) const {
        found->qualifier_marks.emplace_back(item, marked);
    }
    filter_outcome* found;
};

// Hands on the marks that differ, some hundreds at a time: whether one differs cannot be foreseen, so each is
// noted without asking, and the next one takes its place when it does not.
template <class Sink>
class marks_that_differ {
  public:
    explicit marks_that_differ(Sink sink) : sink_(sink) {}
    ~marks_that_differ() { hand_on(); }
    marks_that_differ(const marks_that_differ&) = delete;
    marks_that_differ& operator=(const marks_that_differ&) = delete;

    void clip(const sxy_CLIP& clip, bool passes) {
        clips_[clip_count_] = {clip, passes};
        clip_count_ += clip.filtered_in_now() != passes ? 1 : 0;
        if (clip_count_ == clips_.size()) hand_on();
    }
    void qualifier(const qual_ITEM& item, bool marked) {
        qualifiers_[qualifier_count_] = {item, marked};
        const bool was = item.filtered_in_now();
        const bool differs = (was != marked) | (item.filtered_in_previous_now() != was);
        qualifier_count_ += differs ? 1 : 0;
        if (qualifier_count_ == qualifiers_.size()) hand_on();
    }

  private:
    void hand_on() {
        for (std::size_t n = 0; n < clip_count_; ++n) sink_.clip(clips_[n].record(), clips_[n].passes());
        for (std::size_t n = 0; n < qualifier_count_; ++n) {
            sink_.qualifier(qualifiers_[n].record(), qualifiers_[n].passes());
        }
        clip_count_ = qualifier_count_ = 0;
    }

    static constexpr std::size_t room = 256;
    Sink sink_;
    std::array<filter_outcome::marked<sxy_CLIP>, room> clips_;
    std::array<filter_outcome::marked<qual_ITEM>, room> qualifiers_;
    std::size_t clip_count_ = 0;
    std::size_t qualifier_count_ = 0;
};

// Those of a clip that is judged again by the filter in force.
struct marks_of_one {
    static void clip(const sxy_CLIP& clip, bool passes) {
        if (clip.filtered_in_now() != passes) clip.set_filtered_in(passes);
    }
    static void qualifier(const qual_ITEM& item, bool marked) {
        if (item.filtered_in_now() != marked) item.set_filtered_in(marked);
    }
};

struct no_marks {
    static void clip(const sxy_CLIP&, bool) {}
    static void qualifier(const qual_ITEM&, bool) {}
};

}  // namespace vistels
