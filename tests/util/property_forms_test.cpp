// SPDX-License-Identifier: GPL-3.0-or-later
#include <gtest/gtest.h>

#include <limits>

#include "util/json.h"
#include "util/property_list.h"
#include "util/text_forms.h"

namespace vistels {
namespace {

std::string plist(const std::string& body) {
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?><plist version=\"1.0\">" + body + "</plist>";
}

property_dictionary one_of_each_of_json() {
    property_dictionary all;
    all.add("z first", true);
    all.add("no", false);
    all.add("whole", std::int64_t{-9007199254740993});
    all.add("real", 0.1);
    all.add("whole real", 3.0);
    all.add("tiny", 5e-324);
    all.add("text", "a <b> & \"c\"\r\n\ttab \xC3\xA9 \xF0\x9F\xA5\x81");
    all.add("empty text", "");
    all.add("array",
            property_array{property_value(1), property_value("two"), property_value(property_array{})});
    all.add("", property_dictionary());
    return all;
}

TEST(property_list, writes_what_xml_cannot_hold_as_replacement_characters) {
    property_dictionary value;
    value.add("key\x01", std::string("\x1B|\xFF|\xED\xA0\x80|\xEF\xBF\xBF|\xC0\xAF", 14));
    const auto read = read_property_list(write_property_list(value), "x");
    ASSERT_TRUE(read) << read.message();
    const std::string r = "\xEF\xBF\xBD";
    EXPECT_EQ(read.value().dictionary()->text_or_empty("key" + r),
              r + "|" + r + "|" + r + r + r + "|" + r + r + r + "|" + r + r);
}

TEST(property_list, reads_leniently_within_a_well_formed_file) {
    struct {
        const char* body;
        property_value expected;
    } const cases[] = {
        {"<integer> +12 </integer>", property_value(12)},
        {"<integer>99999999999999999999</integer>", property_value(1e20)},
        {"<integer>twelve</integer>", property_value()},
        {"<real>1,5</real>", property_value()},
        {"<real/>", property_value()},
        {"<string/>", property_value("")},
        {"<date>2026-02-30T00:00:00Z</date>", property_value()},
        {"<data>!!</data>", property_value()},
        {"<!-- note --><true/>", property_value(true)},
        {"<string>a<![CDATA[<b>]]>c</string>", property_value("a<b>c")},
    };
    for (const auto& one : cases) {
        const auto read = read_property_list(plist(one.body), "x");
        ASSERT_TRUE(read) << one.body << ": " << read.message();
        EXPECT_EQ(read.value(), one.expected) << one.body;
    }
}

TEST(property_list, refuses_damaged_files_and_names_them) {
    const std::string cases[] = {
        "",
        "not xml",
        "bplist00",
        "<dict/>",
        plist(""),
        plist("<dict><key>a</key></dict>"),
        plist("<dict><string>a</string></dict>"),
        plist("<dict><key>a</key><key>b</key></dict>"),
        plist("<array><key>a</key></array>"),
        plist("<string>a</string><string>b</string>"),
        plist("<array>text</array>"),
        plist("<set/>"),
        plist("<string>a<true/></string>"),
        plist("<string>\xFF</string>"),
        plist("<dict>").substr(0, 70),
        "<!DOCTYPE plist [<!ENTITY a \"b\">]>" + plist("<string>&a;</string>").substr(38),
    };
    for (const auto& bytes : cases) {
        const auto read = read_property_list(bytes, "/vault/a b.plist");
        ASSERT_FALSE(read) << bytes;
        EXPECT_NE(read.message().find("/vault/a b.plist"), std::string::npos);
    }
}

TEST(nesting, is_bounded_in_both_forms) {
    for (const int depth : {deepest_nesting, deepest_nesting + 1, 100'000}) {
        const bool fits = depth <= deepest_nesting;
        std::string xml;
        std::string json;
        for (int level = 0; level < depth; ++level) xml += "<array>", json += "[";
        for (int level = 0; level < depth; ++level) xml += "</array>", json += "]";
        const auto from_xml = read_property_list(plist(xml), "x");
        EXPECT_EQ(from_xml.ok(), fits) << depth;
        EXPECT_EQ(read_json(json, "x").ok(), fits) << depth;
        if (!fits) {
            EXPECT_NE(from_xml.message().find("nested"), std::string::npos) << from_xml.message();
        }
    }
}

TEST(json, reads_back_what_it_writes) {
    property_dictionary value = one_of_each_of_json();
    value.add("controls", std::string("\x01\x1F\\\"", 4));
    for (const auto layout : {json_layout::pretty, json_layout::one_line}) {
        const std::string text = write_json(value, layout);
        EXPECT_EQ(text.find('\n') == std::string::npos, layout == json_layout::one_line);
        const auto read = read_json(text, "x");
        ASSERT_TRUE(read) << read.message();
        EXPECT_EQ(read.value(), property_value(value));
    }
}

TEST(json, keeps_reals_apart_from_whole_numbers_and_never_writes_what_json_lacks) {
    const property_value values(
        property_array{property_value(3.0), property_value(3), property_value(1e300), property_value(-0.0),
                       property_value(std::numeric_limits<double>::infinity()), property_value("\xFF")});
    EXPECT_EQ(write_json(values, json_layout::one_line), "[3.0,3,1e+300,-0.0,null,\"\xEF\xBF\xBD\"]");
}

TEST(text_forms, dates_and_base64_survive) {
    for (const double seconds : {0.0, -1.0, 951827696.0, 4102444799.0, -62135596800.0}) {
        EXPECT_EQ(date_from_text(date_text(seconds)), seconds);
    }
    std::string bytes;
    for (int length = 0; length < 70; ++length) {
        EXPECT_EQ(bytes_from_base64(base64_text(bytes)), bytes);
        bytes += static_cast<char>(length * 37);
    }
    EXPECT_EQ(bytes_from_base64(" aGV\nsbG8= "), "hello");
}

}  // namespace
}  // namespace vistels
