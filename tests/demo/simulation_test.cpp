// SPDX-License-Identifier: GPL-3.0-or-later
#include "demo/simulation.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <set>

#include "demo/captions.h"
#include "demo/code_plan.h"
#include "demo/game_coding.h"

namespace vistels::demo {
namespace {

TEST(simulation, every_kind_of_play_comes_within_a_minute) {
    for (std::uint64_t seed = 1; seed <= 40; ++seed) {
        const game_record game = simulate_game(seed, 60);
        std::array<int, play_kind_count> counts{};
        for (const play& one : game.plays()) {
            ++counts[static_cast<std::size_t>(one.kind)];
            EXPECT_LE(one.start, one.end) << seed;
            EXPECT_EQ(one.team, team_of(one.player)) << seed;
        }
        for (int kind = 0; kind < play_kind_count; ++kind)
            EXPECT_GT(counts[static_cast<std::size_t>(kind)], 0)
                << "seed " << seed << ": no " << play_name(static_cast<play_kind>(kind));
        const game_state end = game.state_at(60);
        EXPECT_EQ(end.score[0] + end.score[1], counts[static_cast<std::size_t>(play_kind::goal)]) << seed;
    }
}

TEST(simulation, a_long_game_never_comes_to_a_standstill) {
    const game_record game = simulate_game(5, 1800);
    double last = 0;
    for (const play& one : game.plays()) {
        EXPECT_LT(one.start - last, 15) << "nothing happened after " << last;
        last = std::max(last, one.end);
    }
    EXPECT_GT(last, 1780);
}

TEST(simulation, nobody_runs_too_fast_or_leaves_the_ground) {
    for (const std::uint64_t seed : {1u, 2u, 3u, 240u}) {
        const game_record game = simulate_game(seed, 60);
        game_state before = game.state_at(-6);
        for (int sample = 1; sample < 60 * 66; ++sample) {
            const double now = -6 + sample / 60.0;
            const game_state state = game.state_at(now);
            for (std::size_t index = 0; index < state.players.size(); ++index) {
                const player_state& player = state.players[index];
                ASSERT_LT(distance(player.place, before.players[index].place) * 60, 8.0)
                    << seed << " at " << now;
                ASSERT_LT(std::abs(player.place.x), half_length + 1.5);
                ASSERT_LT(std::abs(player.place.y), half_width + 1.5);
                ASSERT_LT(length(player.lean), 1.0);
            }
            ASSERT_LT(length(state.ball - before.ball) * 60, 30.0) << seed << " at " << now;
            ASSERT_GT(state.ball.z, 0) << seed << " at " << now;
            ASSERT_LT(std::abs(state.ball.x), half_length + 4);
            ASSERT_LT(std::abs(state.ball.y), half_width + 4);
            before = state;
        }
    }
}

TEST(simulation, a_goal_has_the_ball_in_the_net) {
    int goals = 0;
    for (std::uint64_t seed = 1; seed <= 10; ++seed) {
        const game_record game = simulate_game(seed, 60);
        for (const play& one : game.plays()) {
            if (one.kind != play_kind::goal) continue;
            ++goals;
            const point3 ball = game.ball_at(one.end);
            EXPECT_GT(ball.x * direction_of(one.team), half_length);
            EXPECT_LT(std::abs(ball.y), goal_half_width);
            EXPECT_LT(ball.z, goal_height);
        }
    }
    EXPECT_GE(goals, 10);
}

TEST(simulation, the_same_seed_plays_the_same_game) {
    const game_record once = simulate_game(9, 30);
    const game_record again = simulate_game(9, 60);  // a longer one begins alike
    const game_record other = simulate_game(10, 30);
    for (double now = -6; now < 30; now += 0.37) {
        const point3 ball = once.ball_at(now);
        EXPECT_EQ(length(ball - again.ball_at(now)), 0) << now;
    }
    EXPECT_GT(length(once.ball_at(20) - other.ball_at(20)), 0.01);
}

TEST(game_coding, clips_hold_their_plays_and_do_not_overlap) {
    const game_record game = simulate_game(240, 62);
    const timeline_snapshot timeline = code_game(game, 60, 77);
    ASSERT_EQ(timeline.rows.size(), coded_kinds().size());
    std::set<std::string> button_names;
    for (const auto& button : demo_code_window().buttons) button_names.insert(button->name());
    for (const row_pointer& row : timeline.rows) {
        EXPECT_FALSE(row->clips().empty()) << row->name();
        EXPECT_EQ(button_names.count(row->name()), 1u) << row->name();
        double end = 0;
        for (const clip_pointer& clip : row->clips()) {
            EXPECT_GE(clip->secs_start(), end) << row->name();
            end = clip->secs_end();
            EXPECT_LE(end, 60);
            for (const qual_ITEM& item : *clip->qualifiers()) {
                EXPECT_GE(item.time(), clip->secs_start());
                EXPECT_LE(item.time(), clip->secs_end());
            }
        }
    }
}

TEST(demo_code_window, no_key_is_given_twice_or_taken_from_the_transport) {
    std::set<std::string> keys{"j", "k", "l", "i", "o", " "};
    for (const auto& button : demo_code_window().buttons) {
        ASSERT_TRUE(button->display().binding) << button->name();
        EXPECT_TRUE(keys.insert(button->display().binding->chars_no_mod).second) << button->name();
    }
}

TEST(captions, burnt_in_time_counts_frames_and_knows_before) {
    struct time_case {
        double seconds;
        const char* text;
    };
    for (const time_case& one :
         {time_case{0, "0:00:00.00"}, time_case{1.0 / 30, "0:00:00.01"}, time_case{59.999, "0:01:00.00"},
          time_case{3725.5, "1:02:05.15"}, time_case{-2.3, "-0:00:02.09"}})
        EXPECT_EQ(burnt_in_time(one.seconds), one.text);
}

}  // namespace
}  // namespace vistels::demo
