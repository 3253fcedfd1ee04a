// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "timeline/sxy_CLIP.h"
#include "util/colour_text.h"
#include "util/property_value.h"
#include "util/record.h"
#include "util/shared_text.h"

namespace vistels {

// The clips of one row in the row's order (see clip_before).
class clip_list {
  public:
    std::size_t size() const { return clips_.size(); }
    bool empty() const { return clips_.empty(); }
    const clip_pointer& operator[](std::size_t index) const { return clips_[index]; }
    auto begin() const { return clips_.begin(); }
    auto end() const { return clips_.end(); }

    // Where `clip` stands, or size() when it does not.
    std::size_t position(const sxy_CLIP& clip) const;
    // The first clip that starts at or after `seconds`, or size().
    std::size_t first_starting_at(double seconds) const;

    // Returns where it was put.
    std::size_t insert(clip_pointer clip);
    void remove(std::size_t index);
    // Puts all clips in order at once, for a list read from a file.
    void assign(std::vector<clip_pointer> clips);

  private:
    std::vector<clip_pointer> clips_;
};

// The record of a clip deleted from a row.
struct sxy_Deleted_Clip_Item_k11 {
    std::string deleted_clip_ID;
    std::string edit_author;
    double clip_last_Edited_secs = 0;  // seconds since 1970 of the deletion

    bool operator==(const sxy_Deleted_Clip_Item_k11&) const = default;
};

// Tombstones this old, or older, are dropped when read.
inline constexpr double tombstone_life_seconds = 604800;

// One row: a named line of clips of one kind. A row that is on a timeline is changed only through the
// timeline's edits, which copy it first while a snapshot of it is in use; so whoever holds one from a
// snapshot may read it on any thread.
class sxy_ROW : record {
  public:
    std::string name() const { return read(row_name); }
    void set_name(std::string name) { write(row_name, std::move(name)); }
    std::string category() const { return read(row_category); }
    void set_category(std::string category) { write(row_category, std::move(category)); }
    shared_text uuid() const { return read(UUID_permanent); }
    void set_uuid(shared_text uuid) { write(UUID_permanent, std::move(uuid)); }
    std::optional<colour> col() const { return read(row_colour); }
    void set_col(std::optional<colour> colour) { write(row_colour, colour); }
    int sort_number() const { return read(sort_by_number_24); }  // 0 = none
    void set_sort_number(int number) { write(sort_by_number_24, number); }
    bool is_timer_row() const { return read(is_Timer_Clip_Row); }
    void set_is_timer_row(bool timer) { write(is_Timer_Clip_Row, timer); }
    double height() const { return read(stored_row_height); }  // points
    void set_height(double points) { write(stored_row_height, points); }
    std::optional<double> real_height() const { return read(real_row_height); }  // points, of a hidden row
    void set_real_height(std::optional<double> points) { write(real_row_height, points); }
    std::vector<sxy_Deleted_Clip_Item_k11> deleted_clips() const { return read(deleted_clips_in_row_k11); }
    void set_deleted_clips(std::vector<sxy_Deleted_Clip_Item_k11> all) {
        write(deleted_clips_in_row_k11, std::move(all));
    }
    // Stored values that have no field of their own, by their stored key (the newer spelling).
    property_dictionary kept() const { return read(kept_); }
    void set_kept(property_dictionary kept) { write(kept_, std::move(kept)); }

    const clip_list& clips() const { return clips_; }
    clip_list& clips() { return clips_; }

    static constexpr double default_height = 30;

  private:
    std::string row_name;
    std::string row_category;
    shared_text UUID_permanent;
    std::optional<colour> row_colour;
    int sort_by_number_24 = 0;
    bool is_Timer_Clip_Row = false;
    double stored_row_height = default_height;
    std::optional<double> real_row_height;
    std::vector<sxy_Deleted_Clip_Item_k11> deleted_clips_in_row_k11;
    property_dictionary kept_;
    clip_list clips_;
};

using row_pointer = std::shared_ptr<const sxy_ROW>;

// The row's own stored values, without its clips; `now` (seconds since 1970) decides which tombstones are
// read.
sxy_ROW read_row_values(const property_dictionary& stored, double now);
property_dictionary write_row_values(const sxy_ROW& row, std::size_t row_number);

// A copy of `row` with stored values set and taken away, as clip_with does for clips.
sxy_ROW row_with(const sxy_ROW& row, const property_dictionary& set, const property_array& unset);

}  // namespace vistels
