// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "util/file_system.h"
#include "util/job.h"
#include "util/result.h"
#include "video/video_collection_ROOT.h"

namespace vistels {

// How movies become vistels.
enum class movies_as {
    vistel_each,       // a new vistel for each movie
    one_vistel,        // one new vistel with all movies as its parts, without gaps
    parts_of_existing  // further parts of a vistel that is there
};

// A choice of how to add movies, as it is shown.
struct adding_choice {
    movies_as how;
    const char* title;
    const char* explanation;
};
// What there is to choose from for so many movies, in the order in which it is shown; `on_vistel`: they were
// dropped on a vistel. A single movie that was not has one choice.
std::vector<adding_choice> adding_choices(std::size_t movies, bool on_vistel);

// The movie files that an item of a file list stands for: of a file that one, of a vistel's folder its parts
// in their order, of another folder the movies in it by natural order. A picture stands for itself. Fails
// when there is none.
result<std::vector<std::string>> movies_of_item(const std::string& path);

using vistel_list = std::vector<std::shared_ptr<single_Vistel_CTR>>;

// What new vistels are made with.
struct new_vistels {
    std::string folder;   // in which each gets a folder of its own: "Single Videos" or the local one
    std::string creator;  // the user's name
    bool saves_data_locally = false;
};

// The following bring files below a vistel's folder and touch no collection, so they may run in a job; what
// they return is put into the collection on the main thread. Movies are hard links or clones where the
// volume allows it, copies otherwise. On failure, or when `work` is cancelled, nothing is left behind. They
// hold the lock of the vault (vault_lock); while another change has it they fail.

// What a program that died has left of copying movies into folders of vistels in `folder`: deletes such files
// when nothing was written to them for a day, and the folders that hold nothing else.
void remove_unfinished_copies(const std::string& folder);

// New vistels of these movies, with a UUID, an offset of 0 and no number yet. A picture among the movies
// becomes a vistel of its own that is shown at all times. A movie that cannot be read is an error.
result<vistel_list> make_vistels(const new_vistels& made_with, const std::vector<std::string>& movies,
                                 movies_as how, job& work);
// The movies as further parts of a vistel, to be put behind those it has.
result<std::vector<movie_Part_DRONE_Offset_Item>> bring_parts(const single_Vistel_CTR& vistel,
                                                              const std::vector<std::string>& movies,
                                                              job& work);
// Takes away again what was brought and is not wanted after all: the folders of vistels, or parts' files.
void discard(const vistel_list& vistels);
void discard(const std::vector<movie_Part_DRONE_Offset_Item>& parts);

// Gives new vistels what they have only in their collection: a number (see take_vistel_number), the lowest
// number to show that no other one shows, and a place in front of the others. Main thread.
void number_new_vistels(video_collection_ROOT& collection, const vistel_list& vistels);
// Numbers them and puts them behind the others. A layout is left to the caller. Main thread.
void add_new_vistels(video_collection_ROOT& collection, const vistel_list& vistels);

// Makes the collection folder with a collection of these movies, laid out in a grid; without movies an empty
// one, to be coded by the clock alone until they come. A folder that holds a
// collection already is an error, so is a movie that cannot be read. On failure, or when `work` is cancelled,
// nothing is left behind. An empty `user`: nobody is named as the one who made it. Any thread.
result<void> new_collection(const std::string& folder, const std::string& name,
                            const std::vector<std::string>& movies, movies_as how, job& work,
                            const std::string& user = {});

// Where new vistels of the collection in `folder` are stored: in the vault, or next to the collection.
std::string new_vistels_folder(const std::string& folder, bool next_to_collection);

// Brings a movie to `to`, where nothing must be, by hard link, else by clone, else by copying; progress is
// the copied fraction. With `as_copy` it becomes a file of its own, which may be changed without changing the
// movie: no hard link.
result<void> bring_movie(const std::string& from, const std::string& to, job& work, bool as_copy = false);

// A new collection number: positive and below 2^53.
std::int64_t new_quick_number();

// The name of a vistel's movie file with that number, from 1, and the movie's ending: "part 001.mp4".
std::string part_name(std::size_t number, const std::string& movie);

// True for a name with the ending of a movie file, or of a picture file.
bool is_movie_name(const std::string& name);
bool is_picture_name(const std::string& name);

}  // namespace vistels
