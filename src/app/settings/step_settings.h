// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/settings/places.h"
#include "app/settings/settings_file.h"

namespace vistels {

// How far a step of several frames goes, and how long before its start a clip is played.
struct step_settings {
    int frames_back = 10;  // from 1 to most_frames, as is the next
    int frames_on = 10;
    double lead_in_seconds = 0;  // from 0 to most_lead_in_seconds

    static constexpr int most_frames = 250;
    static constexpr double most_lead_in_seconds = 600;

    bool operator==(const step_settings&) const = default;
};
// What is stored beyond the limits counts as the limit.
step_settings load_step_settings(const home_places& places);
result<void> save_step_settings(const home_places& places, const step_settings& settings);

extern const settings_file step_settings_file;

}  // namespace vistels
