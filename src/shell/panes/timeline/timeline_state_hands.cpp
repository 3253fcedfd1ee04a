// SPDX-License-Identifier: GPL-3.0-or-later
// What a hand does to clips on a timeline: where a drag holds, and the edits that it ends in.
#include <algorithm>
#include <cmath>
#include <utility>

#include "shell/panes/timeline/timeline_state.h"
#include "timeline/edits/clip_moving.h"
#include "timeline/edits/clip_operations.h"
#include "util/clock.h"

namespace vistels {

namespace {

constexpr double snap_pixels = 6;
constexpr double second_pixels = 4 * snap_pixels;  // whole seconds hold where they are no nearer than this

}  // namespace

std::optional<double> timeline_state::snap_to(double seconds, const snap_sides& sides) const {
    const double reach_seconds = snap_pixels * scale_.seconds_per_pixel;
    std::optional<double> nearest;
    double nearest_distance = reach_seconds;
    const auto consider = [&](double edge) {
        const double distance = std::abs(edge - seconds);
        if (distance > nearest_distance) return;
        nearest = edge;
        nearest_distance = distance;
    };
    for (const timeline_row& row : rows_) {
        const clip_track& track = row.shown;
        for (std::size_t at = track.first_reaching(seconds - reach_seconds); at < track.size(); ++at) {
            if (track[at].start > seconds + reach_seconds) break;
            const auto clip = clip_of(row, track[at].index);
            if (!clip || clip->id() == sides.moving_clip) continue;
            if (sides.selected_move && view_->selection().contains(*clip)) continue;
            consider(track[at].start);
            consider(track[at].end);
        }
    }
    consider(sides.playhead.value_or(playhead_));  // last, so that it wins when equally near
    if (!nearest && 1 / scale_.seconds_per_pixel >= second_pixels) consider(std::round(seconds));
    return nearest;
}

edit_stamp timeline_state::stamp_now() const {
    return {document_->author(), seconds_since_1970()};
}

bool timeline_state::may_show_moment() const {
    return playing_ && !is_playing() &&
           std::all_of(rows_.begin(), rows_.end(), [](const timeline_row& row) { return row.live.empty(); });
}

std::vector<shared_text> timeline_state::row_order() const {
    std::vector<shared_text> order;
    for (const timeline_row& row : rows_) order.push_back(row.uuid);
    return order;
}

void timeline_state::move(const std::vector<std::string>& clips, double seconds, int rows) {
    if (document_) apply(plan_move_clips(document_->timeline(), clips, seconds, row_order(), rows));
}

void timeline_state::copy(const std::vector<std::string>& clips, double later_by, int rows) {
    if (!document_) return;
    auto edit = plan_duplicate_clips(document_->timeline(), clips, later_by, stamp_now());
    const auto order = row_order();
    if (edit) {
        for (auto& one : edit.value().operations) {
            auto* insert = std::get_if<operation::insert_clip>(&one);
            const auto at = insert ? std::find(order.begin(), order.end(), insert->row) : order.end();
            const auto to = (at - order.begin()) + rows;
            if (at == order.end() || to < 0 || to >= static_cast<std::ptrdiff_t>(order.size())) continue;
            insert->row = order[static_cast<std::size_t>(to)];
        }
    }
    apply_and_select(std::move(edit));
}

void timeline_state::trim_edges(const std::vector<std::string>& clips, double starts_by, double ends_by) {
    if (document_) apply(plan_trim_edges(document_->timeline(), clips, starts_by, ends_by));
}

void timeline_state::roll(const std::string& before, const std::string& after, double seconds) {
    if (document_) apply(plan_roll_joint(document_->timeline(), before, after, seconds));
}

void timeline_state::draw(const shared_text& row, double start, double end) {
    if (document_) apply_and_select(plan_draw_clip(document_->timeline(), row, start, end));
}

void timeline_state::split_at_playhead() {
    if (document_) apply(plan_split_at(document_->timeline(), selected(), playhead_, stamp_now()));
}

std::optional<property_dictionary> timeline_state::copied() {
    const auto clips = selected();
    if (!document_ || clips.empty()) return std::nullopt;
    auto made = copied_clips(document_->timeline(), clips);
    if (!made) {
        refused.emit(made.error());
        return std::nullopt;
    }
    return std::move(made).value();
}

void timeline_state::paste(const property_dictionary& clips) {
    if (document_) apply_and_select(plan_paste(document_->timeline(), clips, playhead_, stamp_now()));
}

// What it brings is selected.
void timeline_state::apply_and_select(result<timeline_edit> planned) {
    std::vector<std::string> made;
    if (planned) {
        for (const auto& one : planned.value().operations) {
            if (const auto* insert = std::get_if<operation::insert_clip>(&one))
                made.push_back(insert->clip->id());
        }
    }
    if (apply(std::move(planned))) select(made);
}

}  // namespace vistels
