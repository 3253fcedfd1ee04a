// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "util/file_system.h"
#include "util/property_list.h"
#include "util/safe_write.h"

namespace vistels {

namespace {

// Where a setting is stored: a file of its own in a folder of the state folder.
struct setting_place {
    const char* folder;  // may be empty
    const char* file;
    const char* key;
};

constexpr setting_place top_speed_place{"Playback", "playback top speed.plist", "playback top speed"};
constexpr setting_place pitch_place{"Collection", "pitch algorithm.plist", "pitch algorithm"};
constexpr setting_place volume_place{"", "application volume.plist", "application volume"};
constexpr setting_place operator_place{"Formulas", "default formula operator.plist",
                                       "default formula operator"};
constexpr setting_place free_space_place{"Vault preferences",
                                         "minimum free space for vault for warning.plist",
                                         "minimum vault free space percent (valid range 1-99, default 10)"};
constexpr setting_place focus_vault_place{"Vault preferences", "focus vault.plist", "path of focus vault"};

constexpr double largest_rate = 64;
constexpr double fastest_rewind = -8;
constexpr int default_free_space_percent = 10;

std::string folder_of(const home_places& places, const setting_place& place) {
    return *place.folder ? path_join(places.state_folder, place.folder) : places.state_folder;
}

property_value load(const home_places& places, const setting_place& place) {
    const auto stored = read_dictionary_or_empty(path_join(folder_of(places, place), place.file));
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
    const std::string folder = folder_of(places, place);
    if (auto made = make_folders(folder); !made) return made;
    property_dictionary stored;
    stored.add(place.key, std::move(value));
    return safe_write(path_join(folder, place.file), stored);
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
    return failure{std::string("\"") + symbol + "\" is no operator of formulas."};
}

int load_minimum_free_space_percent(const home_places& places) {
    const auto percent = load(places, free_space_place).integer().value_or(default_free_space_percent);
    return percent >= 1 && percent <= 99 ? static_cast<int>(percent) : default_free_space_percent;
}

result<void> save_minimum_free_space_percent(const home_places& places, int percent) {
    return save(places, free_space_place, std::clamp(percent, 1, 99));
}

std::string load_focus_vault(const home_places& places) {
    return load_text(places, focus_vault_place);
}

result<void> save_focus_vault(const home_places& places, const std::string& vault) {
    return save(places, focus_vault_place, vault);
}

property_dictionary settings_in_force(const home_places& places) {
    property_dictionary all;
    all.add("playback top speed", load_playback_top_speed(places).rate);
    all.add("pitch algorithm", pitch_algorithm_text(load_pitch_algorithm(places)));
    all.add("application volume", load_application_volume(places));
    all.add("default formula operator", std::string(1, load_default_formula_operator(places)));
    all.add("minimum vault free space percent", load_minimum_free_space_percent(places));
    all.add("path of focus vault", load_focus_vault(places));
    return all;
}

}  // namespace vistels
