// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/files/chron_header.h"

#include "timeline/files/sxy_Save_Load.h"
#include "timeline/form/stored_values.h"
#include "util/checksum.h"
#include "util/clock.h"
#include "util/property_list.h"
#include "util/safe_write.h"

namespace vistels {

namespace {

using header = timeline_header;

template <class Record, auto Member>
constexpr auto plain(std::string_view key) {
    return stored_member_field<in_record<Record>, Member>(key);
}

// Of values of any type, written back as they were read.
constexpr std::string_view kept_keys[] = {
    "source path video collection opened with - optional - bookmark",
    "last time copied between folders  - timeline i7",
};
template <std::size_t index>
constexpr stored_field<header> kept() {
    return {kept_keys[index],
            {},
            [](stored_reading<header>& reading, const stored_view& from) {
                reading.to.kept.set(kept_keys[index], from.copy());
                return true;
            },
            [](const header& from, std::string_view key, stored_sink& to) {
                if (const auto* value = from.kept.find(key)) to.put(key, *value);
            },
            [](stored_reading<header>& reading) { reading.to.kept.remove(kept_keys[index]); }};
}

template <file_content_mark header::*Mark>
constexpr stored_field<header> size_of(std::string_view key) {
    return {key,
            {},
            [](stored_reading<header>& reading, const stored_view& from) {
                const auto size = from.integer();
                if (size && *size >= 0) (reading.to.*Mark).size = *size;
                return size.has_value();
            },
            [](const header& from, std::string_view name, stored_sink& to) {
                if ((from.*Mark).size >= 0) to.put(name, (from.*Mark).size);
            },
            [](stored_reading<header>& reading) { (reading.to.*Mark).size = -1; }};
}

// As text, since a number of 64 bits is more than some readers keep.
template <file_content_mark header::*Mark>
constexpr stored_field<header> hash_of(std::string_view key) {
    return {key,
            {},
            [](stored_reading<header>& reading, const stored_view& from) {
                const auto text = from.text();
                const auto hash = text ? checksum_from_text(*text) : std::nullopt;
                (reading.to.*Mark).hash = hash.value_or(0);
                return hash.has_value();
            },
            [](const header& from, std::string_view name, stored_sink& to) {
                if ((from.*Mark).size >= 0) to.put(name, checksum_text((from.*Mark).hash));
            },
            [](stored_reading<header>& reading) { (reading.to.*Mark).hash = 0; }};
}

constexpr std::array header_table{
    plain<header, &header::uuid>("UUID chronology header"),
    plain<header, &header::full_row_colored>("full row colored"),
    plain<header, &header::created_by>("created by"),
    plain<header, &header::secondary_header>("UUID secondary chronology header"),
    plain<header, &header::linked_collection>("UUID linked collection"),
    plain<header, &header::source_path>("source path video collection opened with - optional"),
    kept<0>(),
    plain<header, &header::name>("chronology name"),
    plain<header, &header::duration>("duration"),
    plain<header, &header::pixels_per_second>("pixels per second"),
    plain<header, &header::body_left>("body left"),
    plain<header, &header::block_auto_relinking>("block_auto_relinking"),
    kept<1>(),
    plain<header, &header::name_column_width>("name column width"),
    plain<header, &header::last_saved>("last saved"),
    plain<header, &header::unlinked_message_created_by>("unlinked collection message created by"),
    [] {
        auto field = plain<header, &header::cursor_seconds>("cursor seconds");
        field.write = [](const header& from, std::string_view key, stored_sink& to) {
            to.put(key, from.cursor_seconds);
        };
        return field;
    }(),
    size_of<&header::data>("data size"),
    hash_of<&header::data>("data hash"),
    size_of<&header::data_before>("data size before"),
    hash_of<&header::data_before>("data hash before"),
};

// A value of any type; null while it is not there.
template <property_value timeline_summary::*Member>
constexpr stored_field<timeline_summary> any_value(std::string_view key) {
    return {key,
            {},
            [](stored_reading<timeline_summary>& reading, const stored_view& from) {
                reading.to.*Member = from.copy();
                return true;
            },
            [](const timeline_summary& from, std::string_view name, stored_sink& to) {
                if (!(from.*Member).is_null()) to.put(name, from.*Member);
            },
            [](stored_reading<timeline_summary>& reading) { reading.to.*Member = {}; }};
}

constexpr std::array summary_table{
    plain<timeline_summary, &timeline_summary::secondary_uuid>("secondary uuid - sxy"),
    any_value<&timeline_summary::source_object>("source object - sxy"),
    any_value<&timeline_summary::sync_data_dict>("sync data dict - sxy"),
};

template <class Record, class Table>
Record read_all(const Table& table, const property_dictionary& stored) {
    stored_arena arena;
    text_cache texts;
    Record record;
    stored_reading<Record> reading{record, texts};
    read_members(table, view_of(stored, arena).members(), reading);
    return record;
}

template <class Table, class Record>
property_dictionary write_all(const Table& table, const Record& record) {
    dictionary_sink sink;
    write_members(table, record, sink);
    return sink.take();
}

}  // namespace

timeline_header read_timeline_header(const property_dictionary& stored) {
    return read_all<timeline_header>(header_table, stored);
}

property_dictionary write_timeline_header(const timeline_header& header) {
    timeline_header saved = header;
    saved.last_saved = seconds_since_1970();
    return write_all(header_table, saved);
}

timeline_header load_timeline_header(const std::string& folder) {
    return read_timeline_header(read_dictionary_or_empty(path_join(folder, timeline_header_file_name)));
}

result<void> save_timeline_header(const timeline_header& header, const std::string& folder,
                                  file_system& files) {
    const auto before = load_timeline_header(folder);
    timeline_header saved = header;
    saved.data = {};
    saved.data_before = before.data;
    if (const std::string path = path_join(folder, timeline_file_name); file_exists(path)) {
        const auto bytes = read_file(path, files);
        if (!bytes) return bytes.error();
        saved.data = content_mark_of(bytes.value());
        if (saved.data == before.data) saved.data_before = before.data_before;
    }
    return safe_write(path_join(folder, timeline_header_file_name), write_timeline_header(saved), files);
}

timeline_summary load_timeline_summary(const std::string& folder) {
    const auto path = path_join(folder, timeline_summary_file_name);
    return read_all<timeline_summary>(summary_table, read_dictionary_or_empty(path));
}

result<void> save_timeline_summary(const timeline_summary& summary, const std::string& folder,
                                   file_system& files) {
    const auto path = path_join(folder, timeline_summary_file_name);
    return safe_write(path, write_all(summary_table, summary), files);
}

result<void> save_save_time(const std::string& folder, const std::string& saver, file_system& files) {
    property_dictionary now;
    now.add("last saved", seconds_since_1970());
    now.add("uuid last saved", saver);
    return safe_write(path_join(folder, timeline_save_time_file_name), now, files);
}

}  // namespace vistels
