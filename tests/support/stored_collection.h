// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

#include "support/temporary_folder.h"
#include "util/property_value.h"
#include "util/safe_write.h"
#include "video/video_coll_LOAD.h"

namespace vistels::testing {

// A stored dictionary from keys and values.
inline property_dictionary dictionary(std::initializer_list<std::pair<const char*, property_value>> entries) {
    property_dictionary made;
    for (const auto& [key, value] : entries) made.add(key, value);
    return made;
}

// A vault with one collection of two vistels, "A" of two parts and "B" of one.
class stored_collection {
  public:
    stored_collection() {
        for (const char* uuid : {"A", "B"}) std::filesystem::create_directories(vistel_folder(uuid));
        std::filesystem::create_directories(folder());
        write_vistel("A", {{0.5, 2}, {1, 3}});
        write_vistel("B", {{0, 4}});
        for (const char* name : {"part 001.mp4", "part 002.mp4"})
            put_file(vistel_folder("A") + name, "movie");
        put_file(vistel_folder("B") + "camera 7.MOV", "movie");
        property_array items;
        double number = 1;
        for (const char* uuid : {"A", "B"}) {
            items.emplace_back(
                dictionary({{"UUID single video - g", uuid}, {"Vistel name UUID - coll", number++}}));
        }
        EXPECT_TRUE(
            safe_write(folder() + "/video group.plist",
                       dictionary({{"video group name", "Cup"}, {"array video group items", items}})));
    }
    std::string folder() const { return home / "Event.VVault/Video Groups/Cup"; }
    std::string vistel_folder(const std::string& uuid) const {
        return home / "Event.VVault/Single Videos/" + uuid + "/";
    }
    void write_vistel(const char* uuid, const std::vector<std::pair<double, double>>& parts) const {
        property_array stored;
        for (const auto& [gap, duration] : parts) {
            stored.emplace_back(dictionary({{"gap_before", gap}, {"part_duration", duration}}));
        }
        EXPECT_TRUE(safe_write(vistel_folder(uuid) + "single video.plist",
                               dictionary({{"drone_array", stored}, {"creator", "me"}})));
    }
    loaded_collection load() const {
        auto loaded = load_collection(folder());
        EXPECT_TRUE(loaded) << loaded.message();
        return loaded ? std::move(loaded).value() : loaded_collection{};
    }

  private:
    temporary_folder home;
};

}  // namespace vistels::testing
