// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "app/settings/places.h"
#include "app/settings/settings_file.h"
#include "logger/press_settings.h"
#include "util/result.h"

namespace vistels {

// The settings of all code windows, each value in a file of its own in the state folder's "Logger". A file or
// value that is missing or of the wrong type leaves the default.

press_settings load_press_settings(const home_places& places);
// Writes the values that differ from those that are in force.
result<void> save_press_settings(const home_places& places, const press_settings& settings);

// The link type that a new link between buttons gets, as stored; kept whatever it is.
std::string load_default_link_type(const home_places& places);
result<void> save_default_link_type(const home_places& places, const std::string& type);

// The automatic presser, which presses buttons at random.
struct test_press_settings {
    bool presses_buttons = false;
    std::int64_t buttons_each_cycle = 1;  // from 1 to most_buttons
    double seconds_between_cycles = 1;    // from least_seconds to most_seconds
    bool deletes_recent_clips = false;
    bool copies_recent_clips_to_a_composer = false;  // only kept

    static constexpr int most_buttons = 1000;
    static constexpr double least_seconds = 0.01;
    static constexpr double most_seconds = 3600;

    bool operator==(const test_press_settings&) const = default;
};
// What is stored beyond the limits counts as the limit.
test_press_settings load_test_press_settings(const home_places& places);
result<void> save_test_press_settings(const home_places& places, const test_press_settings& settings);

// All files above.
const std::vector<settings_file>& code_window_settings_files();

}  // namespace vistels
