// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings/settings.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "app/settings/code_window_settings.h"
#include "app/settings/formula_colours.h"
#include "app/settings/search_patterns.h"
#include "app/settings/settings_failures.h"
#include "app/settings/step_settings.h"
#include "app/settings/user_name.h"

namespace vistels {

namespace {

// Where a setting is stored: the one key of a file of its own.
struct setting_place {
    settings_file file;
    const char* key;
};

constexpr setting_place top_speed_place{{"Playback", "playback top speed.plist"}, "playback top speed"};
constexpr setting_place pitch_place{{"Collection", "pitch algorithm.plist"}, "pitch algorithm"};
constexpr setting_place volume_place{{"", "application volume.plist"}, "application volume"};
constexpr setting_place operator_place{{"Formulas", "default formula operator.plist"},
                                       "default formula operator"};
constexpr setting_place filtered_out_place{{"Formulas", "filtered out clips.plist"}, "filtered out clips"};
constexpr setting_place number_name_place{{"Collection", "show vistel number name.plist"},
                                          "show_vistel_name_with_number"};
constexpr setting_place local_data_place{{"Collection", "local video data.plist"},
                                         "store video data in collection folder"};
constexpr setting_place view_offsets_place{{"Collection", "view offsets.plist"}, "vertical"};

constexpr double largest_rate = 64;
constexpr double fastest_rewind = -8;

property_value load(const home_places& places, const setting_place& place) {
    const auto stored = read_settings(places, place.file);
    const auto* value = stored.find(place.key);
    return value ? *value : property_value();
}

std::optional<double> load_number(const home_places& places, const setting_place& place) {
    const auto number = load(places, place).number();
    return number && std::isfinite(*number) ? number : std::nullopt;
}

std::string load_text(const home_places& places, const setting_place& place) {
    const auto value = load(places, place);
    return value.text() ? *value.text() : std::string();
}

result<void> save(const home_places& places, const setting_place& place, property_value value) {
    property_dictionary stored;
    stored.add(place.key, std::move(value));
    return write_settings(places, place.file, stored);
}

struct operator_word {
    char symbol;
    const char* word;
};
constexpr operator_word operator_words[] = {{'&', "and"}, {'|', "or"}, {'!', "not"}};

}  // namespace

playback_top_speed load_playback_top_speed(const home_places& places) {
    playback_top_speed speed;
    if (const auto rate = load_number(places, top_speed_place)) {
        speed.rate = std::clamp(*rate, fastest_rewind, largest_rate);
    }
    return speed;
}

result<void> save_playback_top_speed(const home_places& places, playback_top_speed speed) {
    return save(places, top_speed_place, std::clamp(speed.rate, fastest_rewind, largest_rate));
}

const char* pitch_algorithm_text(pitch_algorithm algorithm) {
    return algorithm == pitch_algorithm::time_domain ? "TimeDomain" : "Varispeed";
}

pitch_algorithm load_pitch_algorithm(const home_places& places) {
    const bool is_time_domain =
        load_text(places, pitch_place) == pitch_algorithm_text(pitch_algorithm::time_domain);
    return is_time_domain ? pitch_algorithm::time_domain : pitch_algorithm::varispeed;
}

result<void> save_pitch_algorithm(const home_places& places, pitch_algorithm algorithm) {
    return save(places, pitch_place, pitch_algorithm_text(algorithm));
}

double load_application_volume(const home_places& places) {
    return std::clamp(load_number(places, volume_place).value_or(1), 0.0, 1.0);
}

result<void> save_application_volume(const home_places& places, double volume) {
    return save(places, volume_place, std::clamp(volume, 0.0, 1.0));
}

char load_default_formula_operator(const home_places& places) {
    const std::string word = load_text(places, operator_place);
    for (const auto& entry : operator_words) {
        if (word == entry.word) return entry.symbol;
    }
    return '&';
}

result<void> save_default_formula_operator(const home_places& places, char symbol) {
    for (const auto& entry : operator_words) {
        if (entry.symbol == symbol) return save(places, operator_place, entry.word);
    }
    return operator_is_unknown(std::string(1, symbol));
}

const char* filtered_out_clips_text(filtered_out_clips setting) {
    return setting.are_hidden ? "hide" : "dim";
}

filtered_out_clips load_filtered_out_clips(const home_places& places) {
    return {load_text(places, filtered_out_place) == filtered_out_clips_text({true})};
}

result<void> save_filtered_out_clips(const home_places& places, filtered_out_clips setting) {
    return save(places, filtered_out_place, filtered_out_clips_text(setting));
}

show_vistel_number_name load_show_vistel_number_name(const home_places& places) {
    return {load(places, number_name_place).boolean().value_or(true)};
}

result<void> save_show_vistel_number_name(const home_places& places, show_vistel_number_name setting) {
    return save(places, number_name_place, setting.shown);
}

local_video_data load_local_video_data(const home_places& places) {
    return {load(places, local_data_place).boolean().value_or(false)};
}

view_offsets load_view_offsets(const home_places& places) {
    return {load_number(places, view_offsets_place).value_or(0)};
}

result<void> save_view_offsets(const home_places& places, view_offsets offsets) {
    return save(places, view_offsets_place, offsets.vertical);
}

const std::vector<settings_file>& application_settings_files() {
    static const std::vector<settings_file> files = [] {
        std::vector<settings_file> all{top_speed_place.file,  pitch_place.file,        volume_place.file,
                                       operator_place.file,   filtered_out_place.file, number_name_place.file,
                                       local_data_place.file, view_offsets_place.file, user_name_file,
                                       formula_colours_file,  search_patterns_file,    step_settings_file};
        const auto& of_code_windows = code_window_settings_files();
        all.insert(all.end(), of_code_windows.begin(), of_code_windows.end());
        return all;
    }();
    return files;
}

}  // namespace vistels
