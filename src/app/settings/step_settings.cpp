// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings/step_settings.h"

#include <algorithm>
#include <cmath>

namespace vistels {

namespace {

constexpr const char* frames_back_key = "frames back";
constexpr const char* frames_on_key = "frames on";
constexpr const char* lead_in_key = "lead in seconds";

double number_in(const property_dictionary& stored, const char* key, double usual, double least,
                 double most) {
    const auto* const value = stored.find(key);
    const auto number = value ? value->number() : std::nullopt;
    return number && std::isfinite(*number) ? std::clamp(*number, least, most) : usual;
}

}  // namespace

const settings_file step_settings_file{"Playback", "steps.plist"};

step_settings load_step_settings(const home_places& places) {
    const auto stored = read_settings(places, step_settings_file);
    const step_settings usual;
    const auto frames = [&](const char* key, int otherwise) {
        return static_cast<int>(number_in(stored, key, otherwise, 1, step_settings::most_frames));
    };
    return {frames(frames_back_key, usual.frames_back), frames(frames_on_key, usual.frames_on),
            number_in(stored, lead_in_key, usual.lead_in_seconds, 0, step_settings::most_lead_in_seconds)};
}

result<void> save_step_settings(const home_places& places, const step_settings& settings) {
    property_dictionary stored;
    stored.add(frames_back_key, settings.frames_back);
    stored.add(frames_on_key, settings.frames_on);
    stored.add(lead_in_key, settings.lead_in_seconds);
    return write_settings(places, step_settings_file, stored);
}

}  // namespace vistels
