// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/longest_clips.h"

#include <algorithm>

namespace vistels {

longest_clips::longest_clips(timeline_document& document)
    : document_(document),
      changed_(document.changed.connect([this](const change_set& change) { follow(change); })) {}

double longest_clips::of(const sxy_ROW& row) const {
    const auto [known, is_new] = known_.try_emplace(row.uuid(), 0.0);
    if (!is_new) return known->second;
    for (const auto& clip : row.clips()) {
        known->second = std::max(known->second, clip->secs_end() - clip->secs_start());
    }
    return known->second;
}

void longest_clips::follow(const change_set& change) {
    if ((change.kinds | change_set::others_changed) == change_set::everything) return known_.clear();
    const auto& timeline = document_.timeline();
    for (const auto& clip : change.clips) note(timeline, clip);
}

void longest_clips::note(const sxy_DATA_root& timeline, const std::string& clip) {
    const auto place = timeline.find_clip(clip);
    if (!place || place->is_live) return;
    const auto known = known_.find(place->row);
    if (known == known_.end()) return;
    known->second = std::max(known->second, place->clip->secs_end() - place->clip->secs_start());
}

}  // namespace vistels
