// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/records/sxy_data_clip_VISTEL.h"

#include <algorithm>

namespace vistels {

void clip_vistel_ITEM::set_zoom_items(std::vector<sxy_clip_ZOOM_item> items) {
    const auto earlier = [](const auto& a, const auto& b) { return a.key_frame_secs < b.key_frame_secs; };
    std::stable_sort(items.begin(), items.end(), earlier);
    array_sxy_clip_zoom_item = std::move(items);
}

}  // namespace vistels
