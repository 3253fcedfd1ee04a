// SPDX-License-Identifier: GPL-3.0-or-later
#include "shell/panes/timeline/timeline_rows.h"

#include <algorithm>
#include <unordered_map>
#include <utility>

#include "shell/panes/timeline/timeline_metrics.h"
#include "timeline/edits/row_compaction.h"
#include "timeline/records/clip_list.h"
#include "util/colour_text.h"

namespace vistels {
namespace {

constexpr int most_stars = 5;

// Numbers for the colours of a row's clips.
class row_palette {
  public:
    explicit row_palette(std::vector<QColor>& colours) : colours_(colours) {
        for (std::size_t number = 0; number < colours.size(); ++number)
            numbers_.try_emplace(colours[number].rgb(), number);
    }

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

// The clips of a row as they were read before, from the first to the last.
class known_clips {
  public:
    explicit known_clips(timeline_row& row)
        : clips_(std::exchange(row.read, {})),
          next_(clips_.begin()),
          extras_(std::exchange(row.extras, {})),
          shown_(row.shown),
          dimmed_(row.dimmed),
          selected_(row.selected) {}

    // Passes over what stands before `clip`. Whether `clip` is next, as it was; then the following tell of
    // it.
    bool is_next(const clip_pointer& clip) {
        while (next_ != clips_.end() && *next_ != clip && clip_before(**next_, *clip)) pass();
        return next_ != clips_.end() && *next_ == clip;
    }
    std::uint8_t extras() const { return extras_[index_]; }
    // Null: it is not there.
    const track_clip* shown() { return on(shown_); }
    const track_clip* dimmed() { return on(dimmed_); }
    const track_clip* selected() { return on(selected_); }
    void pass() {
        ++next_;
        ++index_;
    }

  private:
    struct passed_track {
        explicit passed_track(const clip_track& passed) : track(passed) {}
        const clip_track& track;
        std::size_t position = 0;
    };

    const track_clip* on(passed_track& one) const {
        const clip_track& track = one.track;
        while (one.position < track.size() && track[one.position].index < index_) ++one.position;
        const bool is_there = one.position < track.size() && track[one.position].index == index_;
        return is_there ? &track[one.position] : nullptr;
    }

    const clip_list clips_;
    clip_list::iterator next_;
    std::uint32_t index_ = 0;
    const std::vector<std::uint8_t> extras_;
    passed_track shown_;
    passed_track dimmed_;
    passed_track selected_;
};

// Clips that are in the row as they were when it was read last are taken over from there. Their verdicts and
// whether they are selected must be the same, which forget_clips() is for.
class row_reader {
  public:
    row_reader(timeline_row& row, const clip_view& view, bool hides_filtered_out)
        : row_(row),
          view_(view),
          hides_filtered_out_(hides_filtered_out),
          known_(row),
          palette_(row.palette) {}

    void read(const clip_list& clips) {
        shown_.reserve(clips.size());
        row_.extras.reserve(clips.size());
        for (const clip_pointer& clip : clips) {
            if (known_.is_next(clip)) {
                take_over();
            } else {
                look_at(*clip);
            }
            ++index_;
        }
        row_.clips = index_;
        row_.passing = passing_;
        row_.shown.assign(std::move(shown_));
        row_.dimmed.assign(std::move(dimmed_));
        row_.selected.assign(std::move(selected_));
        row_.read = clips;
    }

  private:
    void take_over() {
        const std::uint8_t extras = known_.extras();
        row_.extras.push_back(extras);
        if ((extras & timeline_row::is_filtered_out) == 0) ++passing_;
        take_over(known_.shown(), shown_);
        take_over(known_.dimmed(), dimmed_);
        take_over(known_.selected(), selected_);
        known_.pass();
    }
    void take_over(const track_clip* from, std::vector<track_clip>& to) const {
        if (!from) return;
        to.push_back(*from);
        to.back().index = index_;
    }

