// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
#include <vector>

#include "util/file_system.h"
#include "util/result.h"
#include "util/safe_write.h"
#include "video/video_collection_ROOT.h"

namespace vistels {

inline constexpr const char* collection_file_name = "video group.plist";
inline constexpr const char* vistel_file_name = "single video.plist";
inline constexpr const char* vistels_folder_name = "Single Videos";

// A collection read from its folder, with what is wrong with it.
struct loaded_collection {
    video_collection_ROOT collection;
    // One for each vistel with a problem, and what is wrong with the collection's record or its numbering.
    std::vector<failure> messages;
    // Of streamed vistels whose local copy is shorter than expected. Told a moment after loading: they are no
    // fault of the collection.
    std::vector<failure> alerts;
    known_file record_file;  // as it was read
    // Vistels without a number got one, which is to be saved.
    bool has_new_numbers = false;
};

// Reads "video group.plist" in `folder` and, for each vistel in its order, the record and the movie parts in
// its data folder. A vistel that cannot be read keeps the rest: it has a problem() and no path for what is
// missing; one whose record alone is missing shows its movies one after another. A missing or damaged
// collection record is an error; an element of it that is no record is told and kept. Nothing is written:
// a vistel without a usable number gets one, movie parts without a file stay, files without a part are shown
// after the others, and both change the record only when the parts are changed. `local_vistels` is the folder
// of the vistels whose data is kept locally ("Single Videos Local"); empty when there is none. Movies are not
// opened, except those whose duration no record holds, and the local copy of a streamed vistel. Any thread.
result<loaded_collection> load_collection(const std::string& folder, const std::string& local_vistels = {});

// Writes the collection record and then the records of the vistels that differ from what was read. Fails
// while saving is blocked; a vistel that cannot be saved keeps no other from it. What stands in the record's
// place and is none is kept as "X damaged N".
result<void> save_collection(video_collection_ROOT& collection, const std::string& folder,
                             file_system& files = machine_files());
// The same where the collection record was `known` when it was read or saved last. What another program put
// there since is kept as safe_write_known does; `kept` gets its name (empty: there was no such thing).
result<void> save_collection(video_collection_ROOT& collection, const std::string& folder, known_file& known,
                             std::string& kept, file_system& files = machine_files());
// The records of the vistels that differ from what was read, alone.
result<void> save_vistels(const video_collection_ROOT& collection, file_system& files = machine_files());

// The movie parts of the vistel whose data lies in `folder`, with the files found for them; durations that no
// record holds stay 0.
movie_Part_DRONE_Offsets_Root parts_in_folder(const std::string& folder);

// What to tell when the local copy of a streamed vistel lacks that many seconds; tenths below 10.
failure shorter_than_expected(const std::string& name, double seconds);

// Where the data of the collection in `folder` lies: "Single Videos" in the vault that holds the folder, or
// in the folder itself when no vault does.
std::string vistels_folder_of(const std::string& collection_folder);

// The nearest folder at or above `path` whose name ends in ".VVault"; empty when there is none.
std::string vault_of(const std::string& path);

}  // namespace vistels
