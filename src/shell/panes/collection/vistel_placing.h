// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>

#include "shell/panes/collection/vistel_geometry.h"
#include "video/video_collection_ROOT.h"

namespace vistels {

// Where the vistels of a collection lie as vistels come and go. Main thread.

// The frames as shown, a vistel without one having its place in the grid.
vistel_arrangement arrangement_of(const video_collection_ROOT& collection);
// The ready layout in which all vistels lie; nothing when the user placed them.
std::optional<ready_layout> placing_of(const video_collection_ROOT& collection, double picture_aspect);
// Puts all into the layout again; without one only vistels that have no frame get one, in front at the lower
// right, or where the area scrolls below all others.
void place_again(video_collection_ROOT& collection, std::optional<ready_layout> layout,
                 double picture_aspect);
void set_arrangement(video_collection_ROOT& collection, const vistel_arrangement& wanted);

}  // namespace vistels
