// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QString>
#include <cstdint>
#include <optional>
#include <vector>

#include "app/event/clip_view.h"
#include "logger/timer_clock.h"
#include "shell/kit/theme.h"
#include "shell/panes/timeline/timeline_tracks.h"
#include "timeline/edits/timeline_edit.h"
#include "timeline/records/sxy_DATA_root.h"

namespace vistels {

// A growing clip of a row.
struct live_piece {
    clip_pointer clip;
    QColor colour;
};

// A trigger that was put on a clip.
struct trigger_mark {
    double at = 0;
    QColor colour;
};

// What the playhead does to a button where it passes a trigger of it.
enum class trigger_effect { goes_down, goes_up, none };

// A trigger of a button.
struct button_trigger {
    shared_text row;  // that its clips go to; empty: there is none
    QString button;
    double at = 0;
    trigger_effect effect = trigger_effect::none;
    std::optional<QColor> colour;  // none: that of the row
};

// One row as it is drawn; made from the record, and anew when that changes.
struct timeline_row {
    shared_text uuid;
    QString name;
    QColor colour;
    std::vector<QColor> merged;        // the colours of the rows that it stands for; mostly none
    std::vector<QColor> palette;       // the colours of its clips
    std::vector<std::uint8_t> extras;  // of each clip: its stars, has_note, is_filtered_out
    clip_track shown;                  // all clips, or those that pass the filter
    clip_track dimmed;                 // those that do not, unless they are hidden
    clip_track selected;               // those that are not hidden
    std::vector<live_piece> live;
    std::vector<trigger_mark> marks;       // of its clips
    std::vector<button_trigger> triggers;  // of the buttons whose clips it gets, in order of time
    bool is_timer = false;                 // a clock is shown for it and on its clips
    timer_clocks clocks;
    std::uint32_t clips = 0;
    std::uint32_t passing = 0;
    int top = 0;  // pixels from the first row
    int height = 0;
    row_pointer record;
    clip_list read;  // what the above was made of

    static constexpr std::uint8_t has_note = 0x80;
    static constexpr std::uint8_t is_filtered_out = 0x40;
    static constexpr std::uint8_t stars_mask = 0x3f;
};

// How rows are shown.
struct rows_display {
    bool is_compact = false;          // rows of the usual height are low
    bool hides_filtered_out = false;  // clips that do not pass the filter are left out, not dimmed
};

// The rows of a timeline as they are drawn in one view. Main thread.
class timeline_rows {
  public:
    // All rows anew; hidden rows are left out.
    void read(const clip_view& view, const theme& look, rows_display display);
    // The rows in which another clip passes the filter than when they were read. Whether there was one.
    bool take_verdicts(const clip_view& view);
    // What the change touched.
    void update(const clip_view& view, const change_set& change, const theme& look);
    // Clips that grow without being on the timeline, by their rows.
    void set_unsaved(const sxy_DATA_root& timeline, std::vector<clip_place> growing);
    // Triggers of buttons: each is shown in its row, those without one that is shown on the ruler.
    void set_triggers(std::vector<button_trigger> all);
    const std::vector<button_trigger>& ruler_triggers() const { return ruler_triggers_; }
    // Rows in which other clips are selected.
    void take_selection(const clip_view& view, const clip_selection::rows& touched);
    void clear();

    std::size_t size() const { return rows_.size(); }
    bool empty() const { return rows_.empty(); }
    const timeline_row& operator[](std::size_t index) const { return rows_[index]; }
    auto begin() const { return rows_.begin(); }
    auto end() const { return rows_.end(); }
    int total_height() const { return rows_.empty() ? 0 : rows_.back().top + rows_.back().height; }
    // The row at `y` pixels from the first one; size() beyond the last.
    std::size_t row_at(int y) const;
    std::size_t row_with(const shared_text& uuid) const;

  private:
    void read_rows(const clip_view& view, const theme& look, std::vector<timeline_row> before);
    void read_live(const sxy_DATA_root& timeline);
    void place_triggers();

    std::vector<timeline_row> rows_;
    rows_display display_;
    std::vector<clip_place> unsaved_;
    std::vector<button_trigger> triggers_;  // of all
    std::vector<button_trigger> ruler_triggers_;
};

// What the clock of a timer row shows at a time; nothing where there is none.
std::optional<double> clock_of(const timeline_row& row, double at);

// The record of a clip of a row; null when the row has changed since.
clip_pointer clip_of(const timeline_row& row, std::uint32_t index);

}  // namespace vistels
