// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/video_coll_Pictures.h"

#include <filesystem>

#include "media/frame_reader.h"
#include "util/file_system.h"
#include "video/collection_failures.h"
#include "video/vault_lock.h"
#include "video/video_coll_Files.h"

namespace vistels {

result<void> check_picture(const std::string& path) {
    if (!is_picture_name(path)) return file_is_no_picture(path);
    // Only decoding tells: the name alone passes for a picture's header.
    const auto read = frame_reader::open(path);
    return read ? result<void>() : result<void>(read.error());
}

result<vistel_overlay> bring_overlay(const single_Vistel_CTR& vistel, const std::string& picture, job& work) {
    const std::string folder = vistel.data_folder();
    if (folder.empty()) return vistel_data_is_missing(vistel.name());
    if (auto checked = check_picture(picture); !checked) return checked.error();
    const auto lock = vault_lock::take_around(folder);
    if (!lock) return lock.error();
    const std::string ending = std::filesystem::path(picture).extension().string();
    vistel_overlay overlay;
    for (int number = 1;; ++number) {
        overlay.picture = overlay_name_lead + std::to_string(number) + ending;
        if (!file_exists(path_join(folder, overlay.picture))) break;
    }
    if (auto brought = bring_movie(picture, path_join(folder, overlay.picture), work, true); !brought) {
        return brought.error();
    }
    return overlay;
}

std::string picture_path(const single_Vistel_CTR& vistel) {
    if (!vistel.is_inserted_picture() || vistel.data_folder().empty()) return {};
    for (const auto& name : names_in_folder(vistel.data_folder())) {
        if (is_picture_name(name) && !name.starts_with(overlay_name_lead)) {
            return path_join(vistel.data_folder(), name);
        }
    }
    return {};
}

std::string overlay_file(const single_Vistel_CTR& vistel) {
    const auto overlay = vistel.overlay();
    if (!overlay || vistel.data_folder().empty()) return {};
    if (overlay->picture.find('/') != std::string::npos) return {};
    return path_join(vistel.data_folder(), overlay->picture);
}

std::string overlay_path(const single_Vistel_CTR& vistel) {
    const std::string path = overlay_file(vistel);
    return file_exists(path) ? path : std::string();
}

}  // namespace vistels
