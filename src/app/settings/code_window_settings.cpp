// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings/code_window_settings.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

namespace vistels {

namespace {

constexpr const char* folder = "Logger";
constexpr settings_file inside_file{folder, "Bring qualifiers inside clip.plist"};
constexpr const char* inside_key = "bring qualifiers inside clip";
constexpr settings_file margin_file{folder, "margin padding seconds.plist"};
constexpr const char* margin_key = "margin padding seconds";
constexpr settings_file live_file{folder, "dont save live clips.plist"};
constexpr const char* live_key = "dont save live clips";
constexpr settings_file link_file{folder, "Default Markup Link Type.plist"};
constexpr const char* link_key = "Default Markup Link Type";
constexpr settings_file triggers_file{folder, "disable triggers.plist"};
constexpr const char* triggers_key = "stop triggers";
constexpr settings_file test_file{folder, "Test markup button presses.plist"};
constexpr const char* test_on_key = "turn on button pressing";
constexpr const char* test_count_key = "number of buttons to press each cycle";
constexpr const char* test_seconds_key = "seconds between button press cycles";
constexpr const char* test_delete_key = "delete some recent clips";
constexpr const char* test_copy_key = "copy some recent clips to a composer";

constexpr const char* usual_link_type = "ON_DOWN_SET_DOWN";

result<void> save(const home_places& places, const settings_file& file, const char* key,
                  property_value value) {
    property_dictionary stored;
    stored.add(key, std::move(value));
    return write_settings(places, file, stored);
}

bool load_flag(const home_places& places, const settings_file& file, const char* key) {
    return read_settings(places, file).boolean(key).value_or(false);
}

}  // namespace

press_settings load_press_settings(const home_places& places) {
    press_settings settings;
    settings.bring_qualifiers_inside_clip = load_flag(places, inside_file, inside_key);
    const auto margin = read_settings(places, margin_file).number(margin_key);
    if (margin && std::isfinite(*margin) && *margin >= 0) settings.margin_padding_seconds = *margin;
    settings.dont_save_live_clips = load_flag(places, live_file, live_key);
    settings.disable_triggers = load_flag(places, triggers_file, triggers_key);
    return settings;
}

result<void> save_press_settings(const home_places& places, const press_settings& settings) {
    const press_settings before = load_press_settings(places);
    result<void> done;
    if (settings.bring_qualifiers_inside_clip != before.bring_qualifiers_inside_clip)
        done = save(places, inside_file, inside_key, settings.bring_qualifiers_inside_clip);
    if (done && settings.margin_padding_seconds != before.margin_padding_seconds)
        done = save(places, margin_file, margin_key, settings.margin_padding_seconds);
    if (done && settings.dont_save_live_clips != before.dont_save_live_clips)
        done = save(places, live_file, live_key, settings.dont_save_live_clips);
    if (done && settings.disable_triggers != before.disable_triggers)
        done = save(places, triggers_file, triggers_key, settings.disable_triggers);
    return done;
}

std::string load_default_link_type(const home_places& places) {
    const auto stored = read_settings(places, link_file);
    const auto* type = stored.text(link_key);
    return type && !type->empty() ? *type : usual_link_type;
}

result<void> save_default_link_type(const home_places& places, const std::string& type) {
    return save(places, link_file, link_key, type);
}

test_press_settings load_test_press_settings(const home_places& places) {
    const auto stored = read_settings(places, test_file);
    test_press_settings settings;
    settings.presses_buttons = stored.boolean(test_on_key).value_or(false);
    settings.buttons_each_cycle = std::clamp<std::int64_t>(stored.integer(test_count_key).value_or(1), 1,
                                                           test_press_settings::most_buttons);
    const auto seconds = stored.number(test_seconds_key);
    if (seconds && std::isfinite(*seconds))
        settings.seconds_between_cycles =
            std::clamp(*seconds, test_press_settings::least_seconds, test_press_settings::most_seconds);
    settings.deletes_recent_clips = stored.boolean(test_delete_key).value_or(false);
    settings.copies_recent_clips_to_a_composer = stored.boolean(test_copy_key).value_or(false);
    return settings;
}

result<void> save_test_press_settings(const home_places& places, const test_press_settings& settings) {
    property_dictionary stored;
    stored.add(test_on_key, settings.presses_buttons);
    stored.add(test_count_key, settings.buttons_each_cycle);
    stored.add(test_seconds_key, settings.seconds_between_cycles);
    stored.add(test_delete_key, settings.deletes_recent_clips);
    stored.add(test_copy_key, settings.copies_recent_clips_to_a_composer);
    return write_settings(places, test_file, stored);
}

const std::vector<settings_file>& code_window_settings_files() {
    static const std::vector<settings_file> files{inside_file, margin_file,   live_file,
                                                  link_file,   triggers_file, test_file};
    return files;
}

}  // namespace vistels
