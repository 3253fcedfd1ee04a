// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "util/colour_text.h"
#include "util/shared_text.h"

namespace vistels {

// A trigger mark: a timed event. Part of the record that holds it, whose lock guards it.
struct trigger_event_ITEM {
    double trigger_Time = 0;   // seconds on the collection's clock
    shared_text trigger_Type;  // "going down", "going up" or "unassigned"
    std::optional<colour> trigger_colour_24;

    bool operator==(const trigger_event_ITEM&) const = default;
};

}  // namespace vistels
