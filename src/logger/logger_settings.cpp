// SPDX-License-Identifier: GPL-3.0-or-later
#include "logger/logger_settings.h"

#include <cmath>
#include <utility>

namespace vistels {

namespace {

constexpr int background_colour_decimals = 4;
constexpr const char* timeline_key = "linked timeline uuid";
constexpr const char* x_key = "big scroller offset x";
constexpr const char* y_key = "big scroller offset y";
constexpr const char* background_key = "background color";
constexpr const char* mode_key = "remember markup mode";

double finite_or_zero(std::optional<double> number) {
    return number && std::isfinite(*number) ? *number : 0;
}

}  // namespace

logger_settings read_logger_settings(const property_dictionary& stored) {
    logger_settings settings;
    settings.scroller_offset_x = finite_or_zero(stored.number(x_key));
    settings.scroller_offset_y = finite_or_zero(stored.number(y_key));
    if (const auto* text = stored.text(background_key)) settings.background_colour = colour_from_text(*text);
    settings.remember_markup_mode = stored.boolean(mode_key).value_or(false);
    settings.linked_timeline_uuid = stored.text_or_empty(timeline_key);
    settings.kept = stored;
    return settings;
}

property_dictionary write_logger_settings(const logger_settings& settings) {
    property_dictionary stored = settings.kept;
    const logger_settings read = read_logger_settings(stored);
    const auto put = [&stored](const char* key, const auto& before, const auto& now, property_value value) {
        if (now == before) return;
        if (now == std::decay_t<decltype(now)>()) return stored.remove(key);
        stored.set(key, std::move(value));
    };
    const auto& background = settings.background_colour;
    put(x_key, read.scroller_offset_x, settings.scroller_offset_x, settings.scroller_offset_x);
    put(y_key, read.scroller_offset_y, settings.scroller_offset_y, settings.scroller_offset_y);
    put(background_key, read.background_colour, background,
        background ? colour_text(*background, background_colour_decimals) : std::string());
    put(mode_key, read.remember_markup_mode, settings.remember_markup_mode, settings.remember_markup_mode);
    put(timeline_key, read.linked_timeline_uuid, settings.linked_timeline_uuid,
        settings.linked_timeline_uuid);
    return stored;
}

logger_settings load_logger_settings(const std::string& logger_folder, std::vector<failure>* messages) {
    return read_logger_settings(
        read_code_window_file(path_join(logger_folder, logger_info_file_name), messages));
}

result<void> save_logger_settings(const logger_settings& settings, const std::string& logger_folder,
                                  file_system& files, std::vector<file_conflict>* met) {
    return save_code_window_file(path_join(logger_folder, logger_info_file_name),
                                 write_logger_settings(settings), files, met);
}

std::string logger_offsets::source_object() const {
    const auto* sync = kept.dictionary("sync data dict - markup");
    return sync ? sync->text_or_empty("source object - markup") : std::string();
}

logger_offsets load_logger_offsets(const std::string& logger_folder, std::vector<failure>* messages) {
    return {read_code_window_file(path_join(logger_folder, logger_offsets_file_name), messages)};
}

result<void> save_logger_offsets(const logger_offsets& offsets, const std::string& logger_folder,
                                 file_system& files, std::vector<file_conflict>* met) {
    return save_code_window_file(path_join(logger_folder, logger_offsets_file_name), offsets.kept, files,
                                 met);
}

}  // namespace vistels
