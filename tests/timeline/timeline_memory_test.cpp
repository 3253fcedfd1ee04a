// SPDX-License-Identifier: GPL-3.0-or-later
//
// What loading a timeline needs in memory, whatever the file holds: small things in great number are what
// takes the most for their size in a file.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/counted_memory.h"
#include "support/temporary_folder.h"
#include "timeline/sxy_Save_Load.h"

namespace vistels {
namespace {

constexpr std::size_t beside = std::size_t{512} * 1024;

// `repeated` up to that size, between two ends.
struct shape {
    std::string before;
    std::string repeated;
    std::string after;

    std::string of_size(std::size_t bytes) const {
        std::string text = before;
        while (text.size() < bytes) text += repeated;
        if (text.ends_with(',')) text.pop_back();
        return text + after;
    }
};

std::string nested(const std::string& innermost, int levels, const char* open, const char* close) {
    std::string text = innermost;
    for (int level = 0; level < levels; ++level) text = open + text + close;
    return text;
}

std::vector<shape> greedy_documents() {
    const std::string clip = R"({"rows":[{"clips":[{"str":1,"end":2,)";
    const std::string clip_end = "}]}]}";
    const std::string quals = clip + R"("qualifiers":{"qualifiers_array":[)";
    const std::string quals_end = "]}" + clip_end;
    std::vector<shape> all;
    for (const char* item :
         {"{},", "[],", "1,", "\"\",", "[1],", "{\"\":1},", "{\"clips\":[{}]},", "{\"clips\":[]},",
          "{\"row_name\":\"n\"},", "{\"row_name\":\"\"},", "{\"height\":1},"}) {
        all.push_back({"{\"rows\":[", item, "]}"});
    }
    for (const char* item :
         {"{},", "1,", "{\"\":1},", "{\"str\":1,\"end\":2},", "{\"str\":1,\"end\":2,\"stars\":1},"}) {
        all.push_back({"{\"rows\":[{\"clips\":[", item, "]}]}"});
    }
    for (const char* key : {"triggers", "pause_items", "unknown", "name"}) {
        for (const char* item :
             {"{},", "1,", "[],", "\"\",", "{\"\":1},", "{\"seconds\":1},", "{\"trigger_time\":1},"}) {
            all.push_back({clip + "\"" + key + "\":[", item, "]" + clip_end});
        }
    }
    for (const char* item :
         {"{},", "1,", "\"\",", "{\"\":1},", "{\"time\":1},", "{\"uuid\":\"u\"},", "{\"name\":\"\"},"}) {
        all.push_back({quals, item, quals_end});
        all.push_back({quals + "{\"name\":\"n\",\"qualifier_attributes\":[", item, "]}" + quals_end});
    }
    for (const char* item : {"{\"x\":1},", "{\"attr_uuid\":\"\"},"}) {
        all.push_back({quals + "{\"name\":\"n\",\"qualifier_attributes\":[", item, "]}" + quals_end});
    }
    for (const char* item : {"{},", "{\"\":1},", "{\"secs_tag\":1},", "1,"}) {
        all.push_back({"{\"tags\":[", item, "]}"});
    }
    for (const char* item : {"{\"level\":1},", "{},", "{\"zoom_data\":{}},"}) {
        all.push_back({clip + "\"vistels_data\":{\"vistels_array\":[", item, "]}" + clip_end});
    }
    all.push_back({"{\"show_rows_by_category\":[", "1,", "]}"});
    all.push_back({"{\"description\":\"", "x\\n", "\"}"});
    all.push_back({"{\"description\":\"", "x", "\"}"});
    all.push_back({"{\"uuid_timeline\":\"", "x", "\"}"});
    all.push_back({"{", "\"\":1,", ",\"k\":1}"});
    all.push_back({"{\"rows\":[{", "\"\":1,", ",\"k\":1}]}"});
    all.push_back({clip, "\"\":1,", ",\"k\":1" + clip_end});
    all.push_back({"{\"rows\":[", nested("1", 120, "[", "]") + ",", "]}"});
    all.push_back({clip + "\"x\":[", nested("1", 110, "{\"\":", "}") + ",", "]" + clip_end});
    return all;
}

std::vector<shape> greedy_lists() {
    const std::string rows = "<plist><dict><key>rows</key><array>";
    const std::string rows_end = "</array></dict></plist>";
    const std::string clip =
        rows + "<dict><key>clips</key><array><dict><key>str</key><real>1</real><key>end</key><real>2</real>";
    const std::string clip_end = "</dict></array></dict>" + rows_end;
    const std::string quals = clip + "<key>qualifiers</key><dict><key>qualifiers_array</key><array>";
    const std::string quals_end = "</array></dict>" + clip_end;
    const std::string attributes =
        quals + "<dict><key>name</key><string>n</string><key>qualifier_attributes</key><array>";
    const std::string attributes_end = "</array></dict>" + quals_end;
    return {
        {rows, "<dict/>", rows_end},
        {rows, "<dict><key/><true/></dict>", rows_end},
        {rows, "<dict><key>clips</key><array/></dict>", rows_end},
        {rows + "<dict><key>clips</key><array>", "<dict/>", "</array></dict>" + rows_end},
        {quals, "<dict/>", quals_end},
        {quals, "<dict><key/><true/></dict>", quals_end},
        {quals, "<dict><key>x</key><real>1</real></dict>", quals_end},
        {quals, "<dict><key>action</key><true/></dict>", quals_end},
        {attributes, "<dict/>", attributes_end},
        {attributes, "<dict><key/><true/></dict>", attributes_end},
        {attributes, "<dict><key>x</key><real>1</real></dict>", attributes_end},
        {attributes, "<true/>", attributes_end},
        {clip + "<key>triggers</key><array>", "<dict/>", "</array>" + clip_end},
        {clip + "<key>pause_items</key><array>", "<dict/>", "</array>" + clip_end},
        {clip + "<key>x</key><array>", "<string/>", "</array>" + clip_end},
        {"<plist><dict><key>tags</key><array>", "<dict/>", rows_end},
        {"<plist><dict><key>show_rows_by_category</key><array>", "<true/>", rows_end},
        {"<plist><dict><key>description</key><string>", "x&amp;", "</string></dict></plist>"},
        {"<plist><dict>", "<key/><true/>", "</dict></plist>"},
    };
}

TEST(timeline, no_file_makes_loading_it_need_more_than_twenty_times_its_size) {
    const testing::temporary_folder folder;
    const auto expect_lean = [](const shape& one, const std::string& path) {
        constexpr std::size_t bytes = 1'000'000;
        const auto file = one.of_size(bytes);
        testing::put_file(path, file);
        const std::size_t needed = most_needed([&] {
            const auto loaded = load_timeline(path);
            EXPECT_TRUE(loaded) << loaded.message();
        });
        EXPECT_LE(needed, 20 * file.size() + beside)
            << one.before << one.repeated << ": " << double(needed) / double(file.size()) << " times";
    };
    for (const auto& one : greedy_documents()) expect_lean(one, folder / "chron.json");
    for (const auto& one : greedy_lists()) expect_lean(one, folder / "chron.plist");
}

}  // namespace
}  // namespace vistels
