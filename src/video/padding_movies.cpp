// SPDX-License-Identifier: GPL-3.0-or-later
#include "video/padding_movies.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <optional>

#include "util/file_system.h"
#include "video/collection_failures.h"
#include "video/video_coll_Offsets.h"

namespace vistels {

namespace {

constexpr const char* padding_key = "padding_movie";
// In the record of the first part of a vistel that has no padding part for its offset.
constexpr const char* offset_key = "offset_before_padding";
constexpr std::string_view name_mark = " padding ";
constexpr const char* name_without_movies = "vistel";
constexpr std::string_view name_ending = ".mov";
constexpr std::string_view temporary_mark = " temp";  // of one that is being written
constexpr double shortest_seconds = 0.00005;          // below the tolerance with which frames are found

enum class stands_for { offset = 1, gap = 2, end = 3 };

const char* text_of(stands_for what) {
    return what == stands_for::offset ? "offset" : what == stands_for::gap ? "gap" : "end";
}

// Named after the movie before which it is played, or for the end after which, so that the names in their
// order are the order of the parts.
std::string padding_name(const std::string& movie, stands_for what, double seconds) {
    const std::string name = path_name(movie);
    const auto dot = name.rfind('.');
    const bool whole = what == stands_for::end || dot == std::string::npos;
    return (whole ? name : name.substr(0, dot)) + std::string(name_mark) +
           std::to_string(static_cast<int>(what)) + " " + std::to_string(std::llround(seconds * 1000)) +
           std::string(name_ending);
}

movie_Part_DRONE_Offset_Item padding_part(const std::string& folder, const std::string& movie,
                                          stands_for what, double seconds, std::optional<double> offset) {
    movie_Part_DRONE_Offset_Item part;
    part.part_duration = seconds;
    const std::string name = padding_name(movie, what, seconds);
    part.path = path_join(folder, name);
    property_dictionary padding;
    padding.add("stands_for", text_of(what));
    padding.add("seconds", seconds);
    if (offset) padding.add("offset", *offset);
    padding.add("file", name);
    part.kept.add(padding_key, std::move(padding));
    return part;
}

const property_dictionary* padding_of(const movie_Part_DRONE_Offset_Item& part) {
    return part.kept.dictionary(padding_key);
}

// The vistel with its wait and its gaps as padding parts; the end is padded later.
void pad_vistel(single_Vistel_CTR& vistel, double wait) {
    const std::string folder = vistel.data_folder();
    movie_Part_DRONE_Offsets_Root padded;
    const auto offset = vistel.manual_start_offset();
    for (auto part : vistel.parts().parts) {
        const bool is_first = padded.parts.empty();
        if (is_first && wait > shortest_seconds) {
            padded.parts.push_back(padding_part(folder, part.path, stands_for::offset, wait, offset));
        } else if (is_first && offset && *offset != 0) {
            part.kept.set(offset_key, *offset + part.kept.number(offset_key).value_or(0));
        }
        if (part.gap_before > shortest_seconds) {
            padded.parts.push_back(padding_part(folder, part.path, stands_for::gap, part.gap_before, {}));
        }
        part.gap_before = 0;
        padded.parts.push_back(std::move(part));
    }
    vistel.set_parts(std::move(padded));
    if (offset) vistel.set_manual_start_offset(0);
}

void pad_end(single_Vistel_CTR& vistel, double length) {
    auto parts = vistel.parts();
    const double missing = length - parts.duration();
    if (missing <= shortest_seconds) return;
    const std::string last = parts.parts.back().path;
    parts.parts.push_back(padding_part(vistel.data_folder(), last, stands_for::end, missing, {}));
    vistel.set_parts(std::move(parts));
}

// A vistel without movies: all of it is end, which keeps the offset.
void pad_whole(single_Vistel_CTR& vistel, double length) {
    const auto offset = vistel.manual_start_offset();
    const std::string folder = vistel.data_folder();
    vistel.set_parts({{padding_part(folder, name_without_movies, stands_for::end, length, offset)}});
    if (offset) vistel.set_manual_start_offset(0);
}

// What a vistel's padding says about its offset.
struct padded_offset {
    bool is_known = false;
    bool is_set = false;   // a value was stored
    bool has_wait = true;  // there is a movie, which waited
    double offset = 0;     // before padding
    double wait = 0;       // the padding in front
};

// Takes the padding parts away; the gaps for which they stand come back.
padded_offset strip(single_Vistel_CTR& vistel) {
    padded_offset found;
    movie_Part_DRONE_Offsets_Root plain;
    double gap = 0;
    for (auto part : vistel.parts().parts) {
        gap += part.gap_before;
        const auto* padding = padding_of(part);
        if (!padding) {
            if (const auto offset = part.kept.number(offset_key)) {
                found.is_known = found.is_set = true;
                found.offset += *offset;
                part.kept.remove(offset_key);
            }
            part.gap_before = std::exchange(gap, 0);
            plain.parts.push_back(std::move(part));
            continue;
        }
        const auto what = padding->text_or_empty("stands_for");
        if (what == text_of(stands_for::gap)) {
            gap += padding->number("seconds").value_or(part.part_duration);
        } else if (what == text_of(stands_for::offset)) {
            const auto offset = padding->number("offset");
            found.is_known = true;
            found.is_set = found.is_set || offset;
            found.offset += offset.value_or(0);
            found.wait += part.part_duration;
        } else if (const auto offset = padding->number("offset")) {
            found.is_known = found.is_set = true;
            found.has_wait = false;
            found.offset += *offset;
        }
    }
    vistel.set_parts(std::move(plain));
    return found;
}

// A movie that is only away must not be taken for none.
result<void> check_is_there(const single_Vistel_CTR& vistel) {
    const auto parts = vistel.parts().parts;
    const bool has_all =
        std::none_of(parts.begin(), parts.end(), [](const auto& part) { return part.path.empty(); });
    if (!has_all) {
        return movie_of_vistel_is_missing(vistel.name(), vistel.data_folder());
    }
    const bool was_read = !vistel.data_folder().empty() && vistel.http_file().empty();
    if (!parts.empty() || was_read || vistel.manual_start_offset().value_or(0) == 0) return {};
    return vistel_cannot_be_padded(vistel.name(), vistel.problem());
}

double largest_offset(const video_collection_ROOT& collection) {
    return largest_offset_for_clips(offsets_of(collection));
}

}  // namespace

bool is_padding(const movie_Part_DRONE_Offset_Item& part) {
    return padding_of(part) != nullptr;
}

std::string padding_file_of(const movie_Part_DRONE_Offset_Item& part) {
    const auto* padding = padding_of(part);
    const std::string name = padding ? padding->text_or_empty("file") : std::string();
    return is_padding_file_name(name) ? name : std::string();
}

bool is_padding_file_name(std::string_view name) {
    const auto mark = name.rfind(name_mark);
    if (mark == std::string_view::npos || mark == 0 || !name.ends_with(name_ending)) return false;
    if (name.find('/') != std::string_view::npos) return false;
    const auto numbers = name.substr(mark + name_mark.size());
    auto digits = numbers.substr(0, numbers.size() - std::min(numbers.size(), name_ending.size()));
    if (digits.ends_with(temporary_mark)) digits.remove_suffix(temporary_mark.size());
    return digits.size() > 2 && digits[1] == ' ' &&
           std::all_of(digits.begin(), digits.end(),
                       [](char letter) { return (letter >= '0' && letter <= '9') || letter == ' '; });
}

// Every vistel's own wait is the largest lead less its lead, so that padding and footage together begin when
// the earliest footage does; collection time 0 comes to be there.
result<padding_outcome> pad_collection(video_collection_ROOT& collection) {
    std::vector<std::shared_ptr<single_Vistel_CTR>> padded;
    std::vector<std::shared_ptr<single_Vistel_CTR>> without_movies;
    for (const auto& vistel : collection.vistels()) {
        if (vistel->is_inserted_picture()) continue;
        if (auto whole = check_is_there(*vistel); !whole) return whole.error();
        if (!vistel->parts().parts.empty()) {
            padded.push_back(vistel);
        } else if (!vistel->data_folder().empty() && vistel->http_file().empty()) {
            without_movies.push_back(vistel);
        }
    }
    if (padded.empty()) return no_movie_parts();
    double smallest = std::numeric_limits<double>::infinity();
    for (const auto& vistel : padded) {
        smallest = std::min(smallest, vistel->manual_start_offset().value_or(0));
    }
    padding_outcome outcome;
    outcome.shift = largest_offset(collection) - smallest;
    double length = 0;
    for (const auto& vistel : padded) {
        pad_vistel(*vistel, vistel->manual_start_offset().value_or(0) - smallest);
        length = std::max(length, vistel->parts().duration());
    }
    for (const auto& vistel : padded) pad_end(*vistel, length);
    for (const auto& vistel : without_movies) pad_whole(*vistel, length);
    outcome.files = padding_files_of(collection);
    return outcome;
}

// A vistel that has no padding stays in step with the others, whose offsets change by one common amount more
// than their padding.
padding_outcome restore_offsets(video_collection_ROOT& collection) {
    const double largest_before = largest_offset(collection);
    const auto vistels = collection.vistels();
    std::vector<padded_offset> all;
    std::optional<double> common;
    for (const auto& vistel : vistels) {
        all.push_back(strip(*vistel));
        if (all.back().is_known && all.back().has_wait && !common)
            common = all.back().offset - all.back().wait;
    }
    for (std::size_t index = 0; index < vistels.size(); ++index) {
        const auto now = vistels[index]->manual_start_offset();
        const auto& was = all[index];
        const bool has_movies = !vistels[index]->parts().parts.empty();
        const double offset = now.value_or(0) + (was.is_known ? was.offset
                                                 : has_movies ? common.value_or(0)
                                                              : 0);
        if (was.is_set || offset != now.value_or(0)) vistels[index]->set_manual_start_offset(offset);
    }
    return {largest_before - largest_offset(collection) + common.value_or(0), padding_files_of(collection)};
}

padding_outcome remove_offsets_and_padding(video_collection_ROOT& collection) {
    auto outcome = restore_offsets(collection);
    outcome.shift += largest_offset(collection);
    for (const auto& vistel : collection.vistels()) {
        if (vistel->manual_start_offset()) vistel->set_manual_start_offset(0);
    }
    return outcome;
}

result<void> make_padding_files(const std::vector<padding_file>& files, blank_vistel_movie& blank,
                                job& work) {
    std::vector<std::string> made;
    double all = 0;
    for (const auto& file : files) all += file.seconds;
    double done = 0;
    for (const auto& file : files) {
        const bool is_there = file_exists(file.path);
        job one([&](double fraction) {
            work.set_progress((done + fraction * file.seconds) / all);
            if (work.is_cancelled()) one.cancel();
        });
        if (work.is_cancelled()) one.cancel();
        auto written = is_there ? result<void>() : blank.write(file.path, file.seconds, one);
        if (!written) {
            for (const auto& path : made) machine_files().remove(path);
            return written;
        }
        if (!is_there) made.push_back(file.path);
        done += file.seconds;
    }
    return {};
}

std::vector<padding_file> padding_files_of(const video_collection_ROOT& collection) {
    std::vector<padding_file> files;
    for (const auto& vistel : collection.vistels()) {
        for (const auto& part : vistel->parts().parts) {
            const std::string name = padding_file_of(part);
            if (!name.empty()) files.push_back({path_join(vistel->data_folder(), name), part.part_duration});
        }
    }
    return files;
}

void remove_unused_padding_files(const video_collection_ROOT& collection,
                                 const std::function<bool(const std::string& path)>& remove) {
    const auto used = padding_files_of(collection);
    for (const auto& vistel : collection.vistels()) {
        const std::string folder = vistel->data_folder();
        if (folder.empty()) continue;
        for (const auto& name : names_in_folder(folder)) {
            if (!is_padding_file_name(name)) continue;
            const std::string path = path_join(folder, name);
            const bool is_used = std::any_of(used.begin(), used.end(),
                                             [&](const padding_file& file) { return file.path == path; });
            if (is_used) continue;
            if (!remove) machine_files().remove(path);
            if (remove && !remove(path)) return;
        }
    }
}

}  // namespace vistels
