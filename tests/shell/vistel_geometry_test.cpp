// SPDX-License-Identifier: GPL-3.0-or-later
// Where vistels lie: dragging by pixels, ready layouts, stacking; and the sums behind bringing them into
// step.
#include "shell/panes/collection/vistel_geometry.h"

#include <gtest/gtest.h>

#include "shell/panes/collection/buttons_Adjust_Offsets.h"
#include "shell/panes/collection/single_Adjust_offset_View.h"
#include "shell/panes/collection/vistel_alignment.h"
#include "shell/panes/collection/vistel_layout.h"
#include "shell/panes/collection/vistel_placing.h"

namespace vistels {
namespace {

constexpr frame_grip whole{true};
constexpr frame_grip lower_right{false, false, false, true, true};
constexpr frame_grip upper_left{false, true, true, false, false};
constexpr frame_grip right_edge{false, false, false, true, false};

void expect_frame(const rectangle& made, const rectangle& wanted, const std::string& what) {
    EXPECT_NEAR(made.x, wanted.x, 1e-9) << what;
    EXPECT_NEAR(made.y, wanted.y, 1e-9) << what;
    EXPECT_NEAR(made.width, wanted.width, 1e-9) << what;
    EXPECT_NEAR(made.height, wanted.height, 1e-9) << what;
}

TEST(vistel_drag, moves_resizes_and_snaps) {
    // An area of 1000 x 500 with a neighbour from 600 to 900 and 0 to 250.
    struct drag_case {
        const char* what;
        rectangle start;
        frame_grip grip;
        bool keeps_shape;
        QPointF moved;
        rectangle wanted;
        std::optional<double> guide_x, guide_y;
    };
    const drag_case cases[] = {
        {"freely", {0.1, 0.1, 0.2, 0.2}, whole, true, {50, 50}, {0.15, 0.2, 0.2, 0.2}, {}, {}},
        {"right edge to the neighbour's left",
         {0.1, 0.1, 0.2, 0.2},
         whole,
         true,
         {296, 50},
         {0.4, 0.2, 0.2, 0.2},
         0.6,
         {}},
        {"both axes", {0.1, 0.1, 0.2, 0.2}, whole, true, {-96, 103}, {0, 0.3, 0.2, 0.2}, 0.0, 0.5},
        {"not out of the area",
         {0.1, 0.1, 0.2, 0.2},
         whole,
         true,
         {-5000, 5000},
         {0, 0.8, 0.2, 0.2},
         0.0,
         1.0},
        {"corner, in shape", {0.1, 0.1, 0.2, 0.2}, lower_right, true, {100, 0}, {0.1, 0.1, 0.3, 0.3}, {}, {}},
        {"corner, in shape, snapped",
         {0.1, 0.1, 0.2, 0.2},
         lower_right,
         true,
         {303, 0},
         {0.1, 0.1, 0.5, 0.5},
         0.6,
         {}},
        {"corner, in shape, within the area",
         {0.1, 0.1, 0.2, 0.2},
         lower_right,
         true,
         {9000, 9000},
         {0.1, 0.1, 0.9, 0.9},
         1.0,
         1.0},
        {"upper left corner, in shape",
         {0.4, 0.4, 0.2, 0.2},
         upper_left,
         true,
         {-100, 0},
         {0.3, 0.3, 0.3, 0.3},
         {},
         {}},
        {"not below the least side",
         {0.1, 0.1, 0.2, 0.2},
         lower_right,
         true,
         {-900, -900},
         {0.1, 0.1, 0.1, 0.1},
         {},
         {}},
        {"edge, in shape", {0.1, 0.1, 0.2, 0.2}, right_edge, true, {100, 77}, {0.1, 0.1, 0.3, 0.3}, {}, {}},
        {"edge alone", {0.1, 0.1, 0.2, 0.2}, right_edge, false, {100, 77}, {0.1, 0.1, 0.3, 0.2}, {}, {}},
        {"corner, out of shape",
         {0.1, 0.1, 0.2, 0.2},
         lower_right,
         false,
         {298, 102},
         {0.1, 0.1, 0.5, 0.4},
         0.6,
         0.5},
        {"edge not over the other",
         {0.1, 0.1, 0.2, 0.2},
         right_edge,
         false,
         {-900, 0},
         {0.1, 0.1, 0.05, 0.2},
         {},
         {}},
    };
    for (const auto& one : cases) {
        frame_drag drag{one.start, one.grip, {{0.6, 0, 0.3, 0.5}}, {1000, 500}, 6, 50, one.keeps_shape};
        const dragged_frame made = drag_frame(drag, one.moved);
        expect_frame(made.frame, one.wanted, one.what);
        EXPECT_EQ(made.guide_x, one.guide_x) << one.what;
        EXPECT_EQ(made.guide_y, one.guide_y) << one.what;
    }
    frame_drag nowhere{{0, 0, 0, 0}, whole, {}, {0, 0}};
    expect_frame(drag_frame(nowhere, {5, 5}).frame, {0, 0, 0, 0}, "an area of nothing");
}

TEST(vistel_drag, edges_and_corners_are_found) {
    const QRect view(100, 100, 200, 100);
    EXPECT_FALSE(edges_at(view, {200, 150}, 6).holds());
    EXPECT_FALSE(edges_at(view, {99, 150}, 6).holds());
    EXPECT_EQ(edges_at(view, {102, 150}, 6), (frame_grip{false, true, false, false, false}));
    EXPECT_EQ(edges_at(view, {299, 150}, 6), right_edge);
    EXPECT_EQ(edges_at(view, {110, 109}, 6), upper_left);
    EXPECT_EQ(edges_at(view, {290, 195}, 6), lower_right);
}

// Without bars: each view has the pictures' shape; and nothing lies over anything else.
TEST(ready_layouts, leave_no_bars_and_no_overlaps) {
    const double aspect = 16.0 / 9;
    for (const auto layout : {ready_layout::grid, ready_layout::one_large, ready_layout::side_by_side,
                              ready_layout::two_columns}) {
        for (const std::size_t count : {1u, 2u, 3u, 4u, 5u, 7u, 16u}) {
            const ready_frames made = ready_layout_frames(layout, count, aspect, 1);
            ASSERT_EQ(made.frames.size(), count);
            EXPECT_EQ(made.scrolls, layout == ready_layout::two_columns);
            for (std::size_t i = 0; i < count; ++i) {
                const rectangle& a = made.frames[i];
                EXPECT_NEAR(a.width * made.ratio / a.height, aspect, 1e-9) << count;
                EXPECT_GE(a.x, -1e-9);
                EXPECT_LE(a.x + a.width, 1 + 1e-9);
                EXPECT_LE(a.y + a.height, 1 + 1e-9);
                for (std::size_t j = 0; j < i; ++j) {
                    const rectangle& b = made.frames[j];
                    const bool apart = a.x + a.width <= b.x + 1e-9 || b.x + b.width <= a.x + 1e-9 ||
                                       a.y + a.height <= b.y + 1e-9 || b.y + b.height <= a.y + 1e-9;
                    EXPECT_TRUE(apart) << count << ": " << i << " and " << j;
                }
            }
        }
    }
    const ready_frames large = ready_layout_frames(ready_layout::one_large, 4, aspect, 2);
    EXPECT_NEAR(large.frames[2].width, 0.75, 1e-9);
    EXPECT_EQ(large.frames[2].height, 1);
    EXPECT_EQ(large.frames[3].y, 2.0 / 3);
    EXPECT_TRUE(ready_layout_frames(ready_layout::grid, 0, aspect).frames.empty());
}

TEST(vistel_order, is_restacked) {
    const std::vector<placed_vistel> all = {{"a", {}, 3}, {"b", {}, 0}, {"c", {}, 0}};
    const auto orders = [](const std::vector<placed_vistel>& placed) {
        return std::vector<int>{placed[0].order, placed[1].order, placed[2].order};
    };
    EXPECT_EQ(orders(restacked(all, "b", true)), (std::vector<int>{1, 2, 0}));
    EXPECT_EQ(orders(restacked(all, "a", false)), (std::vector<int>{0, 1, 2}));
    EXPECT_EQ(orders(restacked(all, "none", true)), (std::vector<int>{2, 0, 1}));
}

TEST(video_area, keeps_a_ratio_that_is_stored) {
    const QRect area = video_area({0, 0, 1000, 1000}, {{0, 0, 0.5, 0.5}}, 16.0 / 9, 2);
    EXPECT_EQ(area.size(), QSize(1000, 500));
}

TEST(video_area, is_as_wide_as_the_pane_where_it_scrolls) {
    const auto columns = [](std::size_t count) {
        return ready_layout_frames(ready_layout::two_columns, count, 2).frames;
    };
    auto one_tall = columns(16);
    one_tall[3].height = 1;
    // Pictures of 2 to 1; the bar is 10 wide.
    struct {
        QRect room;
        std::vector<rectangle> frames;
        double ratio;
        QRect area;
    } const cases[] = {
        {{0, 0, 810, 500}, columns(16), 0.5, {0, 0, 800, 1600}},
        {{0, 0, 810, 500}, one_tall, 0.5, {0, 0, 800, 1600}},
        {{0, 0, 810, 500}, columns(16), 0, {0, 0, 800, 1600}},     // as the first frame asks
        {{0, 0, 810, 100}, columns(16), 0.5, {200, 0, 400, 800}},  // a line is seen whole
        {{0, 0, 800, 500}, columns(4), 2, {0, 50, 800, 400}},      // nothing to scroll: as any other
        {{0, 0, 800, 200}, columns(1), 2, {200, 0, 400, 200}},
        {{0, 0, 800, 397}, columns(4), 2, {3, 0, 794, 397}},  // only the bar would make it fit
        {{0, 0, 800, 500}, {}, 0, {0, 0, 800, 500}},
    };
    for (const auto& one : cases) {
        EXPECT_EQ(scrolling_video_area(one.room, one.frames, 2, one.ratio, 10), one.area)
            << one.frames.size() << " in " << one.room.width() << " x " << one.room.height();
    }
}

// A collection of vistels in two columns that scroll.
video_collection_ROOT in_columns(std::size_t count) {
    video_collection_ROOT collection;
    for (std::size_t i = 0; i < count; ++i) {
        auto vistel = std::make_shared<single_Vistel_CTR>();
        vistel->set_uuid(std::string(1, static_cast<char>('a' + i)));
        collection.insert_vistel(i, vistel);
    }
    place_again(collection, ready_layout::two_columns, 2);
    return collection;
}

TEST(placing, of_a_layout_that_scrolls_is_known_and_renewed) {
    video_collection_ROOT collection = in_columns(4);  // in frames alone the same as a grid
    EXPECT_TRUE(collection.area_scrolls());
    EXPECT_EQ(placing_of(collection, 2), ready_layout::two_columns);
    collection.remove_vistel(*collection.find_vistel("b"));
    place_again(collection, ready_layout::two_columns, 2);
    EXPECT_EQ(collection.find_vistel("d")->proportion_rect(), (rectangle{0, 0.5, 0.5, 0.5}));
    EXPECT_NEAR(collection.outside_bounds_ratio().value_or(0), 2, 1e-9);
    place_again(collection, ready_layout::grid, 2);
    EXPECT_FALSE(collection.area_scrolls());
    EXPECT_EQ(placing_of(collection, 2), ready_layout::grid);
}

TEST(placing, puts_new_vistels_below_those_that_scroll) {
    video_collection_ROOT collection = in_columns(4);
    collection.find_vistel("a")->set_proportion_rect(rectangle{0.1, 0, 0.4, 0.4});
    EXPECT_FALSE(placing_of(collection, 2));
    for (const char* uuid : {"e", "f", "g"}) {
        auto vistel = std::make_shared<single_Vistel_CTR>();
        vistel->set_uuid(uuid);
        collection.insert_vistel(9, vistel);
    }
    place_again(collection, {}, 2);
    EXPECT_NEAR(collection.outside_bounds_ratio().value_or(0), 1, 1e-9);  // four lines in place of two
    EXPECT_EQ(collection.find_vistel("a")->proportion_rect(), (rectangle{0.1, 0, 0.4, 0.2}));
    EXPECT_EQ(collection.find_vistel("d")->proportion_rect(), (rectangle{0.5, 0.25, 0.5, 0.25}));
    EXPECT_EQ(collection.find_vistel("f")->proportion_rect(), (rectangle{0.5, 0.5, 0.5, 0.25}));
    EXPECT_EQ(collection.find_vistel("g")->proportion_rect(), (rectangle{0, 0.75, 0.5, 0.25}));
    EXPECT_TRUE(collection.area_scrolls());
}

TEST(aligning, goes_by_whole_frames) {
    EXPECT_EQ(dragged_frames(0, 6), 0);
    EXPECT_EQ(dragged_frames(17, 6), 3);
    EXPECT_EQ(dragged_frames(-17, 6), -3);
    EXPECT_DOUBLE_EQ(shifted_offset(1, 3, 0.04), 0.88);
    EXPECT_EQ(shift_words(3, 0.04), "+3 frames\n+0.120 s");
    EXPECT_EQ(shift_words(-1, 0.04), QString::fromUtf8("−1 frame\n−0.040 s"));
    EXPECT_EQ(buttons_Adjust_Offsets::steps_of_repeat(0), 1);
    EXPECT_GT(buttons_Adjust_Offsets::steps_of_repeat(100), 1);
    const std::vector<shown_part> parts = {{1, 10}, {2, 5}, {0, 5}};
    EXPECT_EQ(part_starts(parts), (std::vector<double>{1, 13, 18}));
    EXPECT_EQ(part_starts(parts, 1, 4), (std::vector<double>{1, 15, 20}));
}

}  // namespace
}  // namespace vistels
