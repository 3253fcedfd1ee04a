// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#include "support/temporary_folder.h"
#include "util/safe_write.h"

namespace vistels::testing {

// Makes, in `vault`, a collection at `folder` of two vistels "A" and "B" of 20 seconds whose movies hold
// nothing, standing at `movie_time`.
inline void put_stored_event(const std::string& vault, const std::string& folder, double movie_time) {
    property_array items;
    for (const char* uuid : {"A", "B"}) {
        const std::string data = vault + "/Single Videos/" + uuid;
        std::filesystem::create_directories(data);
        property_dictionary part;
        part.add("part_duration", 20.0);
        property_dictionary record;
        record.add("drone_array", property_array{part});
        EXPECT_TRUE(safe_write(data + "/single video.plist", record));
        put_file(data + "/part 001.mp4", "no movie");
        property_dictionary item;
        item.add("UUID single video - g", uuid);
        item.add("Vistel name UUID - coll", *uuid == 'A' ? 1.0 : 2.0);
        items.emplace_back(item);
    }
    std::filesystem::create_directories(folder);
    property_dictionary record;
    record.add("video group name", "Final");
    record.add("movie time", movie_time);
    record.add("array video group items", items);
    EXPECT_TRUE(safe_write(folder + "/video group.plist", record));
}

}  // namespace vistels::testing
