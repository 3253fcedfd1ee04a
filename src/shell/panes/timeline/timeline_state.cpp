// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/timeline/timeline_state.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "timeline/edits/clip_edits.h"
#include "timeline/edits/clip_operations.h"
#include "timeline/edits/row_compaction.h"
#include "util/clock.h"

namespace vistels {
namespace {

constexpr double least_reach_seconds = 10;
constexpr double follow_share = 0.85;

// "Attack + Defence": what a row that stands for these is called.
std::string name_of_rows(const timeline_rows& rows, const std::vector<shared_text>& chosen) {
    constexpr std::size_t most_named = 3;
    std::string name;
    std::size_t named = 0;
    for (const timeline_row& row : rows) {
        if (std::find(chosen.begin(), chosen.end(), row.uuid) == chosen.end()) continue;
        if (++named > most_named) continue;
        name += (named > 1 ? " + " : "") + row.name.toStdString();
    }
    if (named > most_named) name += " + " + std::to_string(named - most_named);
    return name;
}

}  // namespace

timeline_state::timeline_state() {
    theme_changed_ = theme::changed().connect([this] { read_rows(); });
}

void timeline_state::set_timeline(clip_view* view, transport* playing) {
    view_ = view;
    document_ = view ? &view->document() : nullptr;
    playing_ = playing;
    changed_.disconnect();
    selection_.disconnect();
    last_end_.reset();
    first_y_ = 0;
    fits_ = true;
    if (view_) {
        last_end_.emplace(*document_);
        changed_ = document_->changed.connect([this](const change_set& change) { take_change(change); });
        selection_ = view_->selection().changed.connect(
            [this](const clip_selection::rows& touched) { take_selection(touched); });
    }
    playhead_ = playing_ ? playing_->shown_time() : 0;
    read_rows();
    selection_changed.emit();
}

timeline_reach timeline_state::reach() const {
    return {start_seconds_, end_seconds_, width_};
}

void timeline_state::set_width(double pixels) {
    if (pixels == width_) return;
    width_ = std::max(pixels, 1.0);
    scale_ = fits_ ? timeline_scale{start_seconds_, reach().fit_seconds_per_pixel()}
                   : scale_within(reach(), scale_);
    scale_changed.emit();
}

void timeline_state::set_reach(double start_seconds, double end_seconds) {
    given_start_seconds_ = start_seconds;
    given_end_seconds_ = end_seconds;
    grow_reach();
}

// The reach holds what was given, all clips and the playhead.
void timeline_state::grow_reach() {
    const double last = last_end_ ? last_end_->seconds() : 0;
    const double end = std::max({given_end_seconds_, last, playhead_});
    start_seconds_ = std::min(given_start_seconds_, playhead_);
    if (document_) {
        for (const auto& row : document_->timeline().rows()) {
            const auto& clips = row->clips();
            if (clips.size() > 0) start_seconds_ = std::min(start_seconds_, clips[0]->secs_start());
        }
    }
    end_seconds_ = std::max(end, start_seconds_ + least_reach_seconds);
    const timeline_scale before = scale_;
    scale_ = fits_ ? timeline_scale{start_seconds_, reach().fit_seconds_per_pixel()}
                   : scale_within(reach(), scale_);
    if (!(scale_ == before)) scale_changed.emit();
}

void timeline_state::set_scale(const timeline_scale& wanted) {
    const timeline_scale made = scale_within(reach(), wanted);
    fits_ = made.seconds_per_pixel >= reach().fit_seconds_per_pixel();
    const double x = made.x_of(playhead_);
    follows_ = x >= 0 && x <= width_;
    if (made == scale_) return;
    scale_ = made;
    scale_changed.emit();
}

void timeline_state::zoom(double factor, double x) {
    set_scale(scale_zoomed(reach(), scale_, factor, x));
}

double timeline_state::zoom_anchor() const {
    const double x = scale_.x_of(playhead_);
    return x >= 0 && x <= width_ ? x : width_ / 2;
}

void timeline_state::zoom_in_place(double factor) {
    zoom(factor, zoom_anchor());
}

void timeline_state::zoom_to_fit() {
    set_scale({start_seconds_, reach().fit_seconds_per_pixel()});
}

void timeline_state::scroll_to(double seconds) {
    set_scale({seconds, scale_.seconds_per_pixel});
}

void timeline_state::set_compact(bool compact) {
    if (compact == display_.is_compact) return;
    display_.is_compact = compact;
    read_rows();
}

void timeline_state::set_hides_filtered_out(bool hides) {
    if (hides == display_.hides_filtered_out) return;
    display_.hides_filtered_out = hides;
    read_again();
}

void timeline_state::set_is_filtered(bool filtered) {
    if (filtered == is_filtered_) return;
    is_filtered_ = filtered;
    rows_changed.emit();
}

void timeline_state::take_verdicts() {
    if (!view_ || !rows_.take_verdicts(*view_)) return;
    rows_changed.emit();
    if (display_.hides_filtered_out) selection_changed.emit();
}

void timeline_state::set_rows_height(int pixels) {
    rows_height_ = pixels;
    scroll_rows_to(first_y_);
}

void timeline_state::scroll_rows_to(int y) {
    const int last = std::max(0, rows_.total_height() - rows_height_);
    const int made = std::clamp(y, 0, last);
    if (made == first_y_) return;
    first_y_ = made;
    rows_scrolled.emit();
}

void timeline_state::tick() {
    if (!playing_) return;
    const double now = playing_->shown_time();
    const bool plays = playing_->is_playing();
    if (plays && !was_playing_) follows_ = true;
    was_playing_ = plays;
    if (now == playhead_) return;
    const double jump = std::abs(now - playhead_);
    playhead_ = now;
    if (now > end_seconds_ || now < start_seconds_) grow_reach();
    // A jump is somebody's wish to be there; a step of playing is not.
    if (jump > 1) follows_ = true;
    follow_playhead();
    playhead_moved.emit();
}

void timeline_state::follow_playhead() {
    const double x = scale_.x_of(playhead_);
    if (x >= 0 && x <= width_ * follow_share) follows_ = true;
    if (!follows_) return;
    timeline_scale wanted = scale_;
    if (x < 0) {
        wanted.first_seconds = playhead_ - (1 - follow_share) * width_ * scale_.seconds_per_pixel;
    } else if (is_playing() || x > width_) {
        wanted.first_seconds = first_seconds_following(scale_, width_, playhead_, follow_share);
    }
    wanted = scale_within(reach(), wanted);
    if (wanted == scale_) return;
    scale_ = wanted;
    scale_changed.emit();
}

void timeline_state::seek(double seconds) {
    if (!playing_) return;
    playing_->seek(std::clamp(seconds, start_seconds_, end_seconds_));
    tick();
}

void timeline_state::scrub(double seconds) {
    if (!playing_) return;
    playing_->scrub(std::clamp(seconds, start_seconds_, end_seconds_));
    tick();
}

bool timeline_state::apply(timeline_edit edit) {
    if (!document_ || edit.operations.empty()) return false;
    const auto done = document_->apply(std::move(edit));
    if (!done) refused.emit(done.error());
    return bool(done);
}

void timeline_state::delete_selected() {
    const std::vector<std::string> clips = selected();
    if (clips.empty()) return;
    if (apply(plan_delete_clips(document_->timeline(), clips, std::string(), seconds_since_1970()))) {
        selection_changed.emit();
    }
}

bool timeline_state::apply(result<timeline_edit> planned) {
    if (planned) return apply(std::move(planned).value());
    refused.emit(planned.error());
    return false;
}

void timeline_state::merge_selected() {
    if (!document_) return;
    if (apply(plan_clips_Merge(document_->timeline(), selected(), stamp_now()))) selection_changed.emit();
}

void timeline_state::duplicate_selected() {
    const std::vector<std::string> clips = selected();
    if (clips.empty()) return;
    const auto first = document_->timeline().find_clip(clips.front());
    double start = first->clip->secs_start();
    double end = first->clip->secs_end();
    for (const auto& clip : clips) {
        const auto place = document_->timeline().find_clip(clip);
        start = std::min(start, place->clip->secs_start());
        end = std::max(end, place->clip->secs_end());
    }
    copy(clips, end - start, 0);
}

void timeline_state::split_selected() {
    if (document_) apply(plan_split_overlap(document_->timeline(), selected()));
}

void timeline_state::trim_selected(bool start, double seconds) {
    const std::vector<std::string> clips = selected();
    if (clips.empty()) return;
    const auto here = std::optional(seconds);
    const std::optional<double> as_it_is;
    apply(plan_clips_Trim_Mark_in_Mark_Out(document_->timeline(), clips, start ? here : as_it_is,
                                           start ? as_it_is : here));
}

std::vector<shared_text> timeline_state::compact_rows(const std::vector<shared_text>& rows) {
    if (!document_) return {};
    return apply_to_rows(plan_compact_rows(document_->timeline(), rows, name_of_rows(rows_, rows)));
}

// One edit each, since a row that was expanded moves those below it.
std::vector<shared_text> timeline_state::expand_rows(const std::vector<shared_text>& rows) {
    std::vector<shared_text> made;
    for (const shared_text& row : rows) {
        const auto record = document_ ? document_->timeline().row(row) : nullptr;
        // Among several only those are meant that can be expanded.
        if (!record || (rows.size() > 1 && !is_compacted(*record))) continue;
        const auto more = apply_to_rows(plan_expand_row(document_->timeline(), row));
        made.insert(made.end(), more.begin(), more.end());
    }
    return made;
}

std::vector<shared_text> timeline_state::apply_to_rows(result<timeline_edit> planned) {
    std::vector<shared_text> made;
    if (planned) {
        for (const auto& one : planned.value().operations) {
            if (const auto* insert = std::get_if<operation::insert_row>(&one))
                made.push_back(insert->row->uuid());
        }
    }
    if (!apply(std::move(planned))) return {};
    return made;
}

void timeline_state::set_snaps(bool snaps) {
    snaps_ = snaps;
}

void timeline_state::take_change(const change_set& change) {
    const std::size_t selected_before = selected_count();
    rows_.update(*view_, change, theme::current());
    scroll_rows_to(first_y_);
    grow_reach();
    rows_changed.emit();
    if (selected_count() != selected_before) selection_changed.emit();
}

void timeline_state::set_unsaved_growing(std::vector<clip_place> growing) {
    if (!document_) return;
    rows_.set_unsaved(document_->timeline(), std::move(growing));
    rows_changed.emit();
}

void timeline_state::set_triggers(std::vector<button_trigger> all) {
    if (!document_) return;
    rows_.set_triggers(std::move(all));
    rows_changed.emit();
}

std::optional<double> timeline_state::clock_of_row(const timeline_row& row) const {
    return clock_of(row, playhead_);
}

void timeline_state::read_rows() {
    if (document_) {
        rows_.read(*view_, theme::current(), display_);
    } else {
        rows_.clear();
    }
    scroll_rows_to(first_y_);
    grow_reach();
    rows_changed.emit();
}

}  // namespace vistels
