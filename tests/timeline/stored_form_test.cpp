// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include "support/json_values.h"
#include "timeline/files/sxy_Save_Load.h"
#include "util/clock.h"

namespace vistels {
namespace {

using testing::json;
using testing::one_line;

// What a stored clip becomes when it is read and written again.
TEST(clip, is_read_leniently_and_written_in_the_stored_order) {
    struct {
        const char* stored;
        const char* written;  // empty: skipped
    } const cases[] = {
        {R"({"str":"12.5","end":14})", R"({"time_start":12.5,"time_end":14.0})"},
        {R"({"time_start":"1","str":2,"time_end":3})", R"({"time_start":2.0,"time_end":3.0})"},
        {R"({"time_start":" 1.5 ","time_end":"2e1"})", R"({"time_start":1.5,"time_end":20.0})"},
        {R"({"time_start":5,"time_end":3})", R"({"time_start":5.0,"time_end":3.0})"},
        {R"({"time_start":1})", ""},
        {R"({"time_start":true,"time_end":3})", ""},
        {R"({"time_start":"1s","time_end":3})", ""},
        {R"({"time_start":"inf","time_end":3})", ""},
        {R"({"time_end":3,"time_start":1,"uuid":"N","UUID":"O"})",
         R"({"uuid":"N","time_start":1.0,"time_end":3.0})"},
        {R"({"time_start":1,"time_end":3,"uuid":7,"UUID":"O"})",
         R"({"uuid":"O","time_start":1.0,"time_end":3.0})"},
        {R"({"time_start":1,"time_end":3,"type":"normal","stars":0,"coll_id":0,"clip_style":"CLIP_STYLE__NONE",
             "timer_clip_cumulative":false,"color":"red","unknown":1,"timeline_clip_position":0,"clip_group":""})",
         R"({"time_start":1.0,"time_end":3.0})"},
        {R"({"time_start":1,"time_end":3,"type":"pic","stars":3,"cl_red":1,"cl_grn":0.5,"cl_blu":0})",
         R"({"time_start":1.0,"time_end":3.0,"color":"1.0,0.5,0.0","stars":3,"type":"pic"})"},
        {R"({"vistels data":{"bounds_ratio":1.5},"triggers":[{"trigger_time":1}],"pause items":[{"seconds":2}],
             "coll ID":7,"telestration":{"x":1},"inserted_Objects":{"items":[]},"clip_group":"G","type ID":"T",
             "type":"odd","alt_color":"1,0,0","alt seconds":4,"alt count down":true,"Timer Clip Count Down":true,
             "Timer Clip Cumulative":true,"Timer Clip ALT Offset Minutes":1.5,"timeline clip position":9,
             "edit_info":"i","edit clip author":"a","edit_seconds":5,"color":"0,0,1,0.5","clip_style":"S",
             "row_uuid_in_clip":"R","row_category":"C","time_end":2,"time_start":1,"UUID":"U",
             "Notes dict":{"note_string":"n"}})",
         R"({"uuid":"U","time_start":1.0,"time_end":2.0,"row_category":"C","row_uuid_in_clip":"R","clip_style":"S",)"
         R"("color":"0.0,0.0,1.0,0.5","edit_seconds":5.0,"author":"a","edit_info":"i","timeline_clip_position":9,)"
         R"("timer_clip_alt_offset_minutes":1.5,"timer_clip_cumulative":true,"timer_clip_count_down":true,)"
         R"("alt_count_down":true,"alt_seconds":4.0,"alt_color":"1.0,0.0,0.0","type":"unknown","type_id":"T",)"
         R"("clip_group":"G","inserted_Objects":{"items":[]},"coll_id":7.0,"pause_items":[{"seconds":2.0}],)"
         R"("telestration":{},"triggers":[{"trigger_time":1.0}],"vistels_data":{"bounds_ratio":1.5},)"
         R"("notes_dict":{"note_string":"n"}})"},
        {R"({"time_start":1,"time_end":3,"qualifiers":{"qualifiers array":[
             {"UUID":"Q","alt time":3,"name":"Goal","category":"What","recepient":"x","time":1.123456789,
              "colR":1,"colG":0,"colB":0,"colA":0.5,"count down":true,"clock_time":"14:05:09","action":"A","value":2,
              "qualifier_attributes":[{"color":"0.12345,0,0","attr_uuid":"A1","time":2,"category":"c","name":"n"}]},
             "no dictionary"]}})",
         R"({"time_start":1.0,"time_end":3.0,"qualifiers":{"qualifiers_array":[{"time":1.12345679,"alt_time":3.0,)"
         R"("clock_time":"14:05:09","count down":true,"name":"Goal","category":"What","recepient":"x","uuid":"Q",)"
         R"("color":"1.0,0.0,0.0,0.5","qualifier_attributes":[{"name":"n","category":"c","time":2.0,)"
         R"("color":"0.123,0.0,0.0","attr_uuid":"A1"}],"action":"A","value":2.0}]}})"},
    };
    for (const auto& one : cases) {
        const auto clip = read_clip(json(one.stored));
        ASSERT_EQ(clip.has_value(), *one.written != '\0') << one.stored;
        if (clip) {
            EXPECT_EQ(one_line(write_clip(*clip)), one.written);
        }
    }
}

