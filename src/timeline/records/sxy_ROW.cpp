// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/records/sxy_ROW.h"

#include <algorithm>
#include <limits>

#include "timeline/form/stored_values.h"

namespace vistels {

namespace {

constexpr int row_colour_decimals = 4;
constexpr double no_time = std::numeric_limits<double>::quiet_NaN();

}  // namespace

template <>
struct stored_form<sxy_Deleted_Clip_Item_k11> {
    using item = sxy_Deleted_Clip_Item_k11;
    using here = in_record<item>;
    static constexpr std::array fields{
        stored_member_field<here, &item::deleted_clip_ID>("clip_ID"),
        stored_member_field<here, &item::edit_author>("author"),
        stored_member_field<here, &item::clip_last_Edited_secs>("edit_seconds"),
    };
};

namespace {

struct row_reading {
    row_fields& to;
    text_cache& texts;
    double now;  // seconds since 1970
};

using row_field = stored_field<row_fields, row_reading>;

struct in_row {
    using record_type = row_fields;
    using reading_type = row_reading;
    static row_fields& of(row_reading& reading) { return reading.to; }
    static const row_fields* of(const row_fields& fields) { return &fields; }
};

struct in_compaction {
    using record_type = row_fields;
    using reading_type = row_reading;
    static row_compaction& of(row_reading& reading) { return reading.to.compaction.make(); }
    static const row_compaction* of(const row_fields& fields) { return fields.compaction.get(); }
};

template <auto Member>
constexpr auto plain(std::string_view key, std::string_view older = {}) {
    return stored_member_field<in_row, Member>(key, older);
}

template <auto Member>
constexpr auto compacted(std::string_view key) {
    return stored_member_field<in_compaction, Member>(key);
}

// A field that is written even when it is empty or 0.
template <auto Member>
constexpr auto always(row_field field) {
    field.write = [](const row_fields& fields, std::string_view key, stored_sink& to) {
        if constexpr (std::is_same_v<std::remove_cvref_t<decltype(fields.*Member)>, shared_text>) {
            to.put(key, std::string_view((fields.*Member).str()));
        } else {
            to.put(key, fields.*Member);
        }
    };
    return field;
}

copied_ptr<std::vector<sxy_Deleted_Clip_Item_k11>> kept(std::vector<sxy_Deleted_Clip_Item_k11> all) {
    if (all.empty()) return {};
    all.shrink_to_fit();
    return {std::move(all)};
}

bool read_tombstones(row_reading& reading, const stored_view& from) {
    if (!from.is_array()) return false;
    std::vector<sxy_Deleted_Clip_Item_k11> all;
    for (const auto& item : from.items()) {
        sxy_Deleted_Clip_Item_k11 one;
        one.clip_last_Edited_secs = no_time;
        stored_reading<sxy_Deleted_Clip_Item_k11> part{one, reading.texts};
        read_members(stored_form<sxy_Deleted_Clip_Item_k11>::fields, item.members(), part);
        if (!(reading.now - one.clip_last_Edited_secs < tombstone_life_seconds)) continue;
        all.push_back(std::move(one));
    }
    reading.to.deleted_clips_in_row_k11 = kept(std::move(all));
    return true;
}

void write_tombstones(const row_fields& fields, std::string_view key, stored_sink& to) {
    if (fields.deleted_clips_in_row_k11) put_value(*fields.deleted_clips_in_row_k11, key, to);
}

using row = row_fields;
using old = row_compaction;

constexpr std::array row_table{
    plain<&row::sort_by_number_24>("sort_number"),
    plain<&row::sort_Number_idx1_for_row_Compactor_or_Expander_24>(
        "sort_number_(for_row_Compactor_or_Expander)"),
    always<&row::row_name>(plain<&row::row_name>("row_name", "row name")),
    plain<&row::row_category>("row_category"),
    compacted<&old::ray_of_slave_categories_to_save_in_master_row>("uncompacted_row_categories"),
    compacted<&old::ray_of_slave_Row_COLOURS_to_save_in_master_row>("uncompacted_row_colors"),
    compacted<&old::ray_of_slave_Row_PERMANENT_ID_to_save_in_master_row_2404>(
        "uncompacted_row_Permanent_uuids"),
    compacted<&old::ray_of_slave_Row__SORT_NUMBER__to_save_in_master_row_2404>("uncompacted_sort_number"),
    compacted<&old::ray_of_slave_Row__SORT_NUMBER_IDX1_COMPACTOR_EXPANDER__to_save_in_master_row_2404>(
        "uncompacted_sort_number_Compactor_Expander"),
    compacted<&old::uncompacted_rows>("uncompacted_rows"),
    row_field{"deleted clips",
              {},
              read_tombstones,
              write_tombstones,
              [](row_reading& reading) { reading.to.deleted_clips_in_row_k11 = {}; }},
    [] {
        auto field = always<&row::real_row_height>(plain<&row::real_row_height>("height"));
        field.unset = [](row_reading& reading) { reading.to.real_row_height = row::default_height; };
        return field;
    }(),
    plain<&row::stored_row_height_for_invisible_row>("height_real", "height real"),
    always<&row::UUID_permanent>(plain<&row::UUID_permanent>("uuid_row", "UUID row")),
    stored_colour_field<in_row, &row::row_colour, row_colour_decimals>("color"),
    plain<&row::is_Timer_Clip_Row>("timer_row", "timer row"),
};

}  // namespace

sxy_ROW& sxy_ROW::operator=(sxy_ROW&& other) noexcept {
    if (this == &other) return *this;
    const record_guard guard(lk);
    static_cast<row_fields&>(*this) = std::move(static_cast<row_fields&>(other));
    clips_ = std::move(other.clips_);
    return *this;
}

row_fields sxy_ROW::fields() const {
    const record_guard guard(lk);
    return *this;
}

std::optional<colour> sxy_ROW::col() const {
    const record_guard guard(lk);
    return row_colour ? std::optional(*row_colour) : std::nullopt;
}

void sxy_ROW::set_col(std::optional<colour> colour) {
    write(row_colour, colour ? copied_ptr(*colour) : copied_ptr<vistels::colour>());
}

void sxy_ROW::set_deleted_clips(std::vector<sxy_Deleted_Clip_Item_k11> all) {
    write(deleted_clips_in_row_k11, kept(std::move(all)));
}

bool is_row_key(std::string_view key) {
    return find_stored_key(row_table, key, 0).index < row_table.size();
}

sxy_ROW read_row_values(std::span<const stored_member> stored, double now, text_cache& texts) {
    row_fields fields;
    row_reading reading{fields, texts, now};
    read_members(row_table, stored, reading);
    return sxy_ROW(std::move(fields));
}

sxy_ROW read_row_values(const property_dictionary& stored, double now) {
    stored_arena arena;
    std::vector<stored_member> members;
    for (const auto& entry : stored) {
        if (entry.key != "clips") members.push_back({entry.key, view_of(entry.value, arena)});
    }
    text_cache texts;
    return read_row_values(members, now, texts);
}

void write_row_values(const sxy_ROW& row, std::size_t row_number, stored_sink& to) {
    to.put("row_number", static_cast<std::int64_t>(row_number));
    write_members(row_table, row.fields(), to);
}

property_dictionary write_row_values(const sxy_ROW& row, std::size_t row_number) {
    dictionary_sink sink;
    write_row_values(row, row_number, sink);
    return sink.take();
}

sxy_ROW row_with(const sxy_ROW& row, const property_dictionary& set, const property_array& unset) {
    row_fields changed = row.fields();
    text_cache texts;
    // Tombstones expire when a file is read, not by an edit: with 0 for now, none is old.
    row_reading reading{changed, texts, 0};
    change_members(row_table, set, unset, reading, [](std::string_view key) { return key != "uuid_row"; });
    sxy_ROW with(std::move(changed));
    with.clips() = row.clips();
    return with;
}

}  // namespace vistels
