// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/video_coll_Playback.h"

#include "util/file_system.h"
#include "video/video_coll_Files.h"
#include "video/video_coll_Offsets.h"
#include "video/video_coll_Pictures.h"

namespace vistels {

namespace {

std::vector<playback_part> playback_parts_of(const single_Vistel_CTR& vistel) {
    if (vistel.is_inserted_picture()) {
        const std::string picture = picture_path(vistel);
        if (picture.empty()) return {};
        return {{picture, 0, 0, true}};
    }
    const auto parts = vistel.parts();
    const auto starts = parts.starts();
    std::vector<playback_part> played;
    for (std::size_t index = 0; index < starts.size(); ++index) {
        const auto& part = parts.parts[index];
        const std::string path =
            part.path.empty() ? path_join(vistel.data_folder(), part_name(index + 1, ".mp4")) : part.path;
        played.push_back({path, starts[index], part.part_duration});
    }
    return played;
}

}  // namespace

std::vector<playback_vistel> playback_vistels_of(const video_collection_ROOT& collection) {
    const auto items = offsets_of(collection);
    std::vector<playback_vistel> played;
    for (const auto& vistel : collection.vistels()) {
        const double lead = lead_for_clips(items, {vistel->number(), vistel->manual_start_offset()});
        played.push_back({vistel->uuid(), lead, playback_parts_of(*vistel), vistel->number()});
    }
    return played;
}

}  // namespace vistels
