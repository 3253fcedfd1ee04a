// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/logger_Dict_funcs.h"

#include <cmath>
#include <set>

#include "logger/logger_failures.h"
#include "util/file_failures.h"
#include "util/property_list.h"
#include "util/safe_write.h"
#include "util/uuid.h"

namespace vistels {

namespace {

constexpr const char* version_key = "version markup";
constexpr const char* buttons_key = "array objects";
constexpr const char* count_key = "number of markups";
constexpr int background_colour_decimals = 4;

double finite_or(std::optional<double> number, double otherwise) {
    return number && std::isfinite(*number) ? *number : otherwise;
}

std::optional<colour> colour_under(const property_dictionary& stored, const char* key) {
    const auto* text = stored.text(key);
    return text ? colour_from_text(*text) : std::nullopt;
}

}  // namespace

std::string logger_folder_of(const std::string& folder) {
    return has_button_dict(folder) ? folder : path_join(folder, logger_folder_name);
}

bool has_button_dict(const std::string& logger_folder) {
    return file_exists(path_join(logger_folder, button_file_name));
}

button_dict read_button_dict(const property_dictionary& document) {
    button_dict all;
    all.version_markup = document.integer(version_key).value_or(all.version_markup);
    std::set<std::string> uuids;
    if (const auto* array = document.array(buttons_key)) {
        for (const auto& value : *array) {
            if (!value.dictionary()) continue;
            auto button = read_button(*value.dictionary());
            if (!uuids.insert(button.uuid()).second) button.set_made_up_uuid(new_uuid());
            all.buttons.push_back(std::move(button));
        }
    }
    all.kept = document;
    all.kept.remove(buttons_key);
    return all;
}

property_dictionary write_button_dict(const button_dict& all) {
    property_dictionary document = all.kept;
    document.set(version_key, all.version_markup);
    property_array buttons;
    for (const auto& button : all.buttons) buttons.emplace_back(write_button(button));
    document.set(buttons_key, std::move(buttons));
    return document;
}

result<button_dict> load_button_dict(const std::string& logger_folder) {
    const std::string path = path_join(logger_folder, button_file_name);
    const auto read = read_property_list_file(path);
    if (!read) return read.error();
    const auto* document = read.value().dictionary();
    if (!document) return file_cannot_be_read(path, file_holds_no_code_window());
    return read_button_dict(*document);
}

result<void> save_button_dict(const button_dict& all, const std::string& logger_folder, file_system& files) {
    if (auto made = make_folders(logger_folder, files); !made) return made;
    auto saved = safe_write(path_join(logger_folder, button_file_name), write_button_dict(all), files);
    if (!saved) return saved;
    const std::string path = path_join(logger_folder, logger_file_name);
    auto marker = read_dictionary_or_empty(path);
    marker.set(count_key, static_cast<std::int64_t>(all.buttons.size()));
    return safe_write(path, marker, files);
}

logger_settings load_logger_settings(const std::string& logger_folder) {
    logger_settings settings;
    settings.kept = read_dictionary_or_empty(path_join(logger_folder, logger_info_file_name));
    const auto& stored = settings.kept;
    settings.scroller_offset_x = finite_or(stored.number("big scroller offset x"), 0);
    settings.scroller_offset_y = finite_or(stored.number("big scroller offset y"), 0);
    settings.background_colour = colour_under(stored, "background color");
    settings.remember_markup_mode = stored.boolean("remember markup mode").value_or(false);
    settings.linked_timeline_uuid = stored.text_or_empty("linked timeline uuid");
    return settings;
}

result<void> save_logger_settings(const logger_settings& settings, const std::string& logger_folder,
                                  file_system& files) {
    property_dictionary stored = settings.kept;
    const auto put = [&stored](const char* key, bool is_as_read, property_value value) {
        if (!is_as_read) stored.set(key, std::move(value));
    };
    const auto& read = settings.kept;
    const auto x = settings.scroller_offset_x;
    const auto y = settings.scroller_offset_y;
    put("big scroller offset x", x == finite_or(read.number("big scroller offset x"), 0), x);
    put("big scroller offset y", y == finite_or(read.number("big scroller offset y"), 0), y);
    if (settings.background_colour) {
        put("background color", settings.background_colour == colour_under(read, "background color"),
            colour_text(*settings.background_colour, background_colour_decimals));
    } else if (colour_under(read, "background color")) {
        stored.remove("background color");
    }
    put("remember markup mode",
        settings.remember_markup_mode == read.boolean("remember markup mode").value_or(false),
        settings.remember_markup_mode);
    put("linked timeline uuid", settings.linked_timeline_uuid == read.text_or_empty("linked timeline uuid"),
        settings.linked_timeline_uuid);
    if (auto made = make_folders(logger_folder, files); !made) return made;
    return safe_write(path_join(logger_folder, logger_info_file_name), stored, files);
}

}  // namespace vistels
