// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "timeline/form/compact_text.h"
#include "timeline/form/copied_ptr.h"
#include "timeline/form/point.h"
#include "timeline/form/stored_table.h"
#include "util/colour_text.h"

namespace vistels {

// "x,y" in shortest decimals, and what is read as one: a text that holds two numbers, an array of two, or a
// dictionary with "x" and "y".
std::string point_text(const point& value);
std::optional<point> point_from(const stored_view& value);

// Reading and writing the kinds of values that records are made of. take_value: false, with nothing changed,
// when `from` is of another type. put_value: nothing at all for a value that is not set.

inline std::optional<double> finite_number(const stored_view& from) {
    const auto number = from.number();
    return number && std::isfinite(*number) ? number : std::nullopt;
}

inline bool take_value(bool& to, const stored_view& from, text_cache&) {
    const auto value = from.boolean();
    if (value) to = *value;
    return value.has_value();
}
inline void put_value(bool value, std::string_view key, stored_sink& to) {
    if (value) to.put(key, true);
}

// A number: 0 is none.
inline bool take_value(double& to, const stored_view& from, text_cache&) {
    const auto value = finite_number(from);
    if (value) to = *value;
    return value.has_value();
}
inline void put_value(double value, std::string_view key, stored_sink& to) {
    if (value != 0) to.put(key, value);
}

inline bool take_value(std::optional<double>& to, const stored_view& from, text_cache&) {
    const auto value = finite_number(from);
    if (value) to = value;
    return value.has_value();
}
inline void put_value(const std::optional<double>& value, std::string_view key, stored_sink& to) {
    if (value) to.put(key, *value);
}

// A count: less than 1 is none.
inline bool take_value(int& to, const stored_view& from, text_cache&) {
    const auto value = from.integer();
    if (!value || *value > std::numeric_limits<int>::max()) return false;
    to = *value < 1 ? 0 : static_cast<int>(*value);
    return true;
}
inline void put_value(int value, std::string_view key, stored_sink& to) {
    if (value >= 1) to.put(key, value);
}

inline bool take_value(std::optional<std::int64_t>& to, const stored_view& from, text_cache&) {
    const auto value = from.integer();
    if (value) to = value;
    return value.has_value();
}
inline void put_value(const std::optional<std::int64_t>& value, std::string_view key, stored_sink& to) {
    if (value) to.put(key, *value);
}

// Texts: an empty one is none.
inline bool take_value(std::string& to, const stored_view& from, text_cache&) {
    const auto value = from.text();
    if (value) to = *value;
    return value.has_value();
}
inline void put_value(const std::string& value, std::string_view key, stored_sink& to) {
    if (!value.empty()) to.put(key, std::string_view(value));
}

inline bool take_value(compact_text& to, const stored_view& from, text_cache&) {
    const auto value = from.text();
    if (value) to = compact_text(*value);
    return value.has_value();
}
inline void put_value(const compact_text& value, std::string_view key, stored_sink& to) {
    if (value.empty()) return;
    compact_text::buffer room;
    to.put(key, value.text(room));
}

inline bool take_value(shared_text& to, const stored_view& from, text_cache& texts) {
    const auto value = from.text();
    if (value) to = value->empty() ? shared_text() : texts.get(*value);
    return value.has_value();
}
inline void put_value(const shared_text& value, std::string_view key, stored_sink& to) {
    if (!value.empty()) to.put(key, std::string_view(value.str()));
}

bool take_value(std::optional<rectangle>& to, const stored_view& from, text_cache& texts);
void put_value(const std::optional<rectangle>& value, std::string_view key, stored_sink& to);

bool take_value(std::optional<point>& to, const stored_view& from, text_cache& texts);
void put_value(const std::optional<point>& value, std::string_view key, stored_sink& to);

// Lists as long as they were stored: an item of another type is an empty text, or 0.
bool take_value(std::vector<std::string>& to, const stored_view& from, text_cache& texts);
void put_value(const std::vector<std::string>& value, std::string_view key, stored_sink& to);
bool take_value(std::vector<std::int64_t>& to, const stored_view& from, text_cache& texts);
void put_value(const std::vector<std::int64_t>& value, std::string_view key, stored_sink& to);

// Kept as it is.
inline bool take_value(property_array& to, const stored_view& from, text_cache&) {
    if (!from.is_array()) return false;
    auto copy = from.copy();
    to = std::move(*copy.array());
    return true;
}
inline void put_value(const property_array& value, std::string_view key, stored_sink& to) {
    if (!value.empty()) to.put(key, property_value(value));
}

bool take_colour(std::optional<colour>& to, const stored_view& from, text_cache& texts);
inline bool take_colour(copied_ptr<colour>& to, const stored_view& from, text_cache& texts) {
    std::optional<colour> value;
    if (take_colour(value, from, texts)) to = *value;
    return value.has_value();
}
template <class Colour>
void put_colour(const Colour& value, int decimals, std::string_view key, stored_sink& to) {
    if (value) to.put(key, std::string_view(colour_text(*value, decimals)));
}

// The table of a record that lies inside another one: stored_form<Part>::fields.
template <class Part>
struct stored_form;

template <class Part>
Part read_part(const stored_view& from, text_cache& texts) {
    Part part;
    stored_reading<Part> reading{part, texts};
    read_members(stored_form<Part>::fields, from.members(), reading);
    return part;
}
template <class Part>
void put_part(const Part& part, std::string_view key, stored_sink& to) {
    to.begin_dictionary(key);
    write_members(stored_form<Part>::fields, part, to);
    to.end();
}

template <class Part>
bool take_value(copied_ptr<Part>& to, const stored_view& from, text_cache& texts) {
    if (!from.is_dictionary()) return false;
    to = read_part<Part>(from, texts);
    return true;
}
template <class Part>
void put_value(const copied_ptr<Part>& value, std::string_view key, stored_sink& to) {
    if (value) put_part(*value, key, to);
}

// A dictionary that has a key of the table. Others in a list of records are passed over: a few bytes of a
// file are not to take the memory of a record.
template <class Table>
bool has_key_of(const Table& table, const stored_view& item) {
    const auto members = item.members();
    return std::any_of(members.begin(), members.end(), [&](const stored_member& member) {
        return find_stored_key(table, member.key, 0).index < table.size();
    });
}

// Whether nothing would be written of it but an empty dictionary, which is not read either.
template <class Part>
bool holds_nothing(const Part& part) {
    static const bool default_holds_nothing = [] {
        dictionary_sink sink;
        write_members(stored_form<Part>::fields, Part(), sink);
        return sink.take().empty();
    }();
    return default_holds_nothing && part == Part();
}

template <class Part>
bool take_value(std::vector<Part>& to, const stored_view& from, text_cache& texts) {
    if (!from.is_array()) return false;
    const auto items = from.items();
    const auto is_part = [](const stored_view& item) { return has_key_of(stored_form<Part>::fields, item); };
    const auto count = static_cast<std::size_t>(std::count_if(items.begin(), items.end(), is_part));
    to.clear();
    to.reserve(count);
    for (const auto& item : items) {
        if (!is_part(item)) continue;
        to.push_back(read_part<Part>(item, texts));
        if (holds_nothing(to.back())) to.pop_back();
    }
    return true;
}
template <class Part>
void put_value(const std::vector<Part>& value, std::string_view key, stored_sink& to) {
    if (std::all_of(value.begin(), value.end(), holds_nothing<Part>)) return;
    to.begin_array(key);
    for (const auto& part : value) {
        if (!holds_nothing(part)) put_part(part, {}, to);
    }
    to.end();
}

// Where the fields of a table lie: in the record itself.
template <class Record>
struct in_record {
    using record_type = Record;
    using reading_type = stored_reading<Record>;
    static Record& of(reading_type& reading) { return reading.to; }
    static const Record* of(const Record& record) { return &record; }  // null: the part is not there
};

// A field by its member, in the part of the record that `Where` finds.
template <class Where, auto Member>
constexpr auto stored_member_field(std::string_view key, std::string_view older = {},
                                   std::string_view oldest = {}) {
    using record_type = typename Where::record_type;
    using reading_type = typename Where::reading_type;
    return stored_field<record_type, reading_type>{
        key,
        {older, oldest},
        [](reading_type& reading, const stored_view& from) {
            return take_value(Where::of(reading).*Member, from, reading.texts);
        },
        [](const record_type& record, std::string_view name, stored_sink& to) {
            if (const auto* part = Where::of(record)) put_value(part->*Member, name, to);
        },
        [](reading_type& reading) { Where::of(reading).*Member = {}; }};
}

// A colour with that many decimals.
template <class Where, auto Member, int decimals>
constexpr auto stored_colour_field(std::string_view key, std::string_view older = {}) {
    using record_type = typename Where::record_type;
    using reading_type = typename Where::reading_type;
    return stored_field<record_type, reading_type>{
        key,
        {older, {}},
        [](reading_type& reading, const stored_view& from) {
            return take_colour(Where::of(reading).*Member, from, reading.texts);
        },
        [](const record_type& record, std::string_view name, stored_sink& to) {
            if (const auto* part = Where::of(record)) put_colour(part->*Member, decimals, name, to);
        },
        [](reading_type& reading) { Where::of(reading).*Member = {}; }};
}

}  // namespace vistels
