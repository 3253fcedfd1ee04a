// SPDX-License-Identifier: GPL-3.0-or-later
//
// Measures synchronised playback of a collection without a window.
//   bench_playback [--short] [--only NAME]... [--movies FOLDER] [--minutes N] [COLLECTION]
// NAME is one of the parts below; without any all are run. Movies are made in FOLDER and stay there for the
// next run; without it in a temporary folder. COLLECTION takes the place of the demo event. The frame that is
// due comes from the packets' time stamps, the frame shown from the code in its pixels. Exits with 1 when a
// target is missed, with 2 when a frame was not found.

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "playback/endurance.h"
#include "playback/measured.h"
#include "playback/rates.h"
#include "playback/seeks.h"

namespace {

using namespace vistels::bench;

struct part {
    const char* name;
    std::function<void(measured&)> run;
};

struct wishes {
    bool is_short = false;
    double minutes = 20;  // of play at 4
    std::set<std::string> only;
    std::filesystem::path movies;
    std::string collection;
};

wishes read_wishes(int count, char** arguments) {
    wishes read;
    read.is_short = take_short(count, arguments);
    for (int i = 1; i < count; ++i) {
        const std::string word = arguments[i];
        const bool has_value = i + 1 < count;
        if (word == "--only" && has_value) {
            read.only.insert(arguments[++i]);
        } else if (word == "--movies" && has_value) {
            read.movies = arguments[++i];
        } else if (word == "--minutes" && has_value) {
            read.minutes = std::atof(arguments[++i]);
        } else {
            read.collection = word;
        }
    }
    return read;
}

std::filesystem::path temporary_movies() {
    std::string pattern = std::filesystem::temp_directory_path() / "vistels-bench-XXXXXX";
    if (mkdtemp(pattern.data()) == nullptr) stop_with("No temporary folder can be made");
    return pattern;
}

}  // namespace

int main(int count, char** arguments) {
    const wishes wished = read_wishes(count, arguments);
    const std::vector<part> parts = {
        {"ticks", measure_ticks},
        {"fast", measure_fast},
        {"reverse", measure_reverse},
        {"exact", measure_exact},
        {"seeks", measure_seeks},
        {"back", measure_back},
        {"processor", measure_processor_time},
        {"eight", measure_eight},
        {"long", measure_long},
        {"growth", [&](measured& run) { measure_growth(run, wished.minutes); }},
    };
    for (const auto& name : wished.only) {
        if (std::none_of(parts.begin(), parts.end(), [&](const part& one) { return name == one.name; }))
            stop_with("There is no part \"" + name + "\"");
    }
    const bool is_temporary = wished.movies.empty();
    const auto folder = is_temporary ? temporary_movies() : wished.movies;
    bool all_met = false;
    bool all_found = false;
    {
        measured run(folder, wished.collection, wished.is_short);
        for (const auto& one : parts) {
            if (!wished.only.empty() && !wished.only.contains(one.name)) continue;
            std::printf("-- %s\n", one.name);
            std::fflush(stdout);
            one.run(run);
        }
        all_met = run.all_met();
        all_found = run.all_found();
    }
    if (is_temporary) std::filesystem::remove_all(folder);
    if (!all_found) stop_with("Frames other than those that are due were shown");
    return all_met || wished.is_short ? 0 : 1;
}
