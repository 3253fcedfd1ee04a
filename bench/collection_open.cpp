// SPDX-License-Identifier: GPL-3.0-or-later
//
// Measures the opening of a collection: its record, and for each vistel the record and the movie parts in its
// data folder. No movie is opened.
//   bench_collection_open [--short] [--vistels N] [--parts N] [--at FOLDER]
// The peer reads the same files and parses them with expat alone, with empty handlers: it looks at no folder
// and keeps nothing. Both take turns; the figure is the median. Exits with 1 when the target is missed.

#include <expat.h>
#include <fcntl.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "support/measure.h"
#include "util/clock.h"
#include "util/file_system.h"
#include "util/safe_write.h"
#include "util/uuid.h"
#include "video/video_coll_LOAD.h"

namespace {

using namespace vistels;
using namespace vistels::bench;
namespace fs = std::filesystem;

constexpr double most_seconds = 0.1;
constexpr int runs = 31;

struct event {
    std::string folder;
    std::vector<std::string> records;  // the files that the peer parses
};

void put(const std::string& path, const property_dictionary& record) {
    fs::create_directories(path_folder(path));
    if (const auto written = safe_write(path, record); !written) stop_with(written.message());
}

property_dictionary item_record(const std::string& uuid, int number) {
    property_dictionary item;
    item.add("UUID single video - g", uuid);
    item.add("proportion rect - coll", "0.25,0.5,0.25,0.25");
    item.add("vistel_number_displayed", number);
    item.add("save_video_data_locally", false);
    item.add("flicked_IN_Vistel_Rotation", 0.0);
    item.add("this_vistel_flicked_in", false);
    item.add("Vistel name UUID - coll", static_cast<double>(number));
    item.add("manual start offset", -0.25 * number);
    item.add("saved view order i8", number);
    item.add("Vistel video name - coll", "Camera " + std::to_string(number));
    return item;
}

void make_vistel(event& made, const std::string& uuid, int number, int parts) {
    const std::string folder = path_join(path_join(made.folder, vistels_folder_name), uuid);
    property_array stored;
    for (int part = 1; part <= parts; ++part) {
        property_dictionary one;
        one.add("gap_before", part == 1 ? 0 : 2.5);
        one.add("part_duration", 251.52);
        stored.emplace_back(std::move(one));
    }
    auto record = item_record(uuid, number);
    record.add("creator", "analyst");
    record.add("drone_array", std::move(stored));
    made.records.push_back(path_join(folder, vistel_file_name));
    put(made.records.back(), record);
    for (int part = 1; part <= parts; ++part) {
        char name[32];
        std::snprintf(name, sizeof name, "part %03d.mp4", part);
        int descriptor = -1;
        machine_files().open(path_join(folder, name), O_WRONLY | O_CREAT, descriptor);
        machine_files().close(descriptor);
    }
}

event make_event(const std::string& folder, int vistels, int parts) {
    event made{folder, {path_join(folder, collection_file_name)}};
    property_array items;
    for (int number = 1; number <= vistels; ++number) {
        const std::string uuid = new_uuid();
        items.emplace_back(item_record(uuid, number));
        make_vistel(made, uuid, number, parts * number / vistels - parts * (number - 1) / vistels);
    }
    property_dictionary record;
    record.add("UUID video group", new_uuid());
    record.add("video type state", "PLAYBACK");
    record.add("array video group items", std::move(items));
    put(made.records.front(), record);
    return made;
}

void parse_alone(const std::string& path) {
    const auto bytes = read_file(path);
    if (!bytes) stop_with(bytes.message());
    XML_Parser parser = XML_ParserCreate(nullptr);
    XML_SetElementHandler(
        parser, [](void*, const char*, const char**) {}, [](void*, const char*) {});
    XML_SetCharacterDataHandler(parser, [](void*, const char*, int) {});
    if (XML_Parse(parser, bytes.value().data(), static_cast<int>(bytes.value().size()), 1) != XML_STATUS_OK) {
        stop_with("\"" + path + "\" could not be parsed");
    }
    XML_ParserFree(parser);
}

std::size_t parts_of(const video_collection_ROOT& collection) {
    std::size_t parts = 0;
    for (const auto& vistel : collection.vistels()) {
        for (const auto& part : vistel->parts().parts) parts += part.path.empty() ? 0 : 1;
    }
    return parts;
}

}  // namespace

int main(int count, char** arguments) {
    const bool is_short = take_short(count, arguments);
    int vistels = 16;
    int parts = 200;
    std::string at = fs::temp_directory_path().string();
    for (int index = 1; index + 1 < count; index += 2) {
        const std::string name = arguments[index];
        if (name == "--vistels") vistels = std::atoi(arguments[index + 1]);
        if (name == "--parts") parts = std::atoi(arguments[index + 1]);
        if (name == "--at") at = arguments[index + 1];
    }
    const std::string folder = path_join(at, "bench collection " + new_uuid());
    const event made = make_event(folder, vistels, parts);
    const steady_clock watch;
    std::vector<double> wall;
    paired_runs pairs;
    for (int run = 0; run < runs; ++run) {
        const double begun = watch.seconds();
        const double ours = seconds_of([&] {
            const auto loaded = load_collection(folder);
            if (!loaded || !loaded.value().messages.empty()) stop_with("The collection was not read whole");
            if (parts_of(loaded.value().collection) != static_cast<std::size_t>(parts)) {
                stop_with("Movie parts are missing");
            }
        });
        wall.push_back(watch.seconds() - begun);
        pairs.add(ours, seconds_of([&] {
                      for (const auto& path : made.records) parse_alone(path);
                  }));
    }
    fs::remove_all(folder);
    const double typical = median(wall);
    std::printf("%d vistels, %d parts: open in %.2f ms (at most %.0f), processor time %.2f ms\n", vistels,
                parts, typical * 1e3, most_seconds * 1e3, median(pairs.ours) * 1e3);
    std::printf("expat alone on the same files: %.2f ms, ours %.2f times\n", median(pairs.theirs) * 1e3,
                pairs.ratio());
    return typical <= most_seconds || is_short ? 0 : 1;
}
