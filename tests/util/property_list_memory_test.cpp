// SPDX-License-Identifier: GPL-3.0-or-later
//
// What reading a property list or a JSON document needs in memory, whatever the file holds.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "support/counted_memory.h"
#include "util/json.h"
#include "util/property_list.h"
#include "util/property_list_cursor.h"

namespace vistels {
namespace {

std::string repeated(const std::string& part, std::size_t bytes) {
    std::string text;
    while (text.size() + part.size() <= bytes) text += part;
    return text;
}

std::string attributes(std::size_t bytes) {
    std::string text;
    for (std::size_t number = 0; text.size() < bytes; ++number) {
        text += ' ';
        for (std::size_t rest = number + 1; rest > 0; rest /= 52) {
            text += "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ"[rest % 52];
        }
        text += "=\"\"";
    }
    return text;
}

std::string around(const std::string& before, const std::string& body, const std::string& after) {
    return "<plist version=\"1.0\">" + before + body + after + "</plist>";
}

std::vector<std::string> greedy_files(std::size_t bytes) {
    const auto array = [&](const std::string& part) {
        return around("<array>", repeated(part, bytes), "</array>");
    };
    const auto dictionary = [&](const std::string& part) {
        return around("<dict>", repeated(part, bytes), "</dict>");
    };
    const auto written = [&](const std::string& part) {
        return std::string(property_list_head) + part + std::string(property_list_foot);
    };
    std::string deep = "<true/>";
    for (int level = 0; level < 126; ++level) deep = "<array>" + deep + "</array>";
    return {
        array("<true/>"),
        array("<string/>"),
        array("<array/>"),
        array("<array><true/></array>"),
        array("<dict/>"),
        array("<dict><key/><dict/></dict>"),
        array("<data/>"),
        array("<string>0123456789abcdef</string>"),
        array("<string>&#13;0123456789abcdef</string>"),
        array(deep),
        dictionary("<key/><true/>"),
        dictionary("<key/><array/>"),
        dictionary("<key>0123456789abcdef</key><true/>"),
        around("<string>", repeated("a", bytes), "</string>"),
        around("<string>", repeated("&#13;", bytes), "</string>"),
        around("<data>", repeated("AAAA", bytes), "</data>"),
        around("<true/><!--", repeated("a", bytes), "-->"),
        around("<true" + attributes(bytes), "/>", ""),
        "<plist" + attributes(bytes) + "><true/></plist>",
        "<plist><array>" + repeated("<true a=\"\"/>", bytes) + "</array></plist>",
        "<!DOCTYPE plist [" + repeated("<!ATTLIST a b CDATA \"\">", bytes) + "]><plist><true/></plist>",
        "<!DOCTYPE plist [" + repeated("<!ENTITY a \"b\">", bytes) + "]><plist><true/></plist>",
        "<" + repeated("a", bytes) + "/>",
        written("<array>\n" + repeated("\t<true/>\n", bytes) + "</array>\n"),
        written("<array>\n" + repeated("\t<array/>\n", bytes) + "</array>\n"),
        written("<dict>\n" + repeated("\t<key></key>\n\t<true/>\n", bytes) + "</dict>\n"),
        written("<array>\n" + repeated("\t<string>&amp;</string>\n", bytes) + "</array>\n"),
        written("<array>\n" + repeated("\t<data>AAAA</data>\n", bytes) + "</array>\n"),
    };
}

TEST(property_list, no_file_makes_reading_it_need_more_than_sixty_four_times_its_size) {
    constexpr std::size_t beside = 1 << 20;
    for (const std::size_t bytes : {20'000U, 500'000U, 900'000U}) {
        for (const auto& file : greedy_files(bytes)) {
            const std::size_t strict = most_needed([&] { (void)read_property_list(file, "x"); });
            const std::size_t quick = most_needed([&] {
                stored_arena arena;
                property_list_cursor cursor(file);
                (void)cursor.read(arena);
            });
            const std::size_t allowed = 64 * file.size() + beside;
            EXPECT_LE(strict, allowed) << file.size() << " bytes, " << file.substr(0, 120);
            EXPECT_LE(quick, allowed) << file.size() << " bytes, " << file.substr(0, 120);
        }
    }
}

std::vector<std::string> greedy_documents(std::size_t bytes) {
    const auto array = [&](const std::string& part) {
        return "[" + repeated(part + ",", bytes) + part + "]";
    };
    const auto object = [&](const std::string& part) {
        return "{" + repeated(part + ",", bytes) + part + "}";
    };
    std::string deep = "1";
    for (int level = 0; level < deepest_nesting - 2; ++level) deep = "[" + deep + "]";
    return {
        array("1"),
        array("[]"),
        array("{}"),
        array("\"\""),
        array("[1]"),
        array("{\"\":1}"),
        array("[[1],{\"a\":{}}]"),
        array("\"\\n\""),
        array(deep),
        object("\"\":1"),
        object("\"\":{}"),
        object("\"\\n\":\"\\n\""),
        "\"" + repeated("a", bytes) + "\"",
        "\"" + repeated("\\u00e4", bytes) + "\"",
        repeated(" ", bytes) + "1",
        repeated("[", bytes),
        "[" + repeated("1,", bytes),
    };
}

TEST(json, no_document_makes_reading_it_need_more_than_sixty_four_times_its_size) {
    constexpr std::size_t beside = std::size_t{512} * 1024;
    for (const std::size_t bytes : {20'000U, 900'000U}) {
        for (const auto& document : greedy_documents(bytes)) {
            const std::size_t needed = most_needed([&] {
                stored_arena arena;
                (void)read_json(document, "x", arena);
            });
            // The document itself counts when it is a file's.
            EXPECT_LE(needed + document.size(), 64 * document.size() + beside)
                << document.size() << " bytes, " << document.substr(0, 60);
        }
    }
}

TEST(property_list, refuses_what_would_need_memory_without_holding_values) {
    struct {
        std::string file;
        const char* reason;
    } const cases[] = {
        {"<!DOCTYPE plist [<!ENTITY a \"b\">]><plist><string>&a;</string></plist>", "declares entities"},
        {"<!DOCTYPE plist [<!ATTLIST a b CDATA \"\">]><plist><true/></plist>", "declares entities"},
        {"<!DOCTYPE plist PUBLIC \"a\" \"b\"><plist><string>a&b;c</string></plist>", "\"b\" is not known"},
        {"<plist><true a=\"\"/></plist>", "attributes"},
        {"<plist><!--" + std::string(3'000'000, 'a') + "--><true/></plist>", "too long"},
    };
    for (const auto& one : cases) {
        const auto read = read_property_list(one.file, "the file");
        ASSERT_FALSE(read) << one.reason;
        EXPECT_NE(read.message().find("the file"), std::string::npos) << read.message();
        EXPECT_NE(read.message().find(one.reason), std::string::npos) << read.message();
    }
    // Texts and blanks may be as long as they like.
    const std::string blanks(3'000'000, '\n');
    const std::string text(3'000'000, 'a');
    const auto read =
        read_property_list("<!DOCTYPE plist PUBLIC \"a\" \"b\">" + blanks + "<plist version=\"1.0\">" +
                               blanks + "<string>" + text + "</string>" + blanks + "</plist>" + blanks,
                           "x");
    ASSERT_TRUE(read) << read.message();
    EXPECT_EQ(read.value(), property_value(text));
}

}  // namespace
}  // namespace vistels
