// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

namespace vistels {

// Where the drawings over a clip belong; times in seconds. Part of its sxy_CLIP, whose lock guards it.
struct sxy_CLIP_telestration_data_24 {
    std::optional<double> secs_start_original;  // the clip's span when the drawing was made
    std::optional<double> secs_end_original;
    std::optional<double> secs_start_aux_coll;  // the span in a linked auxiliary collection
    std::optional<double> secs_end_aux_coll;
    std::optional<double> secs_start_trimmed_261027;
    std::optional<double> secs_end_trimmed_261027;
    std::optional<double> quick_uuid_linked_COLLECTION_original;
    std::optional<double> quick_uuid_linked_COLLECTION_auxiliary;
    bool using_telestrated_data = false;

    bool operator==(const sxy_CLIP_telestration_data_24&) const = default;
};

}  // namespace vistels
