// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "timeline/form/copied_ptr.h"
#include "timeline/records/clip_list.h"
#include "util/colour_text.h"
#include "util/property_value.h"
#include "util/record.h"
#include "util/shared_text.h"

namespace vistels {

class stored_sink;
class text_cache;
struct stored_member;

// The record of a clip deleted from a row.
struct sxy_Deleted_Clip_Item_k11 {
    std::string deleted_clip_ID;
    std::string edit_author;
    double clip_last_Edited_secs = 0;  // seconds since 1970 of the deletion

    bool operator==(const sxy_Deleted_Clip_Item_k11&) const = default;
};

// Tombstones this old, or older, are dropped when read.
inline constexpr double tombstone_life_seconds = 604800;

// What a master row keeps of the rows merged into it, so that they can be expanded again: one entry a row in
// each list.
struct row_compaction {
    std::vector<std::string> ray_of_slave_categories_to_save_in_master_row;
    std::vector<std::string> ray_of_slave_Row_COLOURS_to_save_in_master_row;  // colour texts
    std::vector<std::string> ray_of_slave_Row_PERMANENT_ID_to_save_in_master_row_2404;
    std::vector<std::int64_t> ray_of_slave_Row__SORT_NUMBER__to_save_in_master_row_2404;
    std::vector<std::int64_t>
        ray_of_slave_Row__SORT_NUMBER_IDX1_COMPACTOR_EXPANDER__to_save_in_master_row_2404;
    property_array uncompacted_rows;  // this program's own, see row_compaction.h

    bool empty() const { return *this == row_compaction(); }
    bool operator==(const row_compaction&) const = default;
};

// What a row is during this run alone, and few are.
struct row_run_state {
    bool full_row_coloured = false;
    std::string row_name_append_for_composer_topic;
};

// The fields of a row. What few rows have lies in blocks of its own, so that a file of nothing but rows does
// not take many times its size.
struct row_fields {
    static constexpr double default_height = 30;

    std::string row_name;
    shared_text row_category;
    shared_text UUID_permanent;
    copied_ptr<colour> row_colour;
    int sort_by_number_24 = 0;
    int sort_Number_idx1_for_row_Compactor_or_Expander_24 = 0;
    bool is_Timer_Clip_Row = false;
    double real_row_height = default_height;
    std::optional<double> stored_row_height_for_invisible_row;
    copied_ptr<std::vector<sxy_Deleted_Clip_Item_k11>> deleted_clips_in_row_k11;  // null when there are none
    copied_ptr<row_compaction> compaction;
    copied_ptr<row_run_state> run;
    int row_num_indx1 = 0;  // of this run
};

// One row: a named line of clips of one kind. A row that is on a timeline is changed only through the
// timeline's edits, which copy it first while a snapshot of it is in use; so whoever holds one from a
// snapshot may read it on any thread.
class sxy_ROW : record, row_fields {
  public:
    sxy_ROW() = default;
    explicit sxy_ROW(row_fields fields) : row_fields(std::move(fields)) {}
    sxy_ROW(const sxy_ROW& other) : record(other), row_fields(other.fields()), clips_(other.clips_) {}
    sxy_ROW(sxy_ROW&& other) noexcept
        : row_fields(std::move(static_cast<row_fields&>(other))), clips_(std::move(other.clips_)) {}
    sxy_ROW& operator=(const sxy_ROW& other) { return *this = sxy_ROW(other); }
    sxy_ROW& operator=(sxy_ROW&& other) noexcept;

    // `lk`, for whoever reads the row and its clips as a whole.
    record_lock& lock() const { return lk; }

    std::string name() const { return read(row_name); }
    bool has_name(std::string_view name) const {
        const record_guard guard(lk);
        return row_name == name;
    }
    void set_name(std::string name) { write(row_name, std::move(name)); }
    std::string category() const { return read(row_category).str(); }
    void set_category(std::string_view category) { write(row_category, shared_text(category)); }
    shared_text uuid() const { return read(UUID_permanent); }
    void set_uuid(shared_text uuid) { write(UUID_permanent, std::move(uuid)); }
    std::optional<colour> col() const;
    void set_col(std::optional<colour> colour);
    int sort_number() const { return read(sort_by_number_24); }  // 0 = none
    void set_sort_number(int number) { write(sort_by_number_24, number); }
    // The sort number while rows are compacted or expanded, from 1; 0 = none.
    int compactor_sort_number() const { return read(sort_Number_idx1_for_row_Compactor_or_Expander_24); }
    void set_compactor_sort_number(int number) {
        write(sort_Number_idx1_for_row_Compactor_or_Expander_24, number);
    }
    // Its clips show a running clock.
    bool is_timer_row() const { return read(is_Timer_Clip_Row); }
    void set_is_timer_row(bool timer) { write(is_Timer_Clip_Row, timer); }
    double height() const { return read(real_row_height); }  // points
    void set_height(double points) { write(real_row_height, points); }
    // The height that a hidden row had, in points ("height_real").
    std::optional<double> real_height() const { return read(stored_row_height_for_invisible_row); }
    void set_real_height(std::optional<double> points) { write(stored_row_height_for_invisible_row, points); }
    std::vector<sxy_Deleted_Clip_Item_k11> deleted_clips() const { return of(deleted_clips_in_row_k11); }
    void set_deleted_clips(std::vector<sxy_Deleted_Clip_Item_k11> all);
    // Empty unless this is the master row of compacted rows.
    row_compaction compacted_rows() const { return of(compaction); }

    // Of this run, not stored. The place of the row in its timeline, from 1; 0 = in none.
    int row_number() const { return read(row_num_indx1); }
    void set_row_number(int number) { write(row_num_indx1, number); }
    // The whole band of the row is painted in its colour.
    bool is_full_row_coloured() const { return of(run).full_row_coloured; }
    void set_full_row_coloured(bool full) { set_run(&row_run_state::full_row_coloured, full); }
    // Appended to the name when the row becomes a composer topic.
    std::string composer_topic_append() const { return of(run).row_name_append_for_composer_topic; }
    void set_composer_topic_append(std::string text) {
        set_run(&row_run_state::row_name_append_for_composer_topic, std::move(text));
    }

    const clip_list& clips() const { return clips_; }
    clip_list& clips() { return clips_; }

    // All fields but the clips, copied under the lock.
    row_fields fields() const;

    using row_fields::default_height;

  private:
    // A copy of a part, a default one when it is not there.
    template <class Part>
    Part of(const copied_ptr<Part>& part) const {
        const record_guard guard(lk);
        return part ? *part : Part();
    }
    template <class Field>
    void set_run(Field row_run_state::*field, Field value) {
        const record_guard guard(lk);
        run.make().*field = std::move(value);
    }

    clip_list clips_;
};

using row_pointer = std::shared_ptr<const sxy_ROW>;

// Whether that is one of the keys of a row; what has none of them is none.
bool is_row_key(std::string_view key);
// The row's own stored values, without its clips; `now` (seconds since 1970) decides which tombstones are
// read.
sxy_ROW read_row_values(std::span<const stored_member> stored, double now, text_cache& texts);
sxy_ROW read_row_values(const property_dictionary& stored, double now);
void write_row_values(const sxy_ROW& row, std::size_t row_number, stored_sink& to);
property_dictionary write_row_values(const sxy_ROW& row, std::size_t row_number);

// A copy of `row` with stored values set and taken away, as clip_with does for clips. Its identity stays.
sxy_ROW row_with(const sxy_ROW& row, const property_dictionary& set, const property_array& unset);

}  // namespace vistels
