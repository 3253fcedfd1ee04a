// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <unordered_set>
#include <vector>

#include "app/event/view_kind.h"
#include "timeline/files/timeline_document.h"
#include "timeline/form/compact_text.h"
#include "timeline/records/clip_set.h"
#include "util/signal.h"

namespace vistels {

// What is selected in one view of a timeline. A clip that is taken away and comes back is selected as it was;
// growing clips never are. Clips are named by their UUIDs, and unknown ones passed over. Main thread.
class clip_selection {
  public:
    using rows = std::unordered_set<shared_text>;
    using wanted_clips = std::function<bool(const sxy_CLIP&)>;

    // The document must outlive it. The main one is made while no clip is marked.
    explicit clip_selection(timeline_document& document, view_kind kind = view_kind::main);
    clip_selection(const clip_selection&) = delete;
    clip_selection& operator=(const clip_selection&) = delete;

    bool contains(const sxy_CLIP& clip) const { return selected_.contains(clip); }
    // In row order.
    std::vector<clip_place> clips() const;

    // These alone.
    void select(const std::vector<std::string>& clips);
    void toggle(const std::string& clip);
    // From the clip that was selected last up to this one, when both are in one row; else this one alone.
    // Between the two those that `wanted` holds for.
    void extend_to(const std::string& clip, const wanted_clips& wanted);
    // All clips that `wanted` holds for.
    void select_where(const wanted_clips& wanted);

    // In these rows other clips are selected than before.
    signal<const rows&> changed;

  private:
    void clear(rows& touched);
    bool set(const clip_place& place, bool selected);
    void add(const std::string& clip, rows& touched);
    void take_back(const std::string& clip, const std::function<bool(const std::string&)>& is_chosen);
    void follow(const change_set& changes);

    timeline_document& document_;
    const bool is_main_;
    clip_set selected_;
    std::vector<compact_text> chosen_;      // the clips of the set that are there, and perhaps others
    std::unordered_set<std::string> gone_;  // selected ones that may come back
    std::string last_;                      // that a person selected
    connection changes_;
};

}  // namespace vistels
