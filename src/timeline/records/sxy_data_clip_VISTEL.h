// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "util/colour_text.h"
#include "util/shared_text.h"

namespace vistels {

// A key frame of the zoom of a clip.
struct sxy_clip_ZOOM_item {
    double key_frame_secs = 0;
    std::optional<rectangle> rect;  // in proportions of the picture, 0 to 1

    bool operator==(const sxy_clip_ZOOM_item&) const = default;
};

// One vistel that a clip shows.
struct clip_vistel_ITEM {
    shared_text vistel_name;
    std::optional<double> vistel_ID;
    // The place in the composed picture, in proportions from 0 to 1.
    std::optional<rectangle> vistel_rect;
    std::optional<std::int64_t> level;  // of its layer

    const std::vector<sxy_clip_ZOOM_item>& zoom_items() const { return array_sxy_clip_zoom_item; }
    // Keeps them by key_frame_secs; those of one time stay in the order given.
    void set_zoom_items(std::vector<sxy_clip_ZOOM_item> items);

    bool operator==(const clip_vistel_ITEM&) const = default;

  private:
    std::vector<sxy_clip_ZOOM_item> array_sxy_clip_zoom_item;
};

// Which vistels a clip shows, and how. Part of its sxy_CLIP, whose lock guards it.
struct sxy_data_clip_VISTEL {
    std::optional<double> outside_bounds_video_ratio;
    bool use_Vistel_Positions_data = false;
    bool use_VISTEL_ZOOM_data__l930 = false;
    std::vector<clip_vistel_ITEM> vistels;

    bool operator==(const sxy_data_clip_VISTEL&) const = default;
};

}  // namespace vistels
