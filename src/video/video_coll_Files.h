// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "util/job.h"
#include "util/result.h"
#include "video/video_collection_ROOT.h"

namespace vistels {

// How movies become vistels.
enum class movies_as {
    vistel_each,  // a new vistel for each movie
    one_vistel,   // one new vistel with all movies as its parts, without gaps
};

// Makes the collection folder with a collection of these movies, laid out in a grid. A folder that holds a
// collection already is an error, so is a movie that cannot be read. Movies are hard links or clones where
// the volume allows it, copies otherwise. On failure, or when `work` is cancelled, nothing is left behind.
// Any thread.
result<void> new_collection(const std::string& folder, const std::string& name,
                            const std::vector<std::string>& movies, movies_as how, job& work);

// Adds vistels of these movies to a collection in memory, with their data stored below
// `vistels_folder`; saving the collection is left to the caller, and so is a layout. On failure the
// collection is as it was and nothing is left behind.
result<void> add_vistels(video_collection_ROOT& collection, const std::string& vistels_folder,
                         const std::vector<std::string>& movies, movies_as how, job& work);

// Brings a movie to `to` by hard link, else by clone, else by copying; progress is the copied fraction.
result<void> bring_movie(const std::string& from, const std::string& to, job& work);

// A new collection number: positive and below 2^53.
std::int64_t new_quick_number();

// The name of a vistel's movie file with that number, from 1, and the movie's ending: "part 001.mp4".
std::string part_name(std::size_t number, const std::string& movie);

// True for a name with the ending of a movie file.
bool is_movie_name(const std::string& name);

}  // namespace vistels
