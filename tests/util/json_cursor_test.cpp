// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/json_cursor.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "support/simdjson_tree.h"
#include "util/json.h"

namespace vistels {
namespace {

void expect_read_as_by_simdjson(const std::string& document) {
    const auto expected = tree_by_simdjson(document, deepest_nesting);
    const auto read = read_json(document, "x");
    ASSERT_EQ(read.ok(), expected.has_value()) << document << "\n" << read.message();
    if (!expected) return;
    EXPECT_EQ(write_json(read.value()), write_json(*expected)) << document;
    EXPECT_EQ(read.value(), *expected) << document;
}

// What stands between the bars.
std::vector<std::string> split(const std::string& all) {
    std::vector<std::string> parts(1);
    for (const char character : all) {
        if (character == '|') parts.emplace_back();
        if (character != '|') parts.back() += character;
    }
    return parts;
}

TEST(json, is_read_as_by_another_reader) {
    for (const auto& number :
         split("0|-0|-0.0|00|01|-01|-|+1|.5|5.|1.e3|1e|1e+|1E5|1e-|0e0|0e99|1e22|1e23|1e308|1e309|"
               "-1e309|1e-400|-1e-400|0.1e-400|5e-324|2.4e-324|2.2250738585072011e-308|"
               "1.7976931348623159e308|9223372036854775807|9223372036854775808|-9223372036854775808|"
               "-9223372036854775809|18446744073709551615|18446744073709551616|99999999999999999999|"
               "100000000000000000000|9007199254740993|9007199254740993.0|0.1|123.456|"
               "1.0000000000000002|1e00000000000000000001|1e99999999999999999999|"
               "1e-99999999999999999999|0.00000000000000000000000000000001e350|"
               "1000000000000000000000000000000000e-350|1x|1 2|0x10|Infinity|NaN|- 1|1_0")) {
        expect_read_as_by_simdjson(number);
        expect_read_as_by_simdjson("[" + number + "]");
        expect_read_as_by_simdjson("{\"n\": " + number + " , \"m\":[-1.5]}");
    }
    // Numbers of any length.
    expect_read_as_by_simdjson(std::string(400, '9') + ".0");
    expect_read_as_by_simdjson("0." + std::string(400, '0') + "1");
    expect_read_as_by_simdjson("1" + std::string(400, '0') + "e-400");
    expect_read_as_by_simdjson("0." + std::string(400, '0') + "1e401");
    expect_read_as_by_simdjson("1e-" + std::string(400, '9'));
    for (const auto& text :
         split("|a|\\\"|\\\\|\\/|\\b\\f\\n\\r\\t|\\u0000|\\u00e4|\\uFFFF|\\u20AC|\\uD83D\\uDE00|"
               "\\ud83d\\ude00x|\\uD83D|\\uD83Dx|\\uD83D\\n|\\uD83D\\uD83D|\\uDE00|\\uDE00\\uD83D|\\u12|"
               "\\u12G4|\\U0041|\\x|\\|\\'|tab\there|line\nbreak|\x1F|\x7F|\xC3\xA4|\xC3|\xFF|"
               "\xED\xA0\x80|\xF0\x9F\x98\x80|\xF4\x90\x80\x80|eight ch|sixteen letters.|eight ch\\n|"
               "\\\\\\\\\\\\\\\"|more than eight\\u0041 and on")) {
        expect_read_as_by_simdjson("\"" + text + "\"");
        expect_read_as_by_simdjson("{\"" + text + "\":\"" + text + "\",\"" + text + "\":[]}");
    }
    for (const auto& document :
         split("| |\n\t\r []\n|\f[]|\xEF\xBB\xBF{}|\xEF\xBB\xBF|{}{}|[]]|[|]|{|}|[}|{]|[,]|[1,]|[,1]|"
               "[1,,2]|[1 2]|{,}|{\"a\"}|{\"a\":}|{\"a\":1,}|{\"a\":1 \"b\":2}|{a:1}|{1:1}|{\"a\"1}|"
               "{\"a\":1:2}|[\"a\":1]|{\"a\":1,\"a\":2,\"a\":{}}|{\"\":{\"\":[{}]}}|true|false|null|tru|"
               "truex|nulll|True|[true,false,null]|[true false]|nul|\"|'a'|[1]x|// a\n1|[1/**/]|"
               "[\"a\"\"b\"]|[[],[[]],{}]|[\"a]|{\"a\":[1,{\"b\":[}]}]}")) {
        expect_read_as_by_simdjson(document);
    }
    expect_read_as_by_simdjson(std::string("[1]\0", 4));
    expect_read_as_by_simdjson(std::string("[\"a\0b\"]", 7));
}

TEST(json, that_was_damaged_is_read_or_refused_as_by_another_reader) {
    const std::string whole =
        R"( {"rows" : [ {"name":"a\u00e4\\n", "x": [1, -2.5e3, true, null, {}], "": []}, [[0.125]] ], "n":)"
        "\"\xC3\xA4\xE2\x82\xAC\", \"last\": false}";
    constexpr std::string_view put = "[]{},:\"\\0-1.eEntu \n\xC3\x01";
    for (std::size_t at = 0; at < whole.size(); ++at) {
        expect_read_as_by_simdjson(whole.substr(0, at));
        expect_read_as_by_simdjson(std::string(whole).erase(at, 1));
        for (const char character : put) {
            std::string changed = whole;
            changed[at] = character;
            expect_read_as_by_simdjson(changed);
            expect_read_as_by_simdjson(std::string(whole).insert(at, 1, character));
        }
    }
}

// Where the reader of a list has stopped, in every way it can be walked.
TEST(json_cursor, gives_the_parts_of_a_document_and_passes_over_others) {
    stored_arena arena;
    json_cursor cursor(
        R"({"skipped":{"a":[1,"\"",{}]},"list":[[1],"b\n",{"c":2}],"\u0065mpty":{},"last":3})");
    ASSERT_EQ(cursor.next_form(), stored_view::form::dictionary);
    ASSERT_TRUE(cursor.enter());
    EXPECT_EQ(cursor.next_key(arena), "skipped");
    cursor.skip();
    EXPECT_EQ(cursor.next_key(arena), "list");
    ASSERT_TRUE(cursor.enter());
    ASSERT_TRUE(cursor.next_item());
    EXPECT_EQ(cursor.read(arena).items().size(), 1U);
    ASSERT_TRUE(cursor.next_item());
    EXPECT_EQ(cursor.read(arena).text(), "b\n");
    ASSERT_TRUE(cursor.next_item());
    ASSERT_TRUE(cursor.enter());
    EXPECT_EQ(cursor.next_key(arena), "c");
    EXPECT_EQ(cursor.read(arena).integer(), 2);
    EXPECT_FALSE(cursor.next_key(arena));
    EXPECT_FALSE(cursor.next_item());
    EXPECT_EQ(cursor.next_key(arena), "empty");
    ASSERT_TRUE(cursor.enter());
    EXPECT_FALSE(cursor.next_key(arena));
    EXPECT_EQ(cursor.next_key(arena), "last");
    EXPECT_EQ(cursor.read(arena).integer(), 3);
    EXPECT_FALSE(cursor.next_key(arena));
    EXPECT_TRUE(cursor.finish());
}

