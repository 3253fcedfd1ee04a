// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "util/job.h"
#include "util/result.h"
#include "video/blank_movie.h"
#include "video/video_collection_ROOT.h"

namespace vistels {

// Padding movies are blank movie parts that stand for a vistel's start offset, for a gap, or fill up its end.
// Such a part's record carries "padding_movie": what it "stands_for" ("offset", "gap" or "end"), its length
// in "seconds", the "offset" that it took the place of, and its "file".

struct padding_file {
    std::string path;
    double seconds = 0;
    bool operator==(const padding_file&) const = default;
};

// What a padding command does besides what it does to the collection.
struct padding_outcome {
    double shift = 0;                 // of the timeline's times, so that every clip stays on its frames
    std::vector<padding_file> files;  // that have to be there for the collection to be shown
    bool operator==(const padding_outcome&) const = default;
};

// Each changes a collection (a copy, so that nothing is half done on failure) and nothing on disk.

// Every start offset becomes a padding movie as long as the vistel has to wait before its first part (the
// largest lead less its own), every gap one of its length; all vistels are padded to one length. Offsets and
// gaps are 0 then.
// A vistel that never had a movie becomes blank from beginning to end; a still picture is left as it is.
result<padding_outcome> pad_collection(video_collection_ROOT& collection);
// Takes the padding movies away and puts offsets and gaps back.
padding_outcome restore_offsets(video_collection_ROOT& collection);
// Takes the padding movies away, puts gaps back and sets all offsets to 0: every movie begins at 0 then. The
// timeline moves with the vistels whose offset was 0 before padding.
padding_outcome remove_offsets_and_padding(video_collection_ROOT& collection);

bool is_padding(const movie_Part_DRONE_Offset_Item& part);
// The name of the file of a padding part; empty for other parts.
std::string padding_file_of(const movie_Part_DRONE_Offset_Item& part);
// For names that padding files have, while they are written, too.
bool is_padding_file_name(std::string_view name);

// Makes those files that are not there yet, of `blank`. On failure, or when `work` is cancelled, none that
// was made is left. Any thread.
result<void> make_padding_files(const std::vector<padding_file>& files, blank_vistel_movie& blank, job& work);
// The padding files that the collection's parts name.
std::vector<padding_file> padding_files_of(const video_collection_ROOT& collection);
// Deletes the padding files in the folders of the vistels that no part names; with `remove`, hands it their
// paths one after another, until it returns false.
void remove_unused_padding_files(const video_collection_ROOT& collection,
                                 const std::function<bool(const std::string& path)>& remove = {});

}  // namespace vistels
