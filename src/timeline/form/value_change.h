// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/property_value.h"

namespace vistels {

// Stored values to be set, and the keys of those to be taken away.
struct value_change {
    property_dictionary set;
    property_array unset;
};

}  // namespace vistels
