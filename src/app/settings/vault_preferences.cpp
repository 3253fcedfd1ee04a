// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings/vault_preferences.h"

#include "app/settings/settings_failures.h"

namespace vistels {

namespace {

constexpr const char* folder = "Vault preferences";

constexpr settings_file free_space_file{folder, "minimum free space for vault for warning.plist"};
constexpr const char* free_space_key = "minimum vault free space percent (valid range 1-99, default 10)";
constexpr settings_file show_unavailable_file{folder, "show unavailable vaults.plist"};
constexpr const char* show_unavailable_key = "show unavailable vaults";
constexpr settings_file focus_file{folder, "focus vault.plist"};
constexpr const char* focus_path_key = "path of focus vault";
constexpr const char* focus_bookmark_key = "path of focus vault bookmark";
constexpr settings_file new_vault_file{folder, "create_new_vault_settings.plist"};
constexpr const char* new_vault_parent_key = "parent_folder";
constexpr const char* new_vault_name_key = "vault_name";
constexpr settings_file focus_to_new_file{folder, "set focus to new vault.plist"};
constexpr const char* focus_to_new_key = "set focus to new vault";
constexpr settings_file vaults_file{folder, "vaults.plist"};
constexpr const char* vaults_key = "vaults";

constexpr int smallest_percent = 1;
constexpr int largest_percent = 99;

std::string path_at(const property_dictionary& stored, const char* key) {
    const auto* value = stored.find(key);
    return value ? path_from(*value) : std::string();
}

// An empty path takes its key away.
property_value path_or_null(const std::string& path) {
    return path.empty() ? property_value() : stored_path(path);
}

result<void> save_flag(const home_places& places, const settings_file& file, const char* key, bool value) {
    property_dictionary stored;
    stored.add(key, value);
    return write_settings(places, file, stored);
}

}  // namespace

minimum_free_space_setting load_minimum_free_space(const home_places& places) {
    minimum_free_space_setting setting;
    const auto percent = read_settings(places, free_space_file).integer(free_space_key);
    if (percent && *percent >= smallest_percent && *percent <= largest_percent) {
        setting.percent = static_cast<int>(*percent);
    }
    return setting;
}

result<void> save_minimum_free_space(const home_places& places, minimum_free_space_setting setting) {
    if (setting.percent < smallest_percent || setting.percent > largest_percent) {
        return free_space_is_no_percentage(setting.percent);
    }
    property_dictionary stored;
    stored.add(free_space_key, setting.percent);
    return write_settings(places, free_space_file, stored);
}

show_unavailable_vaults_setting load_show_unavailable_vaults(const home_places& places) {
    show_unavailable_vaults_setting setting;
    setting.shown =
        read_settings(places, show_unavailable_file).boolean(show_unavailable_key).value_or(setting.shown);
    return setting;
}

result<void> save_show_unavailable_vaults(const home_places& places,
                                          show_unavailable_vaults_setting setting) {
    return save_flag(places, show_unavailable_file, show_unavailable_key, setting.shown);
}

focus_vault_setting load_focus_vault_setting(const home_places& places) {
    const auto stored = read_settings(places, focus_file);
    focus_vault_setting setting;
    setting.path = path_at(stored, focus_path_key);
    if (const auto* bookmark = stored.find(focus_bookmark_key); bookmark && bookmark->data()) {
        setting.bookmark = bookmark->data()->bytes;
    }
    return setting;
}

result<void> save_focus_vault_setting(const home_places& places, const focus_vault_setting& setting) {
    property_dictionary stored;
    stored.add(focus_path_key, path_or_null(setting.path));
    stored.add(focus_bookmark_key,
               setting.bookmark ? property_value(property_data{*setting.bookmark}) : property_value());
    return write_settings(places, focus_file, stored);
}

create_new_vault_settings load_create_new_vault_settings(const home_places& places) {
    const auto stored = read_settings(places, new_vault_file);
    return {path_at(stored, new_vault_parent_key), stored.text_or_empty(new_vault_name_key)};
}

result<void> save_create_new_vault_settings(const home_places& places,
                                            const create_new_vault_settings& settings) {
    property_dictionary stored;
    stored.add(new_vault_parent_key, path_or_null(settings.parent_folder));
    stored.add(new_vault_name_key, settings.vault_name);
    return write_settings(places, new_vault_file, stored);
}

set_focus_to_new_vault_setting load_set_focus_to_new_vault(const home_places& places) {
    set_focus_to_new_vault_setting setting;
    setting.set = read_settings(places, focus_to_new_file).boolean(focus_to_new_key).value_or(setting.set);
    return setting;
}

result<void> save_set_focus_to_new_vault(const home_places& places, set_focus_to_new_vault_setting setting) {
    return save_flag(places, focus_to_new_file, focus_to_new_key, setting.set);
}

added_vaults_setting load_added_vaults(const home_places& places) {
    added_vaults_setting setting;
    const auto stored = read_settings(places, vaults_file);
    if (const auto* paths = stored.array(vaults_key)) {
        for (const auto& value : *paths) {
            if (std::string path = path_from(value); !path.empty()) setting.paths.push_back(std::move(path));
        }
    }
    return setting;
}

result<void> save_added_vaults(const home_places& places, const added_vaults_setting& setting) {
    property_array paths;
    for (const auto& path : setting.paths) paths.push_back(stored_path(path));
    property_dictionary stored;
    stored.add(vaults_key, std::move(paths));
    return write_settings(places, vaults_file, stored);
}

const std::vector<settings_file>& vault_preference_files() {
    static const std::vector<settings_file> files{free_space_file, show_unavailable_file, focus_file,
                                                  new_vault_file,  focus_to_new_file,     vaults_file};
    return files;
}

}  // namespace vistels
