// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <memory>
#include <vector>

#include "timeline/records/sXY_data_TAG.h"
#include "timeline/records/sxy_CLIP.h"

namespace vistels {

// A copy of the clip with every time on the collection's clock moved by `seconds`: start and end, its
// qualifiers and their attributes, pause points, triggers, inserted objects, zoom key frames, the spans of a
// drawing in this collection, the items of its note. Other clocks (a game clock, a time of day, another
// collection's) stay. What is selected stays selected. Any thread.
std::shared_ptr<sxy_CLIP> clip_shifted(const sxy_CLIP& clip, double seconds);

std::vector<sXY_data_TAG> tags_shifted(std::vector<sXY_data_TAG> tags, double seconds);

}  // namespace vistels
