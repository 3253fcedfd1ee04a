// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <vector>

#include "timeline/records/sxy_DATA_root.h"
#include "video/video_collection_ROOT.h"

namespace vistels {

// The offset rule: collection time T is movie time T + lead in a vistel, its lead being the collection's
// largest start offset less its own. All times are seconds.

// What the rule needs of an item record.
struct vistel_offset {
    double number = 0;             // 0: never found by its number
    std::optional<double> offset;  // nothing: none is stored
};

std::vector<vistel_offset> offsets_of(const video_collection_ROOT& collection);
// The numbers of vistels that clips name, those that still grow included.
std::set<double> vistel_numbers_in(const timeline_snapshot& timeline);

// For playing and cutting: never below 0.
double largest_offset_for_clips(const std::vector<vistel_offset>& items);
// For composer clips and movie export: below 0 when every stored offset is; 0 when none is stored.
double largest_offset_for_composer(const std::vector<vistel_offset>& items);

// The offset of the first item with that number; 0 when there is none, and for a number that is not positive.
double offset_of_number(const std::vector<vistel_offset>& items, double number);

// How far a vistel's movie is ahead of the collection time.
double lead_for_clips(const std::vector<vistel_offset>& items, const vistel_offset& item);
// 0 as well when no item has that number, or it is not positive.
double lead_for_composer(const std::vector<vistel_offset>& items, double number);

// A stretch of a vistel's movie, with its media times of 1/600 second.
struct source_range {
    double from = 0;
    double seconds = 0;
    std::int64_t from_600 = 0;
    std::int64_t duration_600 = 0;
};

// What a clip shows of a vistel: both ends moved by the lead, put in order and kept within the movie.
source_range source_range_of(double start, double end, double lead, double movie_duration);

}  // namespace vistels
