// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <string>

#include "support/temporary_folder.h"
#include "timeline/files/sxy_Save_Load.h"
#include "util/json.h"

namespace vistels {
namespace {

std::string written(const loaded_timeline& loaded) {
    return std::to_string(loaded.skipped_clips) + write_json(write_timeline(loaded.content));
}

TEST(timeline_json, is_read_clip_by_clip_as_it_is_from_the_whole_document) {
    const char* const clip = R"({"uuid":"1","time_start":1,"time_end":2.5,"qualifiers":{"qualifiers_array":
        [{"name":"\u00e4","qualifier_attributes":[{},{"name":"a"},{"b":1},{"name":2}]},{},{"unknown":1},null,3]}})";
    const std::string row = R"({"row_name":"A","clips":[)" + std::string(clip) + ",{},1]}";
    const std::string documents[] = {
        "{}",
        R"({"rows":[)" + row + "]}",
        R"({"rows":[{},[],null,1,{"unknown":{"clips":[]}},)" + row +
            R"(,{"clips":[]},{"row name":"older"}]})",
        R"({"rows":[)" + row + R"(],"rows":[{"row_name":"last"}]})",
        R"({"rows":[)" + row + R"(],"rows":1,"uuid_timeline":"T"})",
        R"({"rows":[{"clips":[{}],"clips":[)" + std::string(clip) + R"(],"row_name":"A","row_name":"B"}]})",
        R"({"rows":[{"row_name":"A","clips":[)" + std::string(clip) + R"(],"clips":{}}]})",
        R"({"rows":{"row_name":"A"},"description":"d\n","tags":[{"secs_tag":1},{},{"xy_tag":"1,2"}]})",
        R"({"description":1,"description":"d","uuid_timeline":[],"show_rows_by_category":true,"data_version":9})",
    };
    for (const auto& document : documents) {
        const auto read = read_timeline_json(document, "x");
        ASSERT_TRUE(read) << document << read.message();
        const auto tree = read_json(document, "x");
        ASSERT_TRUE(tree);
        EXPECT_EQ(written(read.value()), written(read_timeline(*tree.value().dictionary()))) << document;
    }
    // The last "rows" and the last "clips" count, rows without any key of a row do not.
    const auto third = read_timeline_json(documents[2], "x").value();
    ASSERT_EQ(third.content.rows.size(), 3U);
    EXPECT_EQ(third.skipped_clips, 2U);
    EXPECT_EQ(third.content.rows[2]->name(), "older");
    const auto& clips = third.content.rows[0]->clips();
    ASSERT_EQ(clips.size(), 1U);
    ASSERT_EQ(clips[0]->qualifiers()->size(), 1U);
    EXPECT_EQ((*clips[0]->qualifiers())[0].attributes().size(), 1U);
    EXPECT_EQ(read_timeline_json(documents[3], "x").value().content.rows.size(), 1U);
    EXPECT_EQ(read_timeline_json(documents[4], "x").value().content.rows.size(), 0U);
    EXPECT_EQ(read_timeline_json(documents[5], "x").value().skipped_clips, 0U);
}

// What is passed over when it is read must not have been written.
TEST(timeline_json, of_records_with_nothing_to_write_is_written_as_it_is_read_again) {
    const auto read = read_timeline_json(R"({"rows":[{"clips":[{"str":1,"end":2,
        "vistels_data":{"vistels_array":[{"vistel_id":"wrong"}]}, "pause_items":[{"seconds":"wrong"},{}],
        "qualifiers":{"qualifiers_array":[{"time":"wrong","qualifier_attributes":[{"x":[]}]}]}}]}]})",
                                         "x");
    ASSERT_TRUE(read) << read.message();
    const auto bytes = timeline_bytes(read.value().content);
    const auto again = read_timeline_bytes(bytes, "x");
    ASSERT_TRUE(again) << again.message();
    EXPECT_EQ(timeline_bytes(again.value().content), bytes);
    const auto& clip = *read.value().content.rows[0]->clips()[0];
    EXPECT_EQ(clip.pause_items().size(), 1U);
    EXPECT_EQ(clip.qualifiers()->size(), 1U);
    EXPECT_TRUE((*clip.qualifiers())[0].attributes().empty());
}

TEST(timeline_json, that_is_no_timeline_is_told_with_its_name) {
    const testing::temporary_folder folder;
    struct {
        std::string document;
        const char* reason;
    } const cases[] = {
        {"[]", "it does not hold a timeline"},
        {" 1 ", "it does not hold a timeline"},
        {"[1", "it is not valid JSON"},
        {"", "it is not valid JSON"},
        {"{\"rows\":[{\"clips\":[{\"str\":1,\"end\":2}]}]", "it is not valid JSON"},
        {"{\"rows\":[{\"clips\":[{\"str\":1,\"end\":2}]}]}}", "it is not valid JSON"},
        {"{\"unknown\":\"\xFF\"}", "it is not valid JSON"},
        {"{\"unknown\":" + std::string(200, '[') + "}", "it is nested more than 128 deep"},
    };
    for (const auto& [document, reason] : cases) {
        const auto path = folder / "chron.json";
        testing::put_file(path, document);
        const auto loaded = load_timeline(path);
        ASSERT_FALSE(loaded) << document;
        EXPECT_EQ(loaded.message(), "\"" + path + "\" cannot be read: " + reason + ".");
    }
}

}  // namespace
}  // namespace vistels
