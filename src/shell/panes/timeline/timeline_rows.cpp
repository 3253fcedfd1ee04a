// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/timeline/timeline_rows.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "shell/panes/timeline/timeline_metrics.h"
#include "timeline/edits/row_compaction.h"
#include "util/colour_text.h"

namespace vistels {
namespace {

constexpr int most_stars = 5;

// Numbers for the colours of a row's clips.
class row_palette {
  public:
    explicit row_palette(std::vector<QColor>& colours) : colours_(colours) {}

    std::uint8_t number_of(const QColor& colour) {
        const auto [found, is_new] = numbers_.try_emplace(colour.rgb(), colours_.size());
        if (is_new) {
            // More colours than can be told apart share the last number.
            if (colours_.size() > 255) return static_cast<std::uint8_t>(found->second = 255);
            colours_.push_back(colour);
        }
        return static_cast<std::uint8_t>(found->second);
    }

  private:
    std::vector<QColor>& colours_;
    std::unordered_map<QRgb, std::size_t> numbers_;
};

int height_of(const sxy_ROW& record, bool compact) {
    const double stored = record.height();
    if (compact && stored == sxy_ROW::default_height) return timeline_sizes.row_small_height;
    return std::clamp(static_cast<int>(stored), timeline_sizes.row_least_height,
                      timeline_sizes.row_greatest_height);
}

std::vector<QColor> merged_colours(const sxy_ROW& record, const theme& look) {
    std::vector<QColor> colours;
    const row_compaction rows = record.compacted_rows();
    if (rows.empty() || !is_compacted(record)) return colours;
    for (const auto& text : rows.ray_of_slave_Row_COLOURS_to_save_in_master_row) {
        const auto colour = colour_from_text(text);
        colours.push_back(colour ? to_qt(*colour) : look.item_colour(colours.size()));
    }
    return colours;
}

void add_marks(const sxy_CLIP& clip, const QColor& usual, std::vector<trigger_mark>& to) {
    for (const trigger_event_ITEM& one : clip.triggers()) {
        const auto& colour = one.trigger_colour_24;
        to.push_back({one.trigger_Time, colour ? to_qt(*colour) : usual});
    }
}

void read_clips(timeline_row& row, const clip_view& view, bool hides_filtered_out) {
    if (!row.record) return;
    const clip_list& records = row.record->clips();
    std::vector<track_clip> shown;
    std::vector<track_clip> dimmed;
    std::vector<track_clip> selected;
    shown.reserve(records.size());
    row.palette.clear();
    row.extras.clear();
    row.extras.reserve(records.size());
    row.marks.clear();
    row_palette palette(row.palette);
    std::uint32_t index = 0;
    std::uint32_t passing = 0;
    for (const clip_pointer& record : records) {
        const auto colour = record->col();
        const bool passes = view.verdicts().passes(*record);
        const track_clip clip{record->secs_start(), record->secs_end(), index++,
                              palette.number_of(colour ? to_qt(*colour) : row.colour), !passes};
        const bool hidden = !passes && hides_filtered_out;
        passing += passes ? 1 : 0;
        if (!hidden) (passes ? shown : dimmed).push_back(clip);
        if (!hidden && view.selection().contains(*record)) selected.push_back(clip);
        auto extras = static_cast<std::uint8_t>(std::clamp(record->stars(), 0, most_stars));
        if (!hidden) add_marks(*record, row.colour, row.marks);
        if (!record->note_text().empty()) extras |= timeline_row::has_note;
        if (!passes) extras |= timeline_row::is_filtered_out;
        row.extras.push_back(extras);
    }
    row.is_timer = row.record->is_timer_row();
    row.clocks = row.is_timer ? timer_clocks(*row.record) : timer_clocks();
    row.clips = index;
    row.passing = passing;
    row.shown.assign(std::move(shown));
    row.dimmed.assign(std::move(dimmed));
    row.selected.assign(std::move(selected));
}

bool has_other_verdicts(const timeline_row& row, const clip_verdicts& verdicts) {
    if (!row.record || row.record->clips().size() != row.extras.size()) return false;
    auto extras = row.extras.begin();
    for (const clip_pointer& clip : row.record->clips()) {
        const bool passed = (*extras++ & timeline_row::is_filtered_out) == 0;
        if (verdicts.passes(*clip) != passed) return true;
    }
    return false;
}

// Clips that grow are none of a row's clips yet.
bool is_of_growing_alone(const change_set& change, const sxy_DATA_root& timeline) {
    if ((change.kinds & change_set::clips_changed) != 0) return false;
    if ((change.kinds & change_set::qualifiers_changed) == 0) return true;
    return std::all_of(change.clips.begin(), change.clips.end(), [&](const std::string& uuid) {
        const auto place = timeline.find_clip(uuid);
        return place && place->is_live;
    });
}

}  // namespace

void timeline_rows::read(const clip_view& view, const theme& look, rows_display display) {
    const sxy_DATA_root& timeline = view.timeline();
    rows_.clear();
    display_ = display;
    int top = 0;
    std::size_t number = 0;
    for (const row_pointer& record : timeline.rows()) {
        const auto colour = record->col();
        const QColor given = colour ? to_qt(*colour) : look.item_colour(number);
        ++number;
        if (record->real_height() && record->height() <= 0) continue;  // hidden
        timeline_row row;
        row.uuid = record->uuid();
        row.name = QString::fromStdString(record->name());
        row.colour = given;
        row.top = top;
        row.height = height_of(*record, display.is_compact);
        row.record = record;
        row.merged = merged_colours(*record, look);
        read_clips(row, view, display.hides_filtered_out);
        top += row.height;
        rows_.push_back(std::move(row));
    }
    read_live(timeline);
    place_triggers();
}

void timeline_rows::update(const clip_view& view, const change_set& change, const theme& look) {
    if ((change.kinds & change_set::rows_changed) != 0) {
        read(view, look, display_);
        return;
    }
    const bool keeps_clips = is_of_growing_alone(change, view.timeline());
    for (const shared_text& uuid : change.rows) {
        const std::size_t index = row_with(uuid);
        if (index == size()) continue;
        rows_[index].record = view.timeline().row(uuid);
        if (keeps_clips) continue;
        read_clips(rows_[index], view, display_.hides_filtered_out);
    }
    read_live(view.timeline());
}

void timeline_rows::take_selection(const clip_view& view, const clip_selection::rows& touched) {
    for (timeline_row& row : rows_) {
        if (touched.contains(row.uuid)) read_clips(row, view, display_.hides_filtered_out);
    }
}

bool timeline_rows::take_verdicts(const clip_view& view) {
    bool changed = false;
    for (timeline_row& row : rows_) {
        if (!has_other_verdicts(row, view.verdicts())) continue;
        read_clips(row, view, display_.hides_filtered_out);
        changed = true;
    }
    return changed;
}

void timeline_rows::clear() {
    rows_.clear();
    triggers_.clear();
    ruler_triggers_.clear();
}

std::size_t timeline_rows::row_at(int y) const {
    if (y < 0) return size();
    const auto found = std::upper_bound(rows_.begin(), rows_.end(), y, [](int at, const timeline_row& row) {
        return at < row.top + row.height;
    });
    return static_cast<std::size_t>(found - rows_.begin());
}

std::size_t timeline_rows::row_with(const shared_text& uuid) const {
    const auto found = std::find_if(rows_.begin(), rows_.end(),
                                    [&uuid](const timeline_row& row) { return row.uuid == uuid; });
    return static_cast<std::size_t>(found - rows_.begin());
}

void timeline_rows::read_live(const sxy_DATA_root& timeline) {
    for (timeline_row& row : rows_) row.live.clear();
    std::vector<clip_place> growing = timeline.live_clips();
    growing.insert(growing.end(), unsaved_.begin(), unsaved_.end());
    for (const clip_place& place : growing) {
        const std::size_t index = row_with(place.row);
        if (index == size()) continue;
        const auto colour = place.clip->col();
        rows_[index].live.push_back({place.clip, colour ? to_qt(*colour) : rows_[index].colour});
    }
}

void timeline_rows::set_unsaved(const sxy_DATA_root& timeline, std::vector<clip_place> growing) {
    unsaved_ = std::move(growing);
    read_live(timeline);
}

void timeline_rows::set_triggers(std::vector<button_trigger> all) {
    triggers_ = std::move(all);
    std::stable_sort(triggers_.begin(), triggers_.end(),
                     [](const auto& a, const auto& b) { return a.at < b.at; });
    place_triggers();
}

void timeline_rows::place_triggers() {
    ruler_triggers_.clear();
    for (timeline_row& row : rows_) row.triggers.clear();
    for (const button_trigger& one : triggers_) {
        const std::size_t index = one.row.str().empty() ? size() : row_with(one.row);
        (index == size() ? ruler_triggers_ : rows_[index].triggers).push_back(one);
    }
}

std::optional<double> clock_of(const timeline_row& row, double at) {
    if (!row.is_timer) return std::nullopt;
    if (!row.live.empty()) return row.clocks.of_growing(*row.live.back().clip, at);
    return row.clocks.of_row(at);
}

clip_pointer clip_of(const timeline_row& row, std::uint32_t index) {
    if (!row.record || index >= row.record->clips().size()) return nullptr;
    return row.record->clips()[index];
}

}  // namespace vistels
