// SPDX-License-Identifier: GPL-3.0-or-later
#include "formula/filter_data_Funcs.h"

#include <gtest/gtest.h>

#include "util/json.h"

namespace vistels {

namespace {

property_dictionary item(const char* pattern, double date, const char* name = nullptr) {
    property_dictionary made;
    made.add("pattern", pattern);
    made.add("date", property_date{date});
    if (name) made.add("name", name);
    return made;
}

property_dictionary file_of(property_array items) {
    property_dictionary stored;
    stored.add("items", std::move(items));
    return stored;
}

std::string titles(const property_array& items) {
    std::string all;
    for (const auto& one : read_filter_patterns(file_of(items))) {
        all += one.pattern + (one.name.empty() ? "" : "=" + one.name);
        all += one.date ? "@" + std::to_string(static_cast<int>(*one.date)) + " " : "@- ";
    }
    return all;
}

}  // namespace

TEST(filter_data_Funcs, patterns_are_remembered_removed_and_named) {
    const auto stored = file_of({item("a", 1), item("b", 2, "B"), item("c", 3)});
    EXPECT_EQ(titles(with_pattern_remembered(stored, "c", 9)), "c@9 a@1 b=B@2 ");
    EXPECT_EQ(titles(with_pattern_remembered(stored, "b", 9)), "b=B@9 a@1 c@3 ");
    EXPECT_EQ(titles(with_pattern_remembered(stored, "d", 9)), "d@9 a@1 b=B@2 c@3 ");
    EXPECT_EQ(titles(with_pattern_remembered(stored, "", 9)), "a@1 b=B@2 c@3 ");
    EXPECT_EQ(titles(with_pattern_remembered({}, "d", 9)), "d@9 ");
    EXPECT_EQ(titles(with_pattern_removed(stored, "b")), "a@1 c@3 ");
    EXPECT_EQ(titles(with_pattern_removed(stored, "d")), "a@1 b=B@2 c@3 ");
    EXPECT_EQ(titles(with_pattern_named(stored, "a", "A")), "a=A@1 b=B@2 c@3 ");
    EXPECT_EQ(titles(with_pattern_named(stored, "b", "")), "a@1 b@2 c@3 ");
    EXPECT_EQ(titles(patterns_carried_over(stored, 9)), "a@9 b=B@9 c@9 ");
    // One that stands twice becomes one.
    EXPECT_EQ(titles(with_pattern_remembered(file_of({item("a", 1), item("a", 2), item("b", 3)}), "a", 9)),
              "a@9 b@3 ");
}

TEST(filter_data_Funcs, what_is_not_known_is_passed_over_and_stays) {
    auto coloured = item("a", 1);
    coloured.add("colour", "red");
    property_dictionary odd;
    odd.add("pattern", 5);
    const auto stored = file_of({"text", odd, coloured, item("b", 2)});
    EXPECT_EQ(read_filter_patterns(stored).size(), 2U);
    const auto items = with_pattern_remembered(stored, "a", 9);
    EXPECT_EQ(write_json(items, json_layout::one_line),
              R"([{"pattern":"a","date":"1970-01-01T00:00:09Z","colour":"red"},"text",{"pattern":5},)"
              R"({"pattern":"b","date":"1970-01-01T00:00:02Z"}])");
    EXPECT_EQ(patterns_carried_over(stored, 9).size(), 2U);
    property_dictionary no_array;
    no_array.add("items", "text");
    EXPECT_TRUE(read_filter_patterns(no_array).empty());
}

}  // namespace vistels
