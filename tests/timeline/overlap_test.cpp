// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/edits/sxy_Adjust_Clip_Overlaps.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <random>
#include <string>

#include "support/timeline_builder.h"

namespace vistels {
namespace {

using testing::clip_of;
using testing::row_of;

constexpr double tolerance_seconds = 1e-9;

struct overlap_case {
    const char* name;
    clip_span reference;
    clip_span other;
    std::optional<clip_overlap> expected;
};

TEST(Overlap, EachPlaceOfAClipHasItsClass) {
    const overlap_case cases[] = {
        {"around", {10, 20}, {5, 25}, clip_overlap::overlaps_all},
        {"inside", {10, 20}, {12, 18}, clip_overlap::covered_by_all},
        {"over the start", {10, 20}, {5, 15}, clip_overlap::overlaps_start},
        {"over the end", {10, 20}, {15, 25}, clip_overlap::overlaps_end},
        {"equal", {10, 20}, {10, 20}, clip_overlap::same},
        {"earlier start, same end", {10, 20}, {5, 20}, clip_overlap::overlaps_start},
        {"same start, later end", {10, 20}, {10, 25}, clip_overlap::overlaps_end},
        {"before", {10, 20}, {1, 9}, std::nullopt},
        {"after", {10, 20}, {21, 30}, std::nullopt},
        {"touches the start", {10, 20}, {5, 10}, std::nullopt},
        {"touches the end", {10, 20}, {20, 25}, std::nullopt},
        {"point on the start", {10, 20}, {10, 10}, std::nullopt},
        {"point on the end", {10, 20}, {20, 20}, std::nullopt},
        {"point inside", {10, 20}, {15, 15}, clip_overlap::covered_by_all},
        {"before zero", {-5, 5}, {-10, 0}, clip_overlap::overlaps_start},
        {"reversed around", {10, 20}, {25, 5}, clip_overlap::overlaps_all},
        {"reversed inside", {10, 20}, {18, 12}, clip_overlap::covered_by_all},
        {"reversed equal", {10, 20}, {20, 10}, clip_overlap::same},
        {"reversed touching", {10, 20}, {25, 20}, std::nullopt},
    };
    for (const auto& [name, reference, other, expected] : cases) {
        const auto found = overlap_with(reference, other);
        EXPECT_EQ(found, expected) << name << ": " << (found ? clip_overlap_text(*found) : "none");
    }
}

struct split_case {
    const char* name;
    clip_span a;
    clip_span b;
    bool changed;
    clip_span new_a;
    clip_span new_b;
};

TEST(Overlap, OverlappingClipsShareTheirUnion) {
    const split_case cases[] = {
        {"equal lengths", {0, 10}, {5, 15}, true, {0, 7.45}, {7.55, 15}},
        {"the later one given first", {5, 15}, {0, 10}, true, {7.55, 15}, {0, 7.45}},
        {"one inside, late", {0, 12}, {8, 12}, true, {0, 8.95}, {9.05, 12}},
        {"one inside, early", {0, 12}, {0, 4}, true, {3.05, 12}, {0, 2.95}},
        {"touching", {0, 10}, {10, 20}, true, {0, 9.95}, {10.05, 20}},
        {"apart", {0, 10}, {11, 20}, false, {0, 10}, {11, 20}},
        {"apart, the later one first", {11, 20}, {0, 10}, false, {11, 20}, {0, 10}},
        {"two points", {3, 3}, {3, 3}, false, {3, 3}, {3, 3}},
    };
    for (const auto& [name, a, b, changed, new_a, new_b] : cases) {
        const auto split = split_overlapping(a, b);
        EXPECT_EQ(split.changed, changed) << name;
        EXPECT_NEAR(split.a.start, new_a.start, tolerance_seconds) << name;
        EXPECT_NEAR(split.a.end, new_a.end, tolerance_seconds) << name;
        EXPECT_NEAR(split.b.start, new_b.start, tolerance_seconds) << name;
        EXPECT_NEAR(split.b.end, new_b.end, tolerance_seconds) << name;
    }
}

TEST(Overlap, RandomClipsFillTheirUnionOnceButForTheGap) {
    std::mt19937 random(20);
    std::uniform_real_distribution<double> start(0, 100);
    std::uniform_real_distribution<double> length(1, 40);
    int changes = 0;
    for (int round = 0; round < 5000; ++round) {
        const double start_a = start(random);
        const double start_b = start(random);
        const clip_span a{start_a, start_a + length(random)};
        const clip_span b{start_b, start_b + length(random)};
        const auto split = split_overlapping(a, b);
        const bool apart = a.end < b.start || b.end < a.start;
        ASSERT_EQ(split.changed, !apart) << round;
        if (apart) {
            ASSERT_TRUE(split.a == a && split.b == b) << round;
            continue;
        }
        ++changes;
        const bool a_is_first = a.start + a.end < b.start + b.end;
        const auto& first = a_is_first ? split.a : split.b;
        const auto& second = a_is_first ? split.b : split.a;
        ASSERT_NEAR(first.start, std::min(a.start, b.start), tolerance_seconds) << round;
        ASSERT_NEAR(second.end, std::max(a.end, b.end), tolerance_seconds) << round;
        ASSERT_NEAR(second.start - first.end, 0.1, tolerance_seconds) << round;
        ASSERT_FALSE(overlap_with(split.a, split.b)) << round;
        const double ratio = (a.end - a.start) / (b.end - b.start);
        const double new_ratio = (split.a.end - split.a.start + 0.05) / (split.b.end - split.b.start + 0.05);
        ASSERT_NEAR(new_ratio, ratio, 1e-6) << round;
    }
    EXPECT_GT(changes, 1000);
}

TEST(Overlap, TheFirstOtherClipInTheOrderOfTheRowIsFound) {
    auto row = row_of("R", "Shots");
    // Put in out of order: the row's order decides, not the order of insertion.
    for (const auto& clip : {clip_of("late", 15, 25), clip_of("twin", 10, 20), clip_of("self", 10, 20),
                             clip_of("touching", 0, 10), clip_of("early", 5, 12)}) {
        row.clips().insert(std::make_shared<sxy_CLIP>(clip));
    }
    struct search_case {
        const char* name;
        sxy_CLIP reference;
        const char* expected;
    };
    const search_case cases[] = {
        {"never itself, the earliest first", clip_of("self", 10, 20), "early"},
        {"only itself is there", clip_of("touching", 0, 5), ""},
        {"after all", clip_of("new", 25, 30), ""},
        {"the last only", clip_of("new", 21, 30), "late"},
    };
    for (const auto& [name, reference, expected] : cases) {
        const auto found = first_overlap(row, reference);
        EXPECT_EQ(found ? found->clip->id() : "", expected) << name;
    }
    EXPECT_FALSE(first_overlap(row_of("E", "Empty"), clip_of("new", 0, 100)));
}

}  // namespace
}  // namespace vistels
