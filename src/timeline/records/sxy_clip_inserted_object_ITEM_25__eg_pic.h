// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

namespace vistels {

// An object, such as a picture, inserted into a clip. Part of its sxy_CLIP, whose lock guards it.
struct sxy_clip_inserted_object_ITEM_25__eg_pic {
    double inserted_obj_start_secs = 0;
    double inserted_obj_duration_secs = 0;
    std::string inserted_obj_Type;
    std::string inserted_object_UUID;

    bool operator==(const sxy_clip_inserted_object_ITEM_25__eg_pic&) const = default;
};

struct inserted_Objects_Root_25 {
    std::vector<sxy_clip_inserted_object_ITEM_25__eg_pic> items;

    bool operator==(const inserted_Objects_Root_25&) const = default;
};

}  // namespace vistels
