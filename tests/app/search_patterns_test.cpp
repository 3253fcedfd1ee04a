// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/settings/search_patterns.h"
#include "app/vaults/home_vault.h"

#include <gtest/gtest.h>

#include "app/settings/formula_colours.h"
#include "app/settings/settings.h"
#include "support/temporary_folder.h"
#include "util/clock.h"
#include "util/file_system.h"
#include "util/property_list.h"
#include "util/safe_write.h"

namespace vistels {

namespace {

using testing::temporary_folder;

std::string titles(const home_places& places) {
    std::string all;
    for (const auto& one : load_search_patterns(places)) {
        EXPECT_TRUE(one.date.has_value()) << one.pattern;
        all += one.title() + ",";
    }
    return all;
}

void put_dictionary(const std::string& path, const property_dictionary& stored) {
    ASSERT_TRUE(make_folders(path_folder(path)));
    ASSERT_TRUE(safe_write(path, stored));
}

property_dictionary rgb(double red, double green, double blue) {
    property_dictionary parts;
    parts.add("red", red);
    parts.add("green", green);
    parts.add("blue", blue);
    return parts;
}

}  // namespace

TEST(search_patterns, are_kept_newest_first) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    EXPECT_EQ(titles(places), "");
    EXPECT_FALSE(file_exists(path_of(places, search_patterns_file)));
    EXPECT_TRUE(remember_search_pattern(places, ""));
    EXPECT_FALSE(file_exists(path_of(places, search_patterns_file)));
    for (const char* pattern : {"a", "\"b\"\r\n & é", "c", "a"}) {
        EXPECT_TRUE(remember_search_pattern(places, pattern));
    }
    EXPECT_EQ(titles(places), "a,c,\"b\"\r\n & é,");
    EXPECT_TRUE(name_search_pattern(places, "c", "the third"));
    EXPECT_TRUE(remember_search_pattern(places, "c"));
    EXPECT_TRUE(remove_search_pattern(places, "a"));
    EXPECT_EQ(titles(places), "the third,\"b\"\r\n & é,");
    EXPECT_TRUE(name_search_pattern(places, "c", ""));
    EXPECT_EQ(titles(places), "c,\"b\"\r\n & é,");
    for (const char* unstorable : {"\x01", "\xFF"}) {
        EXPECT_FALSE(remember_search_pattern(places, unstorable));
        EXPECT_FALSE(name_search_pattern(places, "c", unstorable));
    }
    EXPECT_EQ(titles(places), "c,\"b\"\r\n & é,");
}

TEST(search_patterns, come_over_from_the_older_place_once) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    const std::string older = places.state_folder + "/Chronologies/Filter Search Patterns.plist";
    property_dictionary one;
    one.add("pattern", "old");
    one.add("date", property_date{5});
    one.add("name", "Old one");
    property_dictionary two;
    two.add("pattern", "older");
    property_dictionary stored;
    stored.add("items", property_array{one, "no item", two});
    put_dictionary(older, stored);
    const double before = seconds_since_1970() - 1;
    EXPECT_EQ(titles(places), "Old one,older,");
    for (const auto& pattern : load_search_patterns(places)) EXPECT_GE(*pattern.date, before);
    EXPECT_TRUE(remove_search_pattern(places, "old"));
    EXPECT_TRUE(remove_search_pattern(places, "older"));
    EXPECT_EQ(titles(places), "");
    EXPECT_TRUE(file_exists(older));
}

TEST(search_patterns, a_damaged_file_is_kept_aside) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    const std::string path = path_of(places, search_patterns_file);
    ASSERT_TRUE(make_folders(places.state_folder));
    ASSERT_TRUE(safe_write_bytes(path, "<plist><dict>"));
    EXPECT_EQ(titles(places), "");
    EXPECT_TRUE(remember_search_pattern(places, "a"));
    EXPECT_EQ(titles(places), "a,");
    EXPECT_TRUE(file_exists(places.state_folder + "/Filter Search Patterns damaged 1.plist"));
    // At start-up it is told.
    ASSERT_TRUE(safe_write_bytes(path, "<plist><dict>"));
    EXPECT_EQ(set_damaged_settings_aside(places, application_settings_files()).size(), 1U);
}

TEST(formula_colours, are_written_with_defaults_and_read_in_both_spellings) {
    const temporary_folder home;
    const auto places = find_home_places(home.path());
    const std::string path = path_of(places, formula_colours_file);
    EXPECT_EQ(load_formula_colours(places), default_formula_colours());
    const auto written = read_dictionary_or_empty(path);
    EXPECT_EQ(written.size(), formula_code_count);
    for (const auto& code : formula_codes()) EXPECT_TRUE(written.dictionary(code.colour_key)) << code.code;
    EXPECT_EQ(load_formula_colours(places), default_formula_colours());

    property_dictionary stored;
    stored.add("QN - qualifer name", rgb(0.1, 0.2, 0.3));
    stored.add("QC - qualifer category", rgb(0.1, 0.2, 0.3));
    stored.add("QC - qualifier category", rgb(0.5, 2, -1));
    stored.add("RN - row name", "blue");
    stored.add("AN - attribute name", property_dictionary());
    stored.add("more", 1);
    put_dictionary(path, stored);
    auto colours = load_formula_colours(places);
    EXPECT_EQ(*colours.of("QN"), (colour{0.1, 0.2, 0.3}));
    EXPECT_EQ(*colours.of("QC"), (colour{0.5, 1, 0}));
    for (const char* left : {"RN", "AN", "STAR"}) EXPECT_TRUE(colours.is_default(left)) << left;
    EXPECT_FALSE(colours.is_default("QN"));
    EXPECT_EQ(colours.of("XX"), nullptr);

    colours.colours[0] = {0.25, 0.5, 0.75};
    EXPECT_TRUE(save_formula_colours(places, colours));
    EXPECT_EQ(load_formula_colours(places), colours);
    EXPECT_TRUE(read_dictionary_or_empty(path).find("more"));
}

}  // namespace vistels
