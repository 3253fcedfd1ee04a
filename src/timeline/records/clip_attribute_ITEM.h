// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "timeline/form/compact_text.h"
#include "timeline/form/copied_ptr.h"
#include "util/colour_text.h"
#include "util/shared_text.h"

namespace vistels {

// An attribute of a qualifier: a finer label on a label. Part of its qual_ITEM, whose lock guards it.
struct clip_attribute_ITEM {
    shared_text name;
    shared_text attribute_category;        // may be empty
    std::optional<double> attribute_time;  // seconds on the collection's clock
    copied_ptr<colour> attribute_colour;   // stored with 3 decimals
    // _at_pos: where on a picture it was stamped.
    std::optional<double> _at_pos_x = {};
    std::optional<double> _at_pos_y = {};
    compact_text uuid;  // stored as "attr_uuid"

    // Equal in everything that is stored.
    bool operator==(const clip_attribute_ITEM& other) const;
};

}  // namespace vistels
