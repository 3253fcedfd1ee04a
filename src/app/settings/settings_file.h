// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/settings/places.h"
#include "util/property_value.h"
#include "util/result.h"

namespace vistels {

// A file of settings in a folder of the state folder.
struct settings_file {
    const char* folder;  // may be empty: the state folder itself
    const char* name;
};

std::string path_of(const home_places& places, const settings_file& file);

// What the file holds; empty when it is missing, damaged or no dictionary. From memory where the places have
// a store. Any thread.
property_dictionary read_settings(const home_places& places, const settings_file& file);

// Puts `values` in the place of the keys of the same name; a null takes its key away. Keys that are not
// named stay as they are. A file that cannot be read is kept as "X damaged N" first. Where the places have a
// store the file is written later, and what fails then is told by the store.
result<void> write_settings(const home_places& places, const settings_file& file,
                            const property_dictionary& values);

// What writing makes of the values that are there.
void merge_settings(property_dictionary& stored, const property_dictionary& values);

// Keeps the damaged files among those named as "X damaged N", so that the defaults are in force, and tells
// each with its reason. A file that is missing is well; one whose bytes cannot be read is told and left.
std::vector<failure> set_damaged_settings_aside(const home_places& places,
                                                const std::vector<settings_file>& files);

// A path as a settings file keeps it: as text, or as data when its bytes are not UTF-8, which a text could
// not give back.
property_value stored_path(const std::string& path);
// The path in `value`; empty when it holds none.
std::string path_from(const property_value& value);

}  // namespace vistels
