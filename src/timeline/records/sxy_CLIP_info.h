// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <optional>
#include <string>

namespace vistels {

// Where a clip came from; of this run, not stored. Part of its sxy_CLIP, whose lock guards it.
struct sxy_CLIP_info {
    double time_clip_created = 0;  // seconds since 1970
    std::optional<std::string> path_to_pic_movie_for_cut_clips;

    bool operator==(const sxy_CLIP_info&) const = default;
};

}  // namespace vistels
