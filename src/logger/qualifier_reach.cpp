// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/qualifier_reach.h"

#include <algorithm>
#include <limits>

namespace vistels {

namespace {

// How long before the end of a clip a qualifier is put that was pressed behind it: within, not at the end.
constexpr double before_end_seconds = 0.01;

std::vector<std::string> growing_clips(const reach_view& view) {
    std::vector<std::string> clips;
    for (const auto& growing : view.timeline.live_clips()) {
        if (!view.is_blocked(growing)) clips.push_back(growing.clip->id());
    }
    for (const auto& clip : view.running) {
        const bool is_new = std::find(clips.begin(), clips.end(), clip) == clips.end();
        const auto place = is_new ? view.timeline.find_clip(clip) : std::nullopt;
        if (is_new && (!place || !view.is_blocked(*place))) clips.push_back(clip);
    }
    return clips;
}

// The clip that started last among those of the row that hold the time; null for none.
clip_pointer last_started_at(const reach_view& view, const sxy_ROW& row, double at) {
    const auto& clips = row.clips();
    const auto holds = [&](const clip_pointer& clip) {
        return clip->secs_end() > at && !view.is_blocked({clip, row.uuid()});
    };
    for (std::size_t index = clips.first_starting_at(at);
         index < clips.size() && clips[index]->secs_start() <= at; ++index) {
        if (holds(clips[index])) return clips[index];
    }
    clip_pointer last;
    for (std::size_t index = clips.first_ending_at(at); index < clips.size();
         index = clips.first_ending_at(at, index + 1)) {
        const auto& clip = clips[index];
        if (clip->secs_start() >= at) break;
        if (holds(clip)) last = clip;
    }
    return last;
}

std::vector<std::string> clips_holding(const reach_view& view, double at) {
    std::vector<std::string> clips;
    for (const auto& row : view.timeline.rows()) {
        if (const auto clip = last_started_at(view, *row, at)) clips.push_back(clip->id());
    }
    return clips;
}

// The clip that is nearest to a time that no clip holds.
class nearest_clip {
  public:
    nearest_clip(const reach_view& view, double at) : view_(view), at_(at) {
        for (const auto& row : view.timeline.rows()) look_through(*row);
    }
    clip_pointer found;
    double way = std::numeric_limits<double>::infinity();  // seconds

  private:
    // Of two that are as near the one that ended counts: who presses is late, not early.
    void look_through(const sxy_ROW& row) {
        const double margin = view_.settings.margin_padding_seconds;
        const auto& clips = row.clips();
        for (std::size_t index = clips.first_ending_at(at_ - margin); index < clips.size();
             index = clips.first_ending_at(at_ - margin, index + 1)) {
            const auto& clip = clips[index];
            const double to_start = clip->secs_start() - at_;
            if (to_start > margin || to_start >= way) break;
            const double past_end = at_ - clip->secs_end();
            const double seconds = std::max({to_start, past_end, 0.0});
            if (seconds > margin || seconds > way || (seconds == way && to_start > 0)) continue;
            if (view_.is_blocked({clip, row.uuid()})) continue;
            found = clip;
            way = seconds;
        }
    }
    const reach_view& view_;
    const double at_;
};

}  // namespace

stamped_clips find_stamped_clips(const reach_view& view, double at) {
    stamped_clips stamped{growing_clips(view), at};
    if (!stamped.clips.empty()) return stamped;
    stamped.clips = clips_holding(view, at);
    if (!stamped.clips.empty()) return stamped;
    if (view.settings.bring_qualifiers_inside_clip) {
        if (const auto nearest = nearest_clip(view, at).found) {
            const double start = nearest->secs_start();
            const double inside = std::max(start, nearest->secs_end() - before_end_seconds);
            return {{nearest->id()}, std::clamp(at, start, inside)};
        }
    }
    for (auto last = view.made.rbegin(); last != view.made.rend(); ++last) {
        const auto place = view.timeline.find_clip(*last);
        if (!place || place->is_live || view.is_blocked(*place)) continue;
        const double ago = at - place->clip->secs_end();
        if (ago >= 0 && ago <= longest_way_back_seconds) stamped.clips.push_back(*last);
        break;
    }
    return stamped;
}

}  // namespace vistels
