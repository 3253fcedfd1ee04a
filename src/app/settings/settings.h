// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "app/settings/places.h"
#include "app/settings/settings_file.h"
#include "util/property_value.h"
#include "util/result.h"
#include "video/pitch_algorithm.h"

namespace vistels {

// One struct for each settings file: read whole, written whole. A file or value that is missing or of the
// wrong type leaves the default.

struct playback_top_speed {
    double rate = 64;  // largest rate; negative: fastest rewind. Kept within -8 and 64
};
playback_top_speed load_playback_top_speed(const home_places& places);
result<void> save_playback_top_speed(const home_places& places, playback_top_speed speed);

const char* pitch_algorithm_text(pitch_algorithm algorithm);
pitch_algorithm load_pitch_algorithm(const home_places& places);
result<void> save_pitch_algorithm(const home_places& places, pitch_algorithm algorithm);

double load_application_volume(const home_places& places);  // 0 to 1
result<void> save_application_volume(const home_places& places, double volume);

// The operator that joins a further term to a formula: "&", "|" or "!".
char load_default_formula_operator(const home_places& places);
result<void> save_default_formula_operator(const home_places& places, char symbol);

// Whether clips that do not pass a filter are hidden instead of dimmed.
struct filtered_out_clips {
    bool are_hidden = false;
};
// As it is stored: "hide" or "dim".
const char* filtered_out_clips_text(filtered_out_clips setting);
filtered_out_clips load_filtered_out_clips(const home_places& places);
result<void> save_filtered_out_clips(const home_places& places, filtered_out_clips setting);

// Whether a vistel's name is drawn behind its number, where numbers are drawn.
struct show_vistel_number_name {
    bool shown = true;
};
show_vistel_number_name load_show_vistel_number_name(const home_places& places);
result<void> save_show_vistel_number_name(const home_places& places, show_vistel_number_name setting);

// Whether the data of new vistels is stored next to their collection instead of in the vault's folder.
struct local_video_data {
    bool in_collection_folder = false;
};
local_video_data load_local_video_data(const home_places& places);

// How far the split views of a collection are scrolled.
struct view_offsets {
    double vertical = 0;  // points
};
view_offsets load_view_offsets(const home_places& places);
result<void> save_view_offsets(const home_places& places, view_offsets offsets);

// All files above, and those of the user's name, of the colours in formulas, of the remembered filter texts
// and of the code windows.
const std::vector<settings_file>& application_settings_files();

}  // namespace vistels
