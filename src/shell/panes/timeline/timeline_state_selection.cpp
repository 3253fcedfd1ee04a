// SPDX-License-Identifier: GPL-3.0-or-later
// What is selected on a timeline, and the way from clip to clip.
#include <algorithm>
#include <cmath>
#include <limits>
#include <optional>
#include <tuple>

#include "shell/panes/timeline/timeline_state.h"

namespace vistels {

std::vector<std::string> timeline_state::selected() const {
    std::vector<std::string> found;
    for (const timeline_row& row : rows_) {
        for (std::size_t position = 0; position < row.selected.size(); ++position) {
            if (const auto clip = clip_of(row, row.selected[position].index)) found.push_back(clip->id());
        }
    }
    return found;
}

std::size_t timeline_state::selected_count() const {
    std::size_t count = 0;
    for (const timeline_row& row : rows_) count += row.selected.size();
    return count;
}

void timeline_state::take_selection(const clip_selection::rows& touched) {
    rows_.take_selection(*view_, touched);
    rows_changed.emit();
    selection_changed.emit();
}

void timeline_state::select(const std::vector<std::string>& clips) {
    if (view_) view_->selection().select(clips);
}

void timeline_state::toggle(const std::string& clip) {
    if (view_) view_->selection().toggle(clip);
}

// A clip between that was filtered out is not meant.
void timeline_state::extend_to(const std::string& clip) {
    if (!view_) return;
    view_->selection().extend_to(clip, [this](const sxy_CLIP& one) { return verdicts().passes(one); });
}

void timeline_state::select_all() {
    if (!view_) return;
    view_->selection().select_where(
        [this](const sxy_CLIP& clip) { return !hides_filtered_out() || verdicts().passes(clip); });
}

void timeline_state::select_passing() {
    if (!view_) return;
    view_->selection().select_where([this](const sxy_CLIP& clip) { return verdicts().passes(clip); });
}

void timeline_state::select_rows(const std::vector<shared_text>& rows) {
    std::vector<std::string> found;
    for (const shared_text& wanted : rows) {
        const std::size_t index = rows_.row_with(wanted);
        if (index == rows_.size()) continue;
        for (const clip_track* track : {&rows_[index].shown, &rows_[index].dimmed}) {
            for (std::size_t at = 0; at < track->size(); ++at) {
                if (const auto clip = clip_of(rows_[index], (*track)[at].index)) found.push_back(clip->id());
            }
        }
    }
    select(found);
}

void timeline_state::read_again() {
    read_rows();
    selection_changed.emit();
}

void timeline_state::go_to(const std::string& clip) {
    const auto place = document_ ? document_->timeline().find_clip(clip) : std::nullopt;
    if (!place) return;
    select({clip});
    seek(place->clip->secs_start());
    show(clip);
}

void timeline_state::show(const std::string& clip) {
    const auto place = document_ ? document_->timeline().find_clip(clip) : std::nullopt;
    if (!place) return;
    if (!view_->selection().contains(*place->clip) || selected_count() != 1) select({clip});
    const double start = place->clip->secs_start();
    const double x = scale_.x_of(start);
    if (x < 0 || x > width_) scroll_to(start - width_ / 2 * scale_.seconds_per_pixel);
    const std::size_t index = rows_.row_with(place->row);
    if (index == rows_.size()) return;
    const timeline_row& row = rows_[index];
    if (row.top < first_y_) scroll_rows_to(row.top);
    if (row.top + row.height > first_y_ + rows_height_) scroll_rows_to(row.top + row.height - rows_height_);
}

std::string timeline_state::passing_clip_beside(int direction) const {
    // A clip that starts at the playhead is neither before nor after it.
    constexpr double beside_seconds = 0.02;
    // Where among all clips: by start, then by row and place in it.
    using place = std::tuple<double, std::size_t, std::uint32_t>;
    constexpr std::size_t beyond_rows = std::numeric_limits<std::size_t>::max();
    place from{playhead_ + direction * beside_seconds, direction > 0 ? beyond_rows : 0, 0};
    for (std::size_t row = 0; selected_count() == 1 && row < rows_.size(); ++row) {
        const clip_track& chosen = rows_[row].selected;
        if (chosen.size() == 0 || std::abs(chosen[0].start - playhead_) > beside_seconds) continue;
        from = {chosen[0].start, row, chosen[0].index};
    }
    std::optional<place> best;
    for (std::size_t row = 0; row < rows_.size(); ++row) {
        const clip_track& track = rows_[row].shown;
        const auto key = [&](std::size_t at) { return place{track[at].start, row, track[at].index}; };
        std::size_t at = track.first_starting(std::get<0>(from));
        if (direction > 0) {
            while (at < track.size() && key(at) <= from) ++at;
            if (at < track.size() && (!best || key(at) < *best)) best = key(at);
        } else {
            while (at < track.size() && key(at) < from) ++at;
            if (at > 0 && (!best || key(at - 1) > *best)) best = key(at - 1);
        }
    }
    const auto clip = best ? clip_of(rows_[std::get<1>(*best)], std::get<2>(*best)) : nullptr;
    return clip ? clip->id() : std::string();
}

}  // namespace vistels
