// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "app/places.h"
#include "app/settings_file.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

// One struct for each settings file: read whole, written whole. A file or value that is missing or of the
// wrong type leaves the default.

struct playback_top_speed {
    double rate = 64;  // largest rate; negative: fastest rewind. Kept within -8 and 64
};
playback_top_speed load_playback_top_speed(const home_places& places);
result<void> save_playback_top_speed(const home_places& places, playback_top_speed speed);

enum class pitch_algorithm { varispeed, time_domain };
const char* pitch_algorithm_text(pitch_algorithm algorithm);
pitch_algorithm load_pitch_algorithm(const home_places& places);
result<void> save_pitch_algorithm(const home_places& places, pitch_algorithm algorithm);

double load_application_volume(const home_places& places);  // 0 to 1
result<void> save_application_volume(const home_places& places, double volume);

// The operator that joins a further term to a formula: "&", "|" or "!".
char load_default_formula_operator(const home_places& places);
result<void> save_default_formula_operator(const home_places& places, char symbol);

// All files above.
const std::vector<settings_file>& application_settings_files();

// All settings in force, those of the vaults too, by the keys under which `settings show` prints them.
property_dictionary settings_in_force(const home_places& places);

}  // namespace vistels