TEST(json_cursor, that_met_a_fault_gives_nothing_more) {
    stored_arena arena;
    struct {
        const char* document;
        const char* reason;
    } const cases[] = {
        {"[1,x,2]", "not valid JSON"}, {"[1,2", "not valid JSON"}, {"[1,2]x", "not valid JSON"}};
    for (const auto& [document, reason] : cases) {
        json_cursor cursor(document);
        ASSERT_TRUE(cursor.enter());
        for (int most = 5; cursor.next_item() && most > 0; --most) (void)cursor.read(arena);
        EXPECT_FALSE(cursor.finish()) << document;
        EXPECT_FALSE(cursor.next_item());
        EXPECT_FALSE(cursor.enter());
        EXPECT_FALSE(cursor.next_key(arena));
        EXPECT_NE(cursor.fault().message().find(reason), std::string::npos) << cursor.fault().message();
    }
    const auto deep = read_json(std::string(deepest_nesting + 1, '['), "the file");
    ASSERT_FALSE(deep);
    EXPECT_EQ(deep.message(), "\"the file\" cannot be read: it is nested more than 128 deep.");
    EXPECT_EQ(read_json("{\"a\"", "the file").message(),
              "\"the file\" cannot be read: it is not valid JSON.");
}

}  // namespace
}  // namespace vistels
