// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/files/last_clip_end.h"

#include <algorithm>

namespace vistels {

last_clip_end::last_clip_end(timeline_document& document)
    : document_(document),
      changed_(document.changed.connect([this](const change_set& change) { follow(change); })) {}

last_clip_end::latest last_clip_end::look_through(const sxy_ROW& row) {
    latest found;
    const sxy_CLIP* last = nullptr;
    for (const auto& clip : row.clips()) {
        const double end = clip->secs_end();
        if (end <= found.end) continue;
        found.end = end;
        last = clip.get();
    }
    if (last) found.clip = last->id();
    return found;
}

double last_clip_end::seconds() const {
    double last = 0;
    for (const auto& row : document_.timeline().rows()) {
        auto known = known_.find(row->uuid());
        if (known == known_.end()) known = known_.emplace(row->uuid(), look_through(*row)).first;
        last = std::max(last, known->second.end);
    }
    return last;
}

void last_clip_end::follow(const change_set& change) {
    // Beyond that looking each up takes longer than looking through all.
    constexpr std::size_t most_clips = 1000;
    const bool is_everything = (change.kinds | change_set::others_changed) == change_set::everything;
    if (is_everything || change.clips.size() > most_clips) return known_.clear();
    if (change.kinds & change_set::rows_changed) {
        for (const auto& row : change.rows) known_.erase(row);
    }
    // A row whose last clip went or changed is looked through again.
    std::erase_if(known_, [&](const auto& one) {
        const auto& clip = one.second.clip;
        return !clip.empty() &&
               std::find(change.clips.begin(), change.clips.end(), clip) != change.clips.end();
    });
    for (const auto& clip : change.clips) {
        const auto place = document_.timeline().find_clip(clip);
        if (!place || place->is_live) continue;
        const auto known = known_.find(place->row);
        if (known == known_.end() || place->clip->secs_end() <= known->second.end) continue;
        known->second = {place->clip->secs_end(), clip};
    }
}

}  // namespace vistels
