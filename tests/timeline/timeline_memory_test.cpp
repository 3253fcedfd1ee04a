// SPDX-License-Identifier: GPL-3.0-or-later
//
// What loading a timeline needs in memory, whatever the file holds: small things in great number are what
// takes the most for their size in a file.

#include <gtest/gtest.h>

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "document/change_journal.h"
#include "support/counted_memory.h"
#include "support/sanitized.h"
#include "support/temporary_folder.h"
#include "timeline/files/sxy_Save_Load.h"
#include "timeline/files/timeline_form.h"
#include "util/checksum.h"
#include "util/json.h"
#include "util/property_list.h"
#include "util/uuid.h"

namespace vistels {
namespace {

constexpr std::size_t most_times = 64;
constexpr std::size_t most_times_of_journal = 72;  // whose line is there as it was read, beside its edit

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
    for (const char* item :
         {"{\"x\":1},", "{\"action\":1},", "{\"action\":[1]},", "{\"value\":1},", "{\"alias\":\"a\"},",
          "{\"zoom_rect\":[1,1,1,1]},", "{\"uuid\":\"a text on the heap\"},"}) {
        all.push_back({quals, item, quals_end});
    }
    for (const char* item :
         {"{\"str\":1,\"end\":2,\"notes_dict\":{}},", "{\"str\":1,\"end\":2,\"alt_seconds\":1},",
          "{\"str\":1,\"end\":2,\"qualifiers\":{\"qualifiers_array\":[{\"x\":1}]}},",
          "{\"str\":1,\"end\":2,\"telestration\":{}},", "{\"str\":1,\"end\":2,\"pause_items\":[]},"}) {
        all.push_back({"{\"rows\":[{\"clips\":[", item, "]}]}"});
    }
    for (const char* key : {"uncompacted_rows", "uncompacted_row_categories", "uncompacted_sort_number"}) {
        for (const char* item : {"1,", "{},", "[1],", "\"\",", "{\"a\":1},"}) {
            all.push_back({"{\"rows\":[{\"" + std::string(key) + "\":[", item, "]}]}"});
        }
    }
    for (const char* item : {"1,", "{},", "[1],", "\"a\","}) {
        all.push_back({clip + "\"notes_dict\":{\"display_on\":[", item, "]}" + clip_end});
        all.push_back({quals + "{\"action\":[", item, "]}" + quals_end});
        all.push_back(
            {clip + "\"vistels_data\":{\"vistels_array\":[{\"vistel_rect\":[", item, "]}]}" + clip_end});
    }
    all.push_back({"{\"rows\":[{\"deleted clips\":[", "{\"edit_seconds\":9e9},", "]}]}"});
    all.push_back({"{\"rows\":[", "{\"color\":\"1,1,1\",\"uncompacted_rows\":[]},", "]}"});
    // Records first, then views: both may not take all there is.
    all.push_back(
        {quals + shape{"", "{\"x\":1},", ""}.of_size(250'000) + "]}},{\"pause_items\":[", "1,", "]}]}]}"});
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

// What few bytes tell apart: each text is another one.
std::string different_names(std::size_t bytes) {
    std::string text = R"({"rows":[{"clips":[{"str":1,"end":2,"qualifiers":{"qualifiers_array":[)";
    for (int number = 0; text.size() < bytes; ++number) {
        text += "{\"name\":\"" + std::to_string(number) + "\"},";
    }
    text.back() = ']';
    return text + "}}]}]}";
}

TEST(timeline, no_file_makes_loading_it_need_more_than_sixty_four_times_its_size) {
    const testing::temporary_folder folder;
    const auto expect_lean = [&](const std::string& file, const std::string& path) {
        testing::put_file(path, file);
        const std::size_t needed = most_needed([&] { (void)load_timeline(path); });
        EXPECT_LE(needed, most_times * file.size())
            << file.substr(0, 200) << ": " << static_cast<double>(needed) / static_cast<double>(file.size())
            << " times";
    };
    constexpr std::size_t bytes = testing::is_sanitized ? 300'000 : 1'000'000;
    for (const auto& one : greedy_documents()) expect_lean(one.of_size(bytes), folder / "chron.json");
    for (const auto& one : greedy_lists()) expect_lean(one.of_size(bytes), folder / "chron.plist");
    expect_lean(different_names(bytes), folder / "chron.json");
}

// What a person can have coded, at its smallest, stays far below that.
TEST(timeline, no_real_timeline_comes_near_that) {
    const testing::temporary_folder folder;
    constexpr int clip_count = 1'500;
    for (const bool is_bare : {true, false}) {
        sxy_ROW row;
        row.set_name("R");
        row.set_uuid(shared_text(new_uuid()));
        std::vector<clip_pointer> clips;
        for (int number = 0; number < clip_count; ++number) {
            sxy_CLIP clip;
            clip.set_id(new_uuid());
            clip.set_secs_start(number);
            clip.set_secs_end(number + 1);
            qual_ROOT all;
            for (int at = 0; at < 8 && !is_bare; ++at) {
                qual_ITEM qualifier;
                qualifier.set_uuid(new_uuid());
                qualifier.set_name(shared_text("Q" + std::to_string((number * 8 + at) % 5000)));
                qualifier.set_value(at);
                qualifier.set_pos(point{0.5, 0.5});
                clip_attribute_ITEM attribute;
                attribute.uuid = compact_text(new_uuid());
                attribute.name = shared_text("A" + std::to_string(at));
                qualifier.set_attributes({attribute, attribute});
                all.push_back(qualifier);
            }
            clip.set_qualifiers(all);
            if (!is_bare) {
                clip.set_alt_seconds(1);
                clip.set_note(std::make_shared<const clip_note>(clip_note().with_text("n")));
                clip.set_pause_items({{1}, {2}});
            }
            clips.push_back(std::make_shared<const sxy_CLIP>(std::move(clip)));
        }
        row.clips().assign(std::move(clips));
        timeline_snapshot timeline;
        timeline.rows.assign(3, std::make_shared<const sxy_ROW>(row));
        const auto document = write_timeline(timeline);
        const std::string files[] = {folder / "chron.plist", folder / "chron.json"};
        testing::put_file(files[0], write_property_list(document));
        testing::put_file(files[1], write_json(document, json_layout::one_line));
        for (const auto& path : files) {
            const std::size_t needed = most_needed([&] {
                const auto loaded = load_timeline(path);
                EXPECT_TRUE(loaded) << loaded.message();
            });
            const auto size = std::filesystem::file_size(path);
            EXPECT_LE(needed, 6 * size)
                << path << ": " << static_cast<double>(needed) / static_cast<double>(size) << " times";
        }
    }
}

std::string journal_line(const std::string& document) {
    return checksum_text(checksum(document)) + " " + document + "\n";
}

// A segment of one line, whose list is `repeated` up to that size, behind `before`.
std::string one_line_segment(const shape& one, std::size_t bytes) {
    return journal_line(R"({"base":{"size":1,"hash":"0000000000000001","through":0}})") +
           journal_line(one.of_size(bytes));
}

TEST(journal, no_line_makes_reading_it_need_more_than_seventy_two_times_its_size) {
    const testing::temporary_folder folder;
    const std::string edit = R"({"number":1,"edit":{"name":"n","operations":[)";
    const std::string clip = edit + R"({"do":"insert clip","row":"R","values":{"str":1,"end":2,)";
    const std::string qualifiers = clip + R"("qualifiers":{"qualifiers_array":[)";
    std::vector<std::string> segments;
    for (const char* item : {"1,", "{},", "\"\",", "{\"do\":\"move clip\"},", "{\"do\":\"move row\"},",
                             "{\"do\":\"insert qualifier\",\"values\":{\"x\":1}},",
                             "{\"do\":\"insert clip\",\"values\":{\"str\":1,\"end\":2,\"notes_dict\":{}}},",
                             "{\"do\":\"insert row\",\"values\":{\"uncompacted_rows\":[]}},"}) {
        segments.push_back(one_line_segment({edit, item, "]}}"}, 1'000'000));
    }
    for (const char* item : {"{\"x\":1},", "{\"name\":\"the name\"},", "{\"value\":1,\"uuid\":\"u\"},"}) {
        segments.push_back(one_line_segment({qualifiers, item, "]}}}]}}"}, 1'000'000));
    }
    segments.push_back(one_line_segment({"{\"time\":1,\"k\":[", "1,", "]}"}, 1'000'000));
    segments.push_back(one_line_segment({"{", "\"\":1,", ",\"time\":1}"}, 1'000'000));
    std::string small_lines = journal_line(R"({"base":{"size":1,"hash":"0000000000000001","through":0}})");
    for (int number = 1; small_lines.size() < 1'000'000; ++number) {
        small_lines += journal_line("{\"number\":" + std::to_string(number) + ",\"edit\":{}}");
    }
    segments.push_back(small_lines);
    for (const auto& segment : segments) {
        testing::put_file(folder / "chron data journal 1", segment);
        const std::size_t needed = most_needed([&] {
            EXPECT_TRUE(read_journal(folder.path(), timeline_form, {1, 1}));
        });
        EXPECT_LE(needed, most_times_of_journal * segment.size())
            << segment.substr(0, 250) << ": "
            << static_cast<double>(needed) / static_cast<double>(segment.size());
    }
}

// However many edits a person makes between two saves, and however many clips one of them changes.
TEST(journal, all_real_edits_are_read) {
    const testing::temporary_folder folder;
    const auto marked = [](int clips) {
        timeline_edit edit{"Stars", "", {}};
        for (int at = 0; at < clips; ++at) {
            property_dictionary set;
            set.add("stars", at % 5 + 1);
            edit.operations.emplace_back(operation::change_clip{new_uuid(), set, {}});
        }
        return edit;
    };
    std::vector<timeline_edit> edits(3'000, marked(1));
    edits.push_back(marked(20'000));
    operation::shift_clips moved{{}, 1};
    for (int at = 0; at < 20'000; ++at) moved.clips.push_back(new_uuid());
    edits.push_back({"Move", "", {moved}});
    std::string segment = journal_line(R"({"base":{"size":1,"hash":"0000000000000001","through":0}})");
    std::int64_t number = 0;
    for (const auto& edit : edits) {
        property_dictionary line;
        line.add("number", ++number);
        line.add("edit", write_edit(edit));
        segment += journal_line(write_json(line, json_layout::one_line));
    }
    testing::put_file(folder / "chron data journal 1", segment);
    const auto content = read_journal(folder.path(), timeline_form, {1, 1});
    ASSERT_TRUE(content) << content.message();
    EXPECT_TRUE(content.value().fits);
    EXPECT_EQ(content.value().edits.size(), edits.size());
}

}  // namespace
}  // namespace vistels
