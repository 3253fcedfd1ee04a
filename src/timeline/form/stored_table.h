// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "timeline/form/text_cache.h"
#include "timeline/form/value_change.h"
#include "util/stored_sink.h"
#include "util/stored_view.h"

namespace vistels {

// What a record is read into, with what reading it needs besides.
template <class Record>
struct stored_reading {
    Record& to;
    text_cache& texts;
};

// One stored key of a record: how its value is read, written and taken away. A record has one table of these,
// in the stored order; it serves whole records and changes of single values alike.
template <class Record, class Reading = stored_reading<Record>>
struct stored_field {
    using record_type = Record;
    using reading_type = Reading;

    std::string_view key;
    std::array<std::string_view, 2> older;  // spellings of older files, the nearer one first; may be empty
    bool (*read)(Reading&, const stored_view&);  // false, with nothing changed: not of the key's type
    void (*write)(const Record&, std::string_view key, stored_sink&);  // nothing while not set; may be null
    void (*unset)(Reading&);
};

// Where a key stands in a table, and how old its spelling is (0: the one that is written).
struct stored_place {
    std::size_t index;
    unsigned age;
};

// `from`: where the search begins; keys come in the order of the table nearly always.
template <class Table>
stored_place find_stored_key(const Table& table, std::string_view key, std::size_t from) {
    for (std::size_t step = 0, at = from; step < table.size(); ++step, ++at) {
        if (at >= table.size()) at -= table.size();
        if (table[at].key == key) return {at, 0};
    }
    for (std::size_t at = 0; at < table.size(); ++at) {
        for (unsigned age = 0; age < table[at].older.size(); ++age) {
            if (!table[at].older[age].empty() && table[at].older[age] == key) return {at, age + 1};
        }
    }
    return {table.size(), 0};
}

// Reads the members that the table knows, in one pass. A value of another type than the key's leaves the
// field as it is; of two spellings the newer one that can be read counts; of a key that stands twice, the
// last.
template <class Table, class Reading>
void read_members(const Table& table, std::span<const stored_member> members, Reading& reading) {
    constexpr unsigned newest = 4;
    std::array<std::uint8_t, std::tuple_size_v<Table>> read_from{};  // newest - age; 0: not read
    std::size_t expected = 0;
    for (const auto& member : members) {
        const auto [index, age] = find_stored_key(table, member.key, expected);
        if (index == table.size()) continue;
        expected = index + 1;
        const unsigned spelling = newest - age;
        if (read_from[index] > spelling) continue;
        if (table[index].read(reading, member.value)) {
            read_from[index] = static_cast<std::uint8_t>(spelling);
        } else if (read_from[index] == spelling) {
            table[index].unset(reading);
            read_from[index] = 0;
        }
    }
}

template <class Table, class Record>
void write_members(const Table& table, const Record& record, stored_sink& to) {
    for (const auto& field : table) {
        if (field.write) field.write(record, field.key, to);
    }
}

// What makes the value of one field in `after` that of `before` again, added to `back`.
template <class Field, class Record>
void add_inverse_value(const Field& field, const Record& before, const Record& after, value_change& back) {
    if (!field.write) return;
    dictionary_sink was;
    dictionary_sink is;
    field.write(before, field.key, was);
    field.write(after, field.key, is);
    const auto old_values = was.take();
    const auto new_values = is.take();
    const std::string key(field.key);
    if (const auto* old_value = old_values.find(key)) {
        const auto* new_value = new_values.find(key);
        if (!new_value || !(*new_value == *old_value)) back.set.set(key, *old_value);
    } else if (!new_values.empty()) {
        back.unset.emplace_back(key);
    }
}

// Sets and takes away values by their stored keys. A value of the wrong type takes the field's value away.
// Keys that `table` does not know, or that `may_change` refuses, are passed over. Returns which fields were
// touched.
template <class Table, class Reading, class May_change>
std::array<bool, std::tuple_size_v<Table>> change_members(const Table& table, const property_dictionary& set,
                                                          const property_array& unset, Reading& reading,
                                                          May_change may_change) {
    std::array<bool, std::tuple_size_v<Table>> touched{};
    const auto place_of = [&](std::string_view key) {
        const auto place = find_stored_key(table, key, 0);
        return place.index < table.size() && may_change(table[place.index].key) ? place.index : table.size();
    };
    for (const auto& key : unset) {
        const std::size_t index = key.text() ? place_of(*key.text()) : table.size();
        if (index == table.size()) continue;
        table[index].unset(reading);
        touched[index] = true;
    }
    stored_arena arena;
    for (const auto& entry : set) {
        const std::size_t index = place_of(entry.key);
        if (index == table.size()) continue;
        if (!table[index].read(reading, view_of(entry.value, arena))) table[index].unset(reading);
        touched[index] = true;
    }
    return touched;
}

}  // namespace vistels
