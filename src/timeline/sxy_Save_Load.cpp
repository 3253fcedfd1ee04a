// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/sxy_Save_Load.h"

#include <cmath>

#include "timeline/stored_keys.h"
#include "util/clock.h"
#include "util/json.h"
#include "util/property_list.h"
#include "util/safe_write.h"

namespace vistels {

namespace {

constexpr std::int64_t data_version = 2;

constexpr stored_key before_rows[] = {{"tags", nullptr, stored_kind::array}};

result<property_value> read_document(const std::string& path) {
    if (!path.ends_with(".json")) return read_property_list_file(path);
    const auto bytes = read_file(path);
    if (!bytes) return bytes.error();
    return read_json(bytes.value(), path);
}

row_pointer read_row(const property_dictionary& stored, double now, std::size_t& skipped_clips) {
    auto row = std::make_shared<sxy_ROW>(read_row_values(stored, now));
    const auto* array = stored.array("clips");
    if (!array) return row;
    std::vector<clip_pointer> clips;
    clips.reserve(array->size());
    for (const auto& value : *array) {
        auto clip = value.dictionary() ? read_clip(*value.dictionary()) : std::nullopt;
        if (clip) {
            clips.push_back(std::make_shared<const sxy_CLIP>(std::move(*clip)));
        } else {
            ++skipped_clips;
        }
    }
    row->clips().assign(std::move(clips));
    return row;
}

property_dictionary write_row(const sxy_ROW& row, std::size_t row_number, bool only_selected) {
    property_dictionary stored = write_row_values(row, row_number);
    property_array clips;
    for (const auto& clip : row.clips()) {
        if (only_selected && !(clip->selected() && clip->filtered_in())) continue;
        clips.emplace_back(write_clip(*clip));
    }
    if (!clips.empty()) stored.add("clips", std::move(clips));
    return stored;
}

}  // namespace

loaded_timeline read_timeline(const property_dictionary& stored) {
    loaded_timeline loaded;
    auto& content = loaded.content;
    content.uuid = stored.text_or_empty("uuid_timeline");
    content.description = stored.text_or_empty("description");
    if (const auto* by_category = stored.find("show_rows_by_category")) {
        content.kept.add("show_rows_by_category", *by_category);
    }
    keep_stored(stored, before_rows, content.kept);
    const double now = seconds_since_1970();
    if (const auto* rows = stored.array("rows")) {
        for (const auto& row : *rows) {
            if (row.dictionary())
                content.rows.push_back(read_row(*row.dictionary(), now, loaded.skipped_clips));
        }
    }
    return loaded;
}

property_dictionary write_timeline(const timeline_snapshot& timeline, bool only_selected) {
    property_dictionary stored;
    stored.add("row_count", static_cast<std::int64_t>(timeline.rows.size()));
    const auto* by_category = timeline.kept.find("show_rows_by_category");
    stored.add("show_rows_by_category", by_category ? *by_category : property_value(false));
    stored.add("data_version", data_version);
    if (!timeline.description.empty()) stored.add("description", timeline.description);
    if (only_selected) stored.add("only contains selected and filtered in clips", true);
    stored.add("uuid_timeline", timeline.uuid);
    put_kept(timeline.kept, before_rows, stored);
    property_array rows;
    for (const auto& row : timeline.rows) {
        auto written = write_row(*row, rows.size() + 1, only_selected);
        if (only_selected && !written.contains("clips")) continue;
        rows.emplace_back(std::move(written));
    }
    stored.add("rows", std::move(rows));
    return stored;
}

result<loaded_timeline> load_timeline(const std::string& source) {
    const std::string path = is_folder(source) ? path_join(source, timeline_file_name) : source;
    const auto document = read_document(path);
    if (!document) return document.error();
    const auto* dictionary = document.value().dictionary();
    if (!dictionary) return failure{"\"" + path + "\" cannot be read: it does not hold a timeline."};
    return read_timeline(*dictionary);
}

result<void> save_timeline(const timeline_snapshot& timeline, const std::string& folder, bool only_selected,
                           file_system& files) {
    return safe_write(path_join(folder, timeline_file_name), write_timeline(timeline, only_selected), files);
}

std::optional<std::vector<std::string>> read_row_names(const std::string& folder) {
    const auto stored = read_dictionary_or_empty(path_join(folder, timeline_file_name));
    const auto* rows = stored.array("rows");
    if (!rows || rows->empty()) return std::nullopt;
    std::vector<std::string> names;
    for (const auto& row : *rows) {
        if (!row.dictionary()) continue;
        const auto* name = stored_value(*row.dictionary(), {"row_name", "row name", stored_kind::text});
        names.push_back(name ? *name->text() : std::string());
    }
    return names;
}

timeline_header load_timeline_header(const std::string& folder) {
    timeline_header header;
    header.kept = read_dictionary_or_empty(path_join(folder, timeline_header_file_name));
    const auto& stored = header.kept;
    const auto number = [&](const char* key) {
        const auto value = stored.number(key).value_or(0.0);
        return std::isfinite(value) ? value : 0.0;
    };
    header.uuid = stored.text_or_empty("UUID chronology header");
    header.full_row_colored = stored.boolean("full row colored").value_or(false);
    header.created_by = stored.text_or_empty("created by");
    header.linked_collection = stored.text_or_empty("UUID linked collection");
    header.name = stored.text_or_empty("chronology name");
    header.duration = number("duration");
    header.pixels_per_second = number("pixels per second");
    header.body_left = number("body left");
    header.name_column_width = number("name column width");
    header.cursor_seconds = number("cursor seconds");
    return header;
}

result<void> save_timeline_header(const timeline_header& header, const std::string& folder,
                                  file_system& files) {
    property_dictionary stored;
    const auto text = [&](const char* key, const std::string& value) {
        if (!value.empty()) stored.add(key, value);
    };
    const auto kept = [&](const char* key) {
        if (const auto* value = header.kept.find(key)) stored.add(key, *value);
    };
    const auto number = [&](const char* key, double value) {
        if (value != 0) stored.add(key, value);
    };
    text("UUID chronology header", header.uuid);
    stored.add("full row colored", header.full_row_colored);
    text("created by", header.created_by);
    kept("UUID secondary chronology header");
    text("UUID linked collection", header.linked_collection);
    kept("source path video collection opened with - optional");
    kept("source path video collection opened with - optional - bookmark");
    text("chronology name", header.name);
    number("duration", header.duration);
    number("pixels per second", header.pixels_per_second);
    number("body left", header.body_left);
    kept("block_auto_relinking");
    kept("last time copied between folders  - timeline i7");
    number("name column width", header.name_column_width);
    stored.add("last saved", seconds_since_1970());
    kept("unlinked collection message created by");
    stored.add("cursor seconds", header.cursor_seconds);
    return safe_write(path_join(folder, timeline_header_file_name), stored, files);
}

result<void> save_save_time(const std::string& folder, const std::string& saver, file_system& files) {
    property_dictionary stored;
    stored.add("last saved", seconds_since_1970());
    stored.add("uuid last saved", saver);
    return safe_write(path_join(folder, timeline_save_time_file_name), stored, files);
}

}  // namespace vistels
