// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/movie_Part_DRONE_Offset_Item.h"

#include <algorithm>

#include "util/file_system.h"
#include "util/text_forms.h"
#include "video/video_coll_Records.h"

namespace vistels {

namespace {

constexpr const char* part_keys[] = {"gap_before", "part_duration", "movie_file"};

double length_of(const property_dictionary& stored, const char* key) {
    return std::max(stored_seconds(stored, key).value_or(0), 0.0);
}

}  // namespace

std::size_t part_number(std::string_view name) {
    constexpr std::string_view lead = "part ";
    constexpr std::size_t most_parts = 100'000;
    const auto dot = name.rfind('.');
    if (!name.starts_with(lead) || dot == std::string_view::npos || dot <= lead.size()) return 0;
    const auto number = integer_from_text(name.substr(lead.size(), dot - lead.size()));
    const bool is_usable = number && *number > 0 && *number < static_cast<std::int64_t>(most_parts);
    return is_usable ? static_cast<std::size_t>(*number) : 0;
}

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
        // One that cannot be read keeps its place, so that the others keep their files.
        const property_dictionary kept = dictionary ? *dictionary : property_dictionary();
        read.parts.push_back({length_of(kept, "gap_before"), length_of(kept, "part_duration"), "", kept});
    }
    return read;
}

property_array write_movie_parts(const movie_Part_DRONE_Offsets_Root& parts) {
    property_array stored;
    for (std::size_t index = 0; index < parts.parts.size(); ++index) {
        const auto& part = parts.parts[index];
        record_writer writer(part_keys, part.kept);
        writer.number_always("gap_before", part.gap_before);
        writer.number_always("part_duration", part.part_duration);
        const std::string name = path_name(part.path);
        if (!part.path.empty()) writer.text("movie_file", part_number(name) == index + 1 ? "" : name);
        stored.emplace_back(writer.finish());
    }
    return stored;
}

}  // namespace vistels
