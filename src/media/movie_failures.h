// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "util/failure.h"

namespace vistels {

inline constexpr failure_of<> built_without_media{"built without media",
                                                  "This program was built without media"};
inline constexpr failure_of<a_path> movie_without_media{
    "movie without media", "“%1” cannot be used: this program was built without media"};

// What could not be done with a file, and why.
inline constexpr failure_of<a_path, a_cause> movie_could_not_be_opened{"movie could not be opened",
                                                                       "Could not open the movie “%1”: %2"};
inline constexpr failure_of<a_path, a_cause> movie_could_not_be_read{"movie could not be read",
                                                                     "Could not read the movie “%1”: %2"};
inline constexpr failure_of<a_path, a_cause> movie_could_not_be_moved_in{
    "movie could not be moved in", "Could not move in the movie “%1”: %2"};
inline constexpr failure_of<a_path, a_cause> movie_could_not_be_written{"movie could not be written",
                                                                        "Could not write the movie “%1”: %2"};
inline constexpr failure_of<a_path, a_cause> picture_could_not_be_read{"picture could not be read",
                                                                       "Could not read the picture “%1”: %2"};
inline constexpr failure_of<a_path, a_cause> picture_could_not_be_written{
    "picture could not be written", "Could not write the picture “%1”: %2"};
inline constexpr failure_of<a_path, a_cause> sound_could_not_be_read{"sound could not be read",
                                                                     "Could not read the sound of “%1”: %2"};
inline constexpr failure_of<a_path> sound_could_not_be_moved_in{"sound could not be moved in",
                                                                "Could not move in the sound of “%1”"};
inline constexpr failure_of<a_cause> sound_speed_could_not_be_changed{
    "sound speed could not be changed", "Could not change the speed of the sound: %1"};
// The library's own words.
inline constexpr failure_of<a_text> movie_library_refuses{"movie library refuses", "%1"};
inline constexpr failure_of<> movie_is_no_file{"movie is no file", "it is not a file"};
inline constexpr failure_of<> movie_is_empty{"movie is empty", "it holds neither pictures nor sound"};
inline constexpr failure_of<> volume_took_a_part{"volume took a part", "the volume took only a part of it"};

// What a file holds.
inline constexpr failure_of<a_path> movie_has_no_pictures{"movie has no pictures",
                                                          "The movie “%1” holds no pictures"};
inline constexpr failure_of<a_path> movie_has_no_sound{"movie has no sound", "The movie “%1” holds no sound"};
inline constexpr failure_of<a_path> movie_cannot_be_decoded{
    "movie cannot be decoded", "The movie “%1” holds no picture that can be decoded"};
inline constexpr failure_of<a_path> movie_has_no_picture_here{"movie has no picture here",
                                                              "The movie “%1” has no picture here"};
inline constexpr failure_of<a_path> movie_has_no_fragment_yet{"movie has no fragment yet",
                                                              "The movie “%1” has no whole fragment yet"};
inline constexpr failure_of<a_path> movie_pictures_have_no_order{
    "movie pictures have no order", "The pictures of the movie “%1” cannot be shown in any order"};
inline constexpr failure_of<a_path, a_cause> movie_cannot_be_shown{"movie cannot be shown",
                                                                   "The movie “%1”: %2"};
inline constexpr failure_of<> picture_kind_is_unknown{"picture kind is unknown",
                                                      "pictures of this kind cannot be shown"};
inline constexpr failure_of<a_path> file_has_no_picture{"file has no picture", "“%1” holds no picture"};
inline constexpr failure_of<a_path> picture_cannot_be_scaled{"picture cannot be scaled",
                                                             "“%1” cannot be scaled"};

inline constexpr failure_of<a_path> deinterlacing_was_cancelled{"deinterlacing was cancelled",
                                                                "Deinterlacing “%1” was cancelled"};

// Devices
inline constexpr failure_of<> sound_system_does_not_start{"sound system does not start",
                                                          "The sound system could not be started"};
inline constexpr failure_of<> sound_device_does_not_open{"sound device does not open",
                                                         "The sound device could not be opened"};
inline constexpr failure_of<> sound_device_is_stopped{"sound device is stopped",
                                                      "The sound device takes no more sound"};
inline constexpr failure_of<> memory_for_sound_is_short{"memory for sound is short",
                                                        "There is no memory left for sound"};

}  // namespace vistels
