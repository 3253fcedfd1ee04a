// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/settings/places.h"
#include "util/property_value.h"

namespace vistels {

// All settings in force, those of the vaults too, by the keys under which `settings show` prints them.
property_dictionary settings_in_force(const home_places& places);

}  // namespace vistels