    void look_at(const sxy_CLIP& record) {
        const auto colour = record.col();
        const bool passes = view_.verdicts().passes(record);
        const track_clip clip{record.secs_start(), record.secs_end(), index_,
                              palette_.number_of(colour ? to_qt(*colour) : row_.colour), !passes};
        const bool hidden = !passes && hides_filtered_out_;
        passing_ += passes ? 1 : 0;
        if (!hidden) (passes ? shown_ : dimmed_).push_back(clip);
        if (!hidden && view_.selection().contains(record)) selected_.push_back(clip);
        if (!hidden) add_marks(record, row_.colour, row_.marks);
        auto extras = static_cast<std::uint8_t>(std::clamp(record.stars(), 0, most_stars));
        if (!record.note_text().empty()) extras |= timeline_row::has_note;
        if (!passes) extras |= timeline_row::is_filtered_out;
        row_.extras.push_back(extras);
    }

    timeline_row& row_;
    const clip_view& view_;
    const bool hides_filtered_out_;
    known_clips known_;
    row_palette palette_;
    std::vector<track_clip> shown_;
    std::vector<track_clip> dimmed_;
    std::vector<track_clip> selected_;
    std::uint32_t index_ = 0;
    std::uint32_t passing_ = 0;
};

// All clips are looked at the next time.
void forget_clips(timeline_row& row) {
    row.read = {};
    row.palette.clear();
    row.marks.clear();
}

void read_clips(timeline_row& row, const clip_view& view, bool hides_filtered_out) {
    if (!row.record) return;
    // Marks are not known by their clips. Colours that no clip has any more are let go of at times.
    constexpr std::size_t most_colours = 200;
    if (!row.marks.empty() || row.palette.size() > most_colours) forget_clips(row);
    row_reader(row, view, hides_filtered_out).read(row.record->clips());
    row.is_timer = row.record->is_timer_row();
    row.clocks = row.is_timer ? timer_clocks(*row.record) : timer_clocks();
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
    display_ = display;
    read_rows(view, look, {});
}

// Of rows that were there before, only clips that are others are looked at.
void timeline_rows::read_rows(const clip_view& view, const theme& look, std::vector<timeline_row> before) {
    const sxy_DATA_root& timeline = view.timeline();
    std::unordered_map<shared_text, timeline_row*> known;
    for (timeline_row& row : before) known.emplace(row.uuid, &row);
    rows_.clear();
    int top = 0;
    std::size_t number = 0;
    for (const row_pointer& record : timeline.rows()) {
        const auto colour = record->col();
        const QColor given = colour ? to_qt(*colour) : look.item_colour(number);
        ++number;
        if (record->real_height() && record->height() <= 0) continue;  // hidden
        timeline_row row;
        const auto found = known.find(record->uuid());
        if (found != known.end() && found->second->colour == given) row = std::move(*found->second);
        row.uuid = record->uuid();
        row.name = QString::fromStdString(record->name());
        row.colour = given;
        row.top = top;
        row.height = height_of(*record, display_.is_compact);
        row.record = record;
        row.merged = merged_colours(*record, look);
        read_clips(row, view, display_.hides_filtered_out);
        top += row.height;
        rows_.push_back(std::move(row));
    }
    read_live(timeline);
    place_triggers();
}

void timeline_rows::update(const clip_view& view, const change_set& change, const theme& look) {
    if ((change.kinds & change_set::rows_changed) != 0) {
        return read_rows(view, look, std::move(rows_));
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
        if (!touched.contains(row.uuid)) continue;
        forget_clips(row);
        read_clips(row, view, display_.hides_filtered_out);
    }
}

bool timeline_rows::take_verdicts(const clip_view& view) {
    bool changed = false;
    for (timeline_row& row : rows_) {
        if (!has_other_verdicts(row, view.verdicts())) continue;
        forget_clips(row);
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