TEST(row, is_read_leniently_and_written_in_the_stored_order) {
    const double now = seconds_since_1970();
    const auto tombstone = [now](double days) {
        property_dictionary stored;
        stored.add("clip_ID", "D" + std::to_string(static_cast<int>(days)));
        stored.add("edit_seconds", now - days * 86400);
        return property_value(stored);
    };
    property_dictionary stored = json(
        R"x({"timer row":true,"color":"1,0,0","UUID row":"R","height real":44,"height":20,"row_category":"Cat",
            "row name":"Shot","sort_number":2,"sort_number_(for_row_Compactor_or_Expander)":3,
            "uncompacted_row_colors":["1,0,0"],"clips":[{"time_start":5,"time_end":6},{"time_start":1,"time_end":2},{}]})x");
    stored.add("deleted clips", property_array{tombstone(6), tombstone(8)});
    property_dictionary document;
    document.add("rows", property_array{property_value(stored), property_value("no row")});
    const auto loaded = read_timeline(document);
    EXPECT_EQ(loaded.skipped_clips, 1U);
    const auto written = write_timeline(loaded.content);
    property_dictionary row = *written.array("rows")->front().dictionary();
    const auto* tombstones = row.array("deleted clips");
    ASSERT_TRUE(tombstones);
    ASSERT_EQ(tombstones->size(), 1U);
    EXPECT_EQ(tombstones->front().dictionary()->text_or_empty("clip_ID"), "D6");
    row.remove("deleted clips");
    const std::string expected =
        R"x({"row_number":1,"sort_number":2,"sort_number_(for_row_Compactor_or_Expander)":3,"row_name":"Shot",)x"
        R"x("row_category":"Cat","uncompacted_row_colors":["1,0,0"],"height":20.0,"height_real":44.0,)x"
        R"x("uuid_row":"R","color":"1.0,0.0,0.0","timer_row":true,"clips":[{"time_start":1.0,"time_end":2.0},)x"
        R"x({"time_start":5.0,"time_end":6.0}]})x";
    EXPECT_EQ(one_line(row), expected);
}

TEST(timeline, writes_its_keys_in_order_and_only_what_is_selected_when_asked) {
    auto loaded = read_timeline(json(
        R"({"tags":[{"secs_tag":1,"xy_tag":"2, 3"}],"uuid_timeline":"T","description":"d","show_rows_by_category":true,"rows":[
            {"row_name":"a","uuid_row":"A"},{"row_name":"b","uuid_row":"B","clips":[
            {"uuid":"1","time_start":1,"time_end":2},{"uuid":"2","time_start":3,"time_end":4}]}]})"));
    EXPECT_EQ(
        one_line(write_timeline(loaded.content)).substr(0, 178),
        R"({"row_count":2,"show_rows_by_category":true,"data_version":2,"description":"d","uuid_timeline":"T",)"
        R"("tags":[{"secs_tag":1.0,"xy_tag":"2,3"}],"rows":[{"row_number":1,"row_name":"a")");
    loaded.content.rows[1]->clips()[1]->set_selected(true);
    sxy_DATA_root timeline(std::move(loaded.content));
    timeline.set_stores_only_selected(true);
    const auto selected = write_timeline(timeline.snapshot());
    EXPECT_TRUE(selected.boolean("only contains selected and filtered in clips").value_or(false));
    EXPECT_EQ(selected.integer("row_count"), 2);
    ASSERT_EQ(selected.array("rows")->size(), 1U);
    const auto& row = *selected.array("rows")->front().dictionary();
    EXPECT_EQ(row.integer("row_number"), 1);
    ASSERT_EQ(row.array("clips")->size(), 1U);
    EXPECT_EQ(row.array("clips")->front().dictionary()->text_or_empty("uuid"), "2");
}

}  // namespace
}  // namespace vistels
