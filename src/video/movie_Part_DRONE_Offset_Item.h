// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <string>
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

// Reads the elements of "drone_array" that are dictionaries; a negative or unreadable gap or duration is 0.
movie_Part_DRONE_Offsets_Root read_movie_parts(const property_array& stored);
property_array write_movie_parts(const movie_Part_DRONE_Offsets_Root& parts);

}  // namespace vistels
