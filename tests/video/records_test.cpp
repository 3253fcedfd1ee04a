// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <map>

#include "support/stored_collection.h"
#include "video/collection_edit.h"
#include "video/video_coll_Offsets.h"
#include "video/video_collection_ROOT.h"

namespace vistels {
namespace {

using testing::dictionary;

using offsets = std::vector<vistel_offset>;

TEST(offset_rule, largest_offset_and_leads) {
    const struct {
        offsets items;
        double for_clips, for_composer;
        std::vector<double> leads_for_clips, leads_for_composer;
    } cases[] = {
        {{}, 0, 0, {}, {}},
        {{{1, 0.0}}, 0, 0, {0}, {0}},
        {{{1, -3.0}, {2, -5.0}}, 0, -3, {3, 5}, {0, 2}},
        {{{1, 2.0}, {2, -1.5}}, 2, 2, {0, 3.5}, {0, 3.5}},
        {{{1, std::nullopt}, {2, -4.0}}, 0, -4, {0, 4}, {-4, 0}},
        {{{1, std::nullopt}}, 0, 0, {0}, {0}},
        {{{0, 2.0}, {-3, 1.0}, {4, -1.0}}, 2, 2, {0, 1, 3}, {0, 0, 3}},  // numbers that find nothing
    };
    for (const auto& one : cases) {
        EXPECT_EQ(largest_offset_for_clips(one.items), one.for_clips);
        EXPECT_EQ(largest_offset_for_composer(one.items), one.for_composer);
        for (std::size_t index = 0; index < one.items.size(); ++index) {
            EXPECT_EQ(lead_for_clips(one.items, one.items[index]), one.leads_for_clips[index]);
            EXPECT_EQ(lead_for_composer(one.items, one.items[index].number), one.leads_for_composer[index]);
        }
        EXPECT_EQ(lead_for_composer(one.items, 99), 0);
    }
}

TEST(offset_rule, an_offset_is_found_by_a_positive_number_and_the_first_counts) {
    const offsets items{{0, 9.0}, {-2, 8.0}, {7, 1.5}, {7, 2.5}, {8, std::nullopt}};
    const std::map<double, double> wanted{{0, 0}, {-2, 0}, {7, 1.5}, {8, 0}, {9, 0}};
    for (const auto& [number, offset] : wanted) EXPECT_EQ(offset_of_number(items, number), offset) << number;
    EXPECT_EQ(offset_of_number({}, 7), 0);
}

TEST(offset_rule, source_range) {
    const struct {
        double start, end, lead, duration, from, seconds;
        std::int64_t from_600, duration_600;
    } cases[] = {
        {10, 12, 1.5, 60, 11.5, 2, 6900, 1200},
        {12, 10, 1.5, 60, 11.5, 2, 6900, 1200},  // the wrong way round
        {-3, 2, 1, 60, 0, 3, 0, 1800},           // before the movie
        {58, 70, 0, 60, 58, 2, 34800, 1200},     // over its end
        {70, 80, 0, 60, 60, 0, 36000, 0},        // behind its end
        {-9, -5, 1, 60, 0, 0, 0, 0},
        {1, 2, 0, 0, 0, 0, 0, 0},                           // no movie
        {1.0004, 2.0012, 0, 60, 1.0004, 1.0008, 600, 600},  // to the nearest 1/600
    };
    for (const auto& one : cases) {
        const auto range = source_range_of(one.start, one.end, one.lead, one.duration);
        EXPECT_NEAR(range.from, one.from, 1e-12) << one.start;
        EXPECT_NEAR(range.seconds, one.seconds, 1e-12) << one.start;
        EXPECT_EQ(range.from_600, one.from_600) << one.start;
        EXPECT_EQ(range.duration_600, one.duration_600) << one.start;
    }
}

TEST(movie_parts, start_behind_all_gaps_and_parts_before) {
    movie_Part_DRONE_Offsets_Root parts;
    EXPECT_EQ(parts.duration(), 0);
    parts.parts = {{1.5, 10, "", {}}, {0, 5, "", {}}, {2, 4, "", {}}};
    EXPECT_EQ(parts.starts(), (std::vector<double>{1.5, 11.5, 18.5}));
    EXPECT_EQ(parts.duration(), 22.5);
}

std::vector<std::string> keys_of(const property_dictionary& stored) {
    std::vector<std::string> keys;
    for (const auto& entry : stored) keys.push_back(entry.key);
    return keys;
}

TEST(collection_record, keeps_every_key_in_the_stored_order) {
    const auto item = dictionary({{"a key of later", 4},
                                  {"manual start offset", -1.25},
                                  {"proportion rect - coll", property_array{0.0, 0.5, 0.5, 0.5}},
                                  {"UUID single video - g", "V"},
                                  {"overlay", dictionary({{"x", 1}})},
                                  {"save_video_data_locally", false},
                                  {"Vistel name UUID - coll", 12.0}});
    const auto stored = dictionary({{"pushed vistel data", dictionary({{"y", 2}})},
                                    {"array video group items", property_array{item}},
                                    {"another later key", "kept"},
                                    {"temp_completion_UUID_created_during_archive", "gone"},
                                    {"UUID video group quick", "9007199254740991"},
                                    {"UUID video group", "C"},
                                    {"volume", "loud"},
                                    {"movie time", 3},
                                    {"video type state", "CAPTURE PREVIEW"}});
    const auto written = write_collection(read_collection(stored), 1000);
    EXPECT_EQ(keys_of(written), (std::vector<std::string>{
                                    "UUID video group", "UUID video group quick", "video type state",
                                    "volume", "date updated", "seconds updated", "movie time",
                                    "pushed vistel data", "array video group items", "another later key"}));
    EXPECT_EQ(written.text_or_empty("UUID video group quick"), "9007199254740991");
    EXPECT_EQ(written.number("volume"), 1);
    const auto& item_written = *written.array("array video group items")->front().dictionary();
    EXPECT_EQ(keys_of(item_written),
              (std::vector<std::string>{"UUID single video - g", "proportion rect - coll",
                                        "save_video_data_locally", "Vistel name UUID - coll",
                                        "manual start offset", "overlay", "a key of later"}));
    for (const auto& entry : item) EXPECT_EQ(*item_written.find(entry.key), entry.value) << entry.key;
}

TEST(collection_record, tells_of_an_area_that_scrolls_only_when_it_does) {
    const auto with = [](property_value value) {
        return read_collection(dictionary({{"video area scrolls", std::move(value)}, {"a later key", 1}}));
    };
    for (const bool was : {false, true}) {
        for (const bool is : {false, true}) {
            auto collection = was ? with(true) : read_collection({});
            EXPECT_EQ(collection.area_scrolls(), was);
            collection.set_area_scrolls(is);
            const auto written = write_collection(collection, 0);
            EXPECT_EQ(written.boolean("video area scrolls"), is ? std::optional(true) : std::nullopt);
            const auto edit = difference(was ? with(true) : read_collection({}), collection);
            EXPECT_EQ(edit.empty(), was == is);
        }
    }
    EXPECT_FALSE(with("yes").area_scrolls());
    EXPECT_EQ(write_collection(with("yes"), 0).text_or_empty("video area scrolls"), "yes");
}

TEST(collection_record, wrong_types_keep_the_defaults) {
    for (const auto& wrong :
         {property_value("text"), property_value(property_array{}), property_value(true)}) {
        property_dictionary stored;
        for (const char* key : {"UUID video group quick", "movie time", "array video group items"}) {
            stored.add(key, wrong);
        }
        const auto collection = read_collection(stored);
        EXPECT_EQ(collection.quick_number(), 0);
        EXPECT_EQ(collection.movie_time(), 0);
        EXPECT_TRUE(collection.vistels().empty());
    }
    for (const char* text : {"0", "-4", "9007199254740992", "1.5", "nan", "A-UUID"}) {
        EXPECT_EQ(read_collection(dictionary({{"UUID video group quick", text}})).quick_number(), 0) << text;
    }
}

TEST(collection_record, state_texts) {
    for (const char* text : {"CAPTURE PREVIEW", "CAPTURING IN PROGRESS", "PLAYBACK", "NONE"}) {
        EXPECT_EQ(video_type_state_text(video_type_state_from_text(text)), text);
    }
    EXPECT_EQ(video_type_state_from_text("playback"), video_type_state::none);
}

TEST(collection_record, grid_covers_the_area_without_overlap) {
    for (std::size_t count = 0; count <= 12; ++count) {
        const auto frames = grid_layout(count);
        ASSERT_EQ(frames.size(), count);
        for (std::size_t a = 0; a < count; ++a) {
            EXPECT_GE(frames[a].x, 0);
            EXPECT_LE(frames[a].x + frames[a].width, 1 + 1e-9);
            EXPECT_LE(frames[a].y + frames[a].height, 1 + 1e-9);
            for (std::size_t b = 0; b < a; ++b) {
                const bool beside = frames[b].x + frames[b].width <= frames[a].x + 1e-9;
                const bool above = frames[b].y + frames[b].height <= frames[a].y + 1e-9;
                EXPECT_TRUE(beside || above) << count << ": " << b << ", " << a;
            }
        }
    }
}

}  // namespace
}  // namespace vistels
