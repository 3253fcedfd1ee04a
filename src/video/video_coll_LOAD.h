// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "util/file_system.h"
#include "util/result.h"
#include "video/video_collection_ROOT.h"

namespace vistels {

inline constexpr const char* collection_file_name = "video group.plist";
inline constexpr const char* vistel_file_name = "single video.plist";
inline constexpr const char* vistels_folder_name = "Single Videos";

// A collection read from its folder, with what is wrong with its vistels.
struct loaded_collection {
    video_collection_ROOT collection;
    std::vector<std::string> messages;  // one for each vistel with a problem; it names the file
};

// Reads "video group.plist" in `folder` and, for each vistel, the record and the movie parts in its data
// folder. A vistel that cannot be read keeps the rest: it has a problem() and no path for what is missing. A
// missing or damaged collection record is an error. `local_vistels` is the folder of the vistels whose data
// is kept locally ("Single Videos Local"); empty when there is none. Movies are not opened, except those
// whose duration no record holds. Any thread.
result<loaded_collection> load_collection(const std::string& folder, const std::string& local_vistels = {});

// Writes the collection record and then the records of the vistels that differ from what was read.
result<void> save_collection(video_collection_ROOT& collection, const std::string& folder,
                             file_system& files = machine_files());

// Where the data of the collection in `folder` lies: "Single Videos" in the vault that holds the folder, or
// in the folder itself when no vault does.
std::string vistels_folder_of(const std::string& collection_folder);

// The nearest folder at or above `path` whose name ends in ".VVault"; empty when there is none.
std::string vault_of(const std::string& path);

}  // namespace vistels
