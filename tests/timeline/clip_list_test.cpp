// SPDX-License-Identifier: GPL-3.0-or-later
#include "timeline/records/clip_list.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "support/timeline_builder.h"
#include "timeline/records/clip_index.h"

namespace vistels {
namespace {

using model = std::vector<clip_pointer>;

bool before(const clip_pointer& a, const clip_pointer& b) {
    return clip_before(*a, *b);
}

clip_pointer new_clip(std::mt19937& random, int starts) {
    static int count = 0;
    const double start = static_cast<double>(random() % static_cast<unsigned>(starts));
    const double end = start + static_cast<double>(random() % (random() % 50 == 0 ? 3'000 : 3));
    return std::make_shared<sxy_CLIP>(testing::clip_of("clip " + std::to_string(++count), start, end));
}

model content_of(const clip_list& list) {
    return {list.begin(), list.end()};
}

// Every way to look at the list agrees with the model.
void expect_same(const clip_list& list, const model& expected, std::mt19937& random) {
    ASSERT_EQ(list.size(), expected.size());
    ASSERT_EQ(content_of(list), expected);
    for (int n = 0; n < 5 && !expected.empty(); ++n) {
        const std::size_t index = random() % expected.size();
        const auto& clip = expected[index];
        const sxy_CLIP copy = *clip;
        ASSERT_EQ(list[index], clip);
        ASSERT_EQ(list.position(copy), index);
        ASSERT_EQ(list.find(copy), &list[index]);
        ASSERT_EQ(*(list.end() - static_cast<std::ptrdiff_t>(expected.size() - index)), clip);
        const double seconds = clip->secs_start() + (random() % 2 == 0 ? 0 : 0.5);
        const auto first = std::find_if(expected.begin(), expected.end(),
                                        [&](const auto& one) { return one->secs_start() >= seconds; });
        ASSERT_EQ(list.first_starting_at(seconds), static_cast<std::size_t>(first - expected.begin()));
        const auto from = static_cast<std::ptrdiff_t>(random() % (expected.size() + 1));
        const auto last = std::find_if(expected.begin() + from, expected.end(),
                                       [&](const auto& one) { return one->secs_end() >= seconds; });
        ASSERT_EQ(list.first_ending_at(seconds, static_cast<std::size_t>(from)),
                  static_cast<std::size_t>(last - expected.begin()));
    }
    const sxy_CLIP stranger = testing::clip_of("nobody", 3, 4);
    ASSERT_EQ(list.position(stranger), list.size());
    ASSERT_EQ(list.find(stranger), nullptr);
}

// One random change of both: mostly growing below `size`, mostly shrinking above it.
void change(clip_list& list, model& expected, std::mt19937& random, int starts, std::size_t size) {
    const bool grow = expected.empty() || (random() % 10 < 7) == (expected.size() < size);
    const auto insert = [&](const clip_pointer& clip) {
        const auto place = std::lower_bound(expected.begin(), expected.end(), clip, before);
        const auto index = static_cast<std::size_t>(place - expected.begin());
        expected.insert(place, clip);
        return index;
    };
    if (grow) {
        const auto clip = new_clip(random, starts);
        ASSERT_EQ(list.insert(clip), insert(clip));
        return;
    }
    const std::size_t index = random() % expected.size();
    const auto earlier = expected[index];
    expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(index));
    if (random() % 3 != 0) {
        list.remove(index);
        return;
    }
    auto changed = std::make_shared<sxy_CLIP>(*earlier);
    if (random() % 2 == 0) changed->set_secs_end(changed->secs_end() + 1);
    ASSERT_EQ(list.replace(index, changed), insert(changed));
}

TEST(clip_list, does_what_a_sorted_vector_does_and_copies_stay_as_they_were) {
    struct scenario {
        int starts;  // few: many clips start together
        std::size_t size;
        int changes;
    };
    for (const auto& [starts, size, changes] :
         {scenario{1000, 40, 2000}, {100'000, 6000, 30'000}, {3, 300, 3000}, {100'000, 0, 500}}) {
        std::mt19937 random(static_cast<unsigned>(starts));
        clip_list list;
        model expected;
        std::vector<std::pair<clip_list, model>> copies;
        for (int n = 0; n < changes; ++n) {
            change(list, expected, random, starts, n < changes / 2 ? size : size / 8);
            if (n % (changes / 20) == 0) {
                expect_same(list, expected, random);
                copies.emplace_back(list, expected);
            }
            if (HasFatalFailure()) return;
        }
        for (const auto& [copy, then] : copies) expect_same(copy, then, random);
        while (!expected.empty()) {
            list.remove(expected.size() - 1);
            expected.pop_back();
        }
        EXPECT_TRUE(list.begin() == list.end());
        // A copy may be edited like the list that it was made from.
        auto& [copy, then] = copies[copies.size() / 2];
        for (int n = 0; n < 200; ++n) change(copy, then, random, starts, size);
        expect_same(copy, then, random);
    }
}

TEST(clip_list, orders_what_is_assigned_by_start_end_and_uuid) {
    std::mt19937 random(9);
    for (const int count : {0, 1, 60, 61, 64, 65, 1680, 1681, 50'000}) {
        model clips;
        for (int n = 0; n < count; ++n) clips.push_back(new_clip(random, 500));
        clip_list list;
        list.assign(clips);
        std::sort(clips.begin(), clips.end(), before);
        expect_same(list, clips, random);
        list.assign(clips);
        expect_same(list, clips, random);
        for (int n = 0; n < 100; ++n) change(list, clips, random, 500, clips.size() / 2);
        expect_same(list, clips, random);
    }
}

TEST(clip_list, copies_are_read_and_let_go_on_other_threads_while_one_is_changed) {
    std::mt19937 random(4);
    clip_list list;
    model expected;
    for (int n = 0; n < 500; ++n) change(list, expected, random, 1000, 500);
    for (int round = 0; round < 30; ++round) {
        std::thread reader([copy = list, then = expected]() mutable {
            EXPECT_EQ(content_of(copy), then);
            copy = {};
        });
        for (int n = 0; n < 50; ++n) change(list, expected, random, 1000, 500);
        reader.join();
    }
    EXPECT_EQ(content_of(list), expected);
}

TEST(clip_index, finds_what_is_in_it_however_often_it_changes) {
    std::mt19937 random(6);
    model clips;
    for (int n = 0; n < 3000; ++n) clips.push_back(new_clip(random, 10));
    std::vector<bool> in(clips.size(), false);
    clip_index index;
    for (int n = 0; n < 60'000; ++n) {
        const std::size_t at = random() % clips.size();
        if (in[at] && random() % 2 == 0) {
            index.remove(index.find(clips[at]->id()));
            in[at] = false;
        } else {
            EXPECT_NE(index.insert(*clips[at], static_cast<std::uint32_t>(at)), in[at]);
            in[at] = true;
        }
    }
    EXPECT_EQ(index.size(), static_cast<std::size_t>(std::count(in.begin(), in.end(), true)));
    for (std::size_t at = 0; at < clips.size(); ++at) {
        const auto* found = index.find(clips[at]->id());
        ASSERT_EQ(found != nullptr, in[at]);
        if (found) {
            EXPECT_EQ(found->row, at);
        }
    }
}

}  // namespace
}  // namespace vistels
