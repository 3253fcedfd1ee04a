// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <string>

#include "util/property_list.h"
#include "util/stored_sink.h"
#include "util/stored_view.h"

namespace vistels {
namespace {

// Every kind of call, at every kind of place.
void put_everything(stored_sink& sink) {
    sink.put("yes", true);
    sink.put("no", false);
    sink.put("whole", 7);
    sink.put("large", std::int64_t{-9223372036854775807});
    sink.put("real", 0.1);
    sink.put("sharp \"&<>\" key\r", "sharp & <text>\r\n\ttab");
    sink.put("long", std::string(5000, 'x') + "&" + std::string(5000, 'y'));
    sink.put("not ASCII", "\xC3\xA9 \xFF \x01");
    sink.put("data", property_value(property_data{"bytes"}));
    sink.put("date", property_value(property_date{951827696}));
    sink.begin_dictionary("empty");
    sink.end();
    sink.begin_array("list");
    for (int number = 0; number < 3; ++number) sink.put("", number);
    sink.put("", "looks like <dict>\n");
    sink.begin_array("");
    sink.end();
    sink.begin_dictionary("");
    sink.put("", property_value(property_array{property_value("deep"), property_value(property_array())}));
    sink.end();
    sink.end();
    sink.put("last", "");
}

TEST(stored_sink, writes_the_same_bytes_as_the_dictionary_that_the_same_calls_build) {
    dictionary_sink dictionary;
    put_everything(dictionary);
    const property_value built(dictionary.take());
    property_list_sink bytes;
    bytes.begin_dictionary("");
    put_everything(bytes);
    bytes.end();
    const auto written = bytes.take();
    EXPECT_EQ(written, write_property_list(built));

    const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\">\n";
    EXPECT_TRUE(written.starts_with(head + "<dict>\n\t<key>yes</key>\n\t<true/>\n\t<key>no</key>\n"));
    const std::string tail =
        "\t<key>empty</key>\n\t<dict/>\n\t<key>list</key>\n\t<array>\n\t\t<integer>0</integer>\n"
        "\t\t<integer>1</integer>\n\t\t<integer>2</integer>\n\t\t<string>looks like &lt;dict&gt;\n</string>\n"
        "\t\t<array/>\n\t\t<dict>\n\t\t\t<key></key>\n\t\t\t<array>\n\t\t\t\t<string>deep</string>\n"
        "\t\t\t\t<array/>\n\t\t\t</array>\n\t\t</dict>\n\t</array>\n\t<key>last</key>\n\t<string></string>\n"
        "</dict>\n</plist>\n";
    EXPECT_TRUE(written.ends_with(tail)) << written;

    bytes.put("", 1);  // it can be used again
    EXPECT_EQ(bytes.take(), write_property_list(property_value(1)));
}

TEST(stored_view, shows_and_copies_what_it_looks_at) {
    dictionary_sink sink;
    put_everything(sink);
    property_value value(sink.take());
    value.dictionary()->add("null", property_value());
    stored_arena arena;
    for (int turn = 0; turn < 3; ++turn) {  // what is cleared is used again
        arena.clear();
        const auto view = view_of(value, arena);
        EXPECT_EQ(view.copy(), value);
        ASSERT_EQ(view.members().size(), value.dictionary()->size());
        EXPECT_EQ(view.members()[2].value.number(), 7.0);
        EXPECT_EQ(view.members()[2].value.boolean(), std::nullopt);
        EXPECT_EQ(view.members()[0].value.integer(), std::nullopt);
        EXPECT_EQ(view.members()[4].value.integer(), std::nullopt);
        EXPECT_EQ(view.members()[8].value.text(), std::nullopt);
        EXPECT_TRUE(view.items().empty());
    }
    EXPECT_EQ(stored_view(3.0).integer(), 3);
    EXPECT_EQ(stored_view(1e300).integer(), std::nullopt);
}

TEST(stored_arena, keeps_what_it_was_given_whatever_follows) {
    stored_arena arena;
    std::vector<std::string_view> kept;
    for (std::size_t turn = 0; turn < 300; ++turn) {
        kept.push_back(arena.keep(std::string(turn * turn, static_cast<char>('a' + turn % 26))));
    }
    for (std::size_t turn = 0; turn < 300; ++turn) {
        EXPECT_EQ(kept[turn], std::string(turn * turn, static_cast<char>('a' + turn % 26)));
    }
}

}  // namespace
}  // namespace vistels
