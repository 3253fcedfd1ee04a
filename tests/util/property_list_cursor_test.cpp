// SPDX-License-Identifier: GPL-3.0-or-later
#include "util/property_list_cursor.h"

#include <gtest/gtest.h>

#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "util/property_list.h"
#include "util/text_forms.h"

namespace vistels {
namespace {

std::string list_of(const std::string& body) {
    return std::string(property_list_head) + body + std::string(property_list_foot);
}

// What the quick reader makes of the file, by the way of `walk`; nothing when it gives up.
template <class Walk>
std::optional<property_value> quick(std::string_view bytes, Walk walk) {
    stored_arena arena;
    property_list_cursor cursor(bytes);
    property_value value = walk(cursor, arena);
    if (!cursor.finish()) return std::nullopt;
    return value;
}

property_value at_once(property_list_cursor& cursor, stored_arena& arena) {
    return cursor.read(arena).copy();
}

// Value by value, each with an arena as good as new.
property_value step_by_step(property_list_cursor& cursor, stored_arena& arena) {
    switch (cursor.next_form()) {
        case stored_view::form::dictionary: {
            property_dictionary made;
            cursor.enter();
            while (const auto key = cursor.next_key(arena)) {
                std::string kept(*key);
                arena.clear();
                made.add(std::move(kept), step_by_step(cursor, arena));
            }
            return made;
        }
        case stored_view::form::array: {
            property_array made;
            cursor.enter();
            while (cursor.next_item()) made.push_back(step_by_step(cursor, arena));
            return made;
        }
        default:
            return cursor.read(arena).copy();
    }
}

std::optional<property_value> by_skipping(std::string_view bytes) {
    return quick(bytes, [](property_list_cursor& cursor, stored_arena&) {
        cursor.skip();
        return property_value();
    });
}

property_value nested(int depth) {
    property_value value("innermost");
    for (int level = 0; level < depth; ++level) {
        if (level % 2 == 0) {
            value = property_value(property_array{property_value(1), std::move(value)});
        } else {
            property_dictionary holder;
            holder.add("<" + std::to_string(level) + ">", std::move(value));
            holder.add("after", property_array());
            value = property_value(std::move(holder));
        }
    }
    return value;
}

TEST(property_list_cursor, reads_all_that_is_written_as_the_strict_reader_does) {
    property_dictionary texts;
    for (std::size_t length = 0; length < 40; ++length) {
        for (const char* special :
             {"", "&", "<", "\r", "\n", "\xC3\xA9", "\xF0\x9F\xA5\x81", "\xEF\xBF\xBD", "]]>"}) {
            for (std::size_t place = 0; place <= length; place += 5) {
                std::string text(length, 'x');
                texts.add(text.insert(place, special), text);
            }
        }
    }
    property_dictionary others;
    others.add("data", property_data{std::string("\0\x01\xFF", 3)});
    others.add("date", property_date{951827696});
    others.add("yes", true);
    others.add("no", false);
    others.add("whole", std::int64_t{-9223372036854775807});
    for (const double real : {0.1, 3.0, 5e-324}) others.add("real " + std::to_string(others.size()), real);
    others.add("infinite", std::numeric_limits<double>::infinity());
    others.add("empty", property_dictionary());
    const property_value cases[] = {
        texts,     others,     property_value("root"), property_value(1.5), nested(1), nested(2),
        nested(9), nested(128)};
    for (const auto& value : cases) {
        const auto bytes = write_property_list(value);
        const auto strict = read_property_list(bytes, "x");
        ASSERT_TRUE(strict) << strict.message();
        EXPECT_EQ(strict.value(), value);
        EXPECT_EQ(quick(bytes, at_once), value) << bytes;
        EXPECT_EQ(quick(bytes, step_by_step), value) << bytes;
        EXPECT_TRUE(by_skipping(bytes)) << bytes;
    }
}

TEST(property_list_cursor, reads_files_with_a_document_type_and_broken_lines_of_data) {
    const std::string head = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n";
    const std::string body =
        "<plist "
        "version=\"1.0\">\n<array>\n\t<data>\n\tAAEC\n\t/w==\n\t</data>\n\t<true/>\n</array>\n</plist>\n";
    const std::string good =
        head + "<!DOCTYPE plist PUBLIC \"-//a b//c//EN\" \"http://d.e/f-1.0.dtd\">\n" + body;
    const auto strict = read_property_list(good, "x");
    ASSERT_TRUE(strict) << strict.message();
    EXPECT_EQ(strict.value(),
              property_value(property_array{property_value(property_data{std::string("\0\1\2\xFF", 4)}),
                                            property_value(true)}));
    EXPECT_EQ(quick(good, at_once), strict.value());
    for (const std::string type :
         {"<!DOCTYPE plist PUBLIC \"a\">\n", "<!DOCTYPE plist SYSTEM \"a\">\n",
          "<!DOCTYPE plist PUBLIC \"a\" \"b\" []>\n", "<!DOCTYPE plist PUBLIC \"a\" \"b", "\n"}) {
        EXPECT_FALSE(quick(head + type + body, at_once)) << type;
    }
}

TEST(property_list_cursor, gives_up_on_any_other_shape) {
    const std::string bodies[] = {
        "",
        "<dict/>\n<dict/>\n",
        "<string>a</string>\n<string>b</string>\n",
        "<string>a</string>",
        "<string>a</string> \n",
        "\t<string>a</string>\n",
        "<string>a\r</string>\n",
        "<string>a\x01</string>\n",
        "<string>a]]></string>\n",
        "<string>a\xFF</string>\n",
        "<string>a\xEF\xBF\xBE</string>\n",
        "<string>&amp;\xEF\xBF\xBF</string>\n",
        "<string>a&quot;</string>\n",
        "<string>a&amp</string>\n",
        "<string>a&#1;</string>\n",
        "<string>a<!-- --></string>\n",
        "<string>a</real>\n",
        "<string/>\n",
        "<integer>x</integer>\n",
        "<integer>1&amp;</integer>\n",
        "<real></real>\n",
        "<date>2026-02-30T00:00:00Z</date>\n",
        "<data>?</data>\n",
        "<array>\n</dict>\n",
        "<array>\n\t<key>a</key>\n</array>\n",
        "<array>\n<true/>\n</array>\n",
        "<array>\n\t\t<true/>\n</array>\n",
        "<array>\n       \t<true/>\n</array>\n",
        "<array>\n\t<true/>\n\t</array>\n",
        "<array>\n\t<true/>\n",
        "<dict>\n\t<true/>\n</dict>\n",
        "<dict>\n\t<key>a</key>\n</dict>\n",
        "<dict>\n\t<key>a</key>\n\t<key>b</key>\n</dict>\n",
        "<dict>\n\t<key>a</key>\n\t<true/>\n\t<true/>\n</dict>\n",
        "<dict>\n\t<key>a<b</key>\n\t<true/>\n</dict>\n",
        "<dict>\n\t<key>a\x02</key>\n\t<true/>\n</dict>\n",
    };
    std::vector<std::string> files = {"",
                                      "bplist",
                                      list_of("<true/>\n") + " ",
                                      "\xEF\xBB\xBF" + list_of("<true/>\n"),
                                      list_of("<!-- -->\n<true/>\n"),
                                      write_property_list(nested(129))};
    for (const auto& body : bodies) files.push_back(list_of(body));
    for (const auto& bytes : files) {
        EXPECT_FALSE(quick(bytes, at_once)) << bytes;
        EXPECT_FALSE(quick(bytes, step_by_step)) << bytes;
        EXPECT_FALSE(by_skipping(bytes)) << bytes;
    }
}

TEST(property_list_cursor, takes_no_part_of_a_file_for_the_whole) {
    const auto bytes = write_property_list(nested(6));
    for (std::size_t size = 0; size < bytes.size(); ++size) {
        const std::string cut = bytes.substr(0, size);
        EXPECT_FALSE(quick(cut, at_once)) << cut;
        if (size + property_list_foot.size() == bytes.size()) continue;
        EXPECT_FALSE(by_skipping(cut + std::string(property_list_foot))) << cut;
    }
}

TEST(property_list_cursor, leaves_a_list_from_any_place_in_it) {
    const property_value inner = nested(3);
    property_dictionary outer;
    outer.add("first", property_array{inner, inner, property_value(2)});
    outer.add("empty", property_array());
    outer.add("last", 3);
    const auto bytes = write_property_list(outer);
    for (int items = 0; items <= 2; ++items) {
        stored_arena arena;
        property_list_cursor cursor(bytes);
        ASSERT_TRUE(cursor.enter());
        ASSERT_EQ(cursor.next_key(arena), "first");
        ASSERT_TRUE(cursor.enter());
        for (int item = 0; item < items; ++item) cursor.skip();
        cursor.leave();
        ASSERT_EQ(cursor.next_key(arena), "empty");
        ASSERT_TRUE(cursor.enter());
        cursor.leave();
        ASSERT_EQ(cursor.next_key(arena), "last");
        EXPECT_EQ(cursor.read(arena).integer(), 3);
        EXPECT_EQ(cursor.next_key(arena), std::nullopt);
        EXPECT_TRUE(cursor.finish());
    }
}

TEST(number_texts, are_exact_and_read_back) {
    std::mt19937_64 random(7);
    for (int turn = 0; turn < 200000; ++turn) {
        double number = std::bit_cast<double>(random());
        if (turn % 4 == 1) number = static_cast<double>(random() % 100000000) / 1e3;
        if (turn % 4 == 2) number = static_cast<double>(random() % 1000000007) / 1e8;
        if (turn % 4 == 3) number = static_cast<double>(random() >> (random() % 64));
        if (turn % 8 == 7) number = std::ldexp(number, -static_cast<int>(random() % 40));
        if (!std::isfinite(number)) continue;
        char digits[64];
        const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
        std::string written;
        append_shortest(written, number);
        ASSERT_EQ(written, std::string(digits, end));
        ASSERT_EQ(number_from_text(written), number) << written;
        std::string decimal;
        append_shortest_decimal(decimal, -number);
        ASSERT_EQ(number_from_text(decimal), -number) << decimal;
    }
    // Digits and forms that a quick way must not take for a short decimal.
    for (const char* text :
         {"9007199254740993", "0.30000000000000004", "123456789012345678", "1234567890.12345678",
          "0.000000000000000001", "-0", "-0.0", "00012.50", "5.", ".5", "1e5", "1.", "9007199254740993.5"}) {
        const auto read = number_from_text(text);
        ASSERT_TRUE(read) << text;
        EXPECT_EQ(*read, std::strtod(text, nullptr)) << text;
        EXPECT_EQ(std::signbit(*read), text[0] == '-');
    }
    for (const char* text : {"", "-", ".", "-.", "1.2.3", "1-", "--1", "1 2", "0x10"}) {
        EXPECT_FALSE(number_from_text(text)) << text;
    }
}

}  // namespace
}  // namespace vistels
