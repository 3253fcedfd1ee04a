// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QColor>
#include <QString>
#include <cstdint>
#include <vector>

#include "shell/theme.h"
#include "shell/timeline_tracks.h"
#include "timeline/sxy_DATA_root.h"
#include "timeline/timeline_edit.h"

namespace vistels {

// A growing clip of a row.
struct live_piece {
    clip_pointer clip;
    QColor colour;
};

// One row as it is drawn; made from the record, and anew when that changes.
struct timeline_row {
    shared_text uuid;
    QString name;
    QColor colour;
    std::vector<QColor> merged;        // the colours of the rows that it stands for; mostly none
    std::vector<QColor> palette;       // the colours of its clips
    std::vector<std::uint8_t> extras;  // of each clip: its stars, and has_note
    clip_track shown;                  // all clips, or those that pass the filter
    clip_track dimmed;                 // those that do not
    clip_track selected;
    std::vector<live_piece> live;
    std::uint32_t clips = 0;
    std::uint32_t passing = 0;
    int top = 0;  // pixels from the first row
    int height = 0;
    row_pointer record;

    static constexpr std::uint8_t has_note = 0x80;
};

// The rows of a timeline as they are drawn. Main thread.
class timeline_rows {
  public:
    // All rows anew. Rows of the usual height are low when `compact`; hidden rows are left out.
    void read(const sxy_DATA_root& timeline, const theme& look, bool compact);
    // What the change touched.
    void update(const sxy_DATA_root& timeline, const change_set& change, const theme& look);
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
    void read_live(const sxy_DATA_root& timeline);

    std::vector<timeline_row> rows_;
    bool compact_ = false;
};

// The record of a clip of a row; null when the row has changed since.
clip_pointer clip_of(const timeline_row& row, std::uint32_t index);

}  // namespace vistels
