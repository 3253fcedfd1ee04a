// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "util/property_value.h"

namespace vistels {

// One movie file of a vistel, with the empty time before it. Part of its vistel, whose lock guards it.
struct movie_Part_DRONE_Offset_Item {
    double gap_before = 0;  // seconds between the end of the part before (or the vistel's start) and this one
    double part_duration = 0;  // seconds
    std::string path;          // of the movie file; empty when there is none. Not stored
    property_dictionary kept;  // the record as read; the values above are replaced when written

    bool operator==(const movie_Part_DRONE_Offset_Item&) const = default;
};

// The movie parts of one vistel in play order: a time line of gaps and parts.
struct movie_Part_DRONE_Offsets_Root {
    std::vector<movie_Part_DRONE_Offset_Item> parts;

    // Where each part starts on the vistel's own time line, in seconds.
    std::vector<double> starts() const;
    // The end of the last part, in seconds.
    double duration() const;

    bool operator==(const movie_Part_DRONE_Offsets_Root&) const = default;
};

// The number that a name such as "part 012.mp4" carries; 0 for other names.
std::size_t part_number(std::string_view name);

// Reads the elements of "drone_array", one part for each; a negative or unreadable gap or duration is 0.
movie_Part_DRONE_Offsets_Root read_movie_parts(const property_array& stored);
// A part whose file has another name than its place gives it ("part 003.mp4" for the third) is written with
// that name under "movie_file". So parts may be put in, taken out and moved without renaming files.
property_array write_movie_parts(const movie_Part_DRONE_Offsets_Root& parts);

}  // namespace vistels
