// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/movie_Part_DRONE_Offset_Item.h"

#include <algorithm>

#include "video/video_coll_Records.h"

namespace vistels {

namespace {

constexpr const char* part_keys[] = {"gap_before", "part_duration"};

double length_of(const property_dictionary& stored, const char* key) {
    return std::max(finite_number(stored, key).value_or(0), 0.0);
}

}  // namespace

std::vector<double> movie_Part_DRONE_Offsets_Root::starts() const {
    std::vector<double> starts;
    double at = 0;
    for (const auto& part : parts) {
        at += part.gap_before;
        starts.push_back(at);
        at += part.part_duration;
    }
    return starts;
}

double movie_Part_DRONE_Offsets_Root::duration() const {
    double total = 0;
    for (const auto& part : parts) total = total + part.gap_before + part.part_duration;
    return total;
}

movie_Part_DRONE_Offsets_Root read_movie_parts(const property_array& stored) {
    movie_Part_DRONE_Offsets_Root read;
    for (const auto& value : stored) {
        const auto* dictionary = value.dictionary();
        if (!dictionary) continue;
        read.parts.push_back(
            {length_of(*dictionary, "gap_before"), length_of(*dictionary, "part_duration"), "", *dictionary});
    }
    return read;
}

property_array write_movie_parts(const movie_Part_DRONE_Offsets_Root& parts) {
    property_array stored;
    for (const auto& part : parts.parts) {
        record_writer writer(part_keys, part.kept);
        writer.value("gap_before", part.gap_before);
        writer.value("part_duration", part.part_duration);
        stored.emplace_back(writer.finish());
    }
    return stored;
}

}  // namespace vistels
