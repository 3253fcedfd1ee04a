// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <vector>

#include "video/synchronised_playback.h"
#include "video/video_collection_ROOT.h"

namespace vistels {

// The vistels of a collection as playback takes them, in their order, with their leads by the offset rule. A
// movie part whose file is missing stands with the path that the file should have.
std::vector<playback_vistel> playback_vistels_of(const video_collection_ROOT& collection);

}  // namespace vistels
